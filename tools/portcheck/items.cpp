// SPDX-License-Identifier: BSD-3-Clause
// Records as lists of named values.
#include "items.h"

#include "fields.h"

#include <arpa/inet.h>

#include <cstring>

namespace ipmib::portcheck
{

namespace
{

std::uint64_t numberOf(IpmibBe32 field)
{
    return ipmib_be32_get(field);
}

std::uint64_t numberOf(std::uint64_t field)
{
    return field;
}

using Words = std::string (*)(std::uint64_t number);

std::string plainNumber(std::uint64_t number)
{
    return std::to_string(number);
}

struct Word {
    std::uint64_t number;
    const char *word;
};

template <std::size_t count>
std::string wordOf(const Word (&words)[count], std::uint64_t number)
{
    for (const Word &one : words) {
        if (one.number == number) {
            return one.word;
        }
    }
    return std::to_string(number);
}

std::string addressOrigin(std::uint64_t number)
{
    return wordOf({{4, "manual"}, {8, "manual"}, {16, "dhcp"}, {64, "linklayer"}, {128, "random"}}, number);
}

std::string addressFlags(std::uint64_t number)
{
    return wordOf({{0, "none"}, {1, "anycast"}}, number);
}

std::string addressState(std::uint64_t number)
{
    return number < 4 ? "preferred" : wordOf({{4, "deprecated"}, {64, "tentative"}, {128, "duplicate"}}, number);
}

std::string prefixOrigin(std::uint64_t number)
{
    return wordOf({{1, "manual"}, {2, "manual"}, {4, "wellknown"}, {8, "dhcp"}, {16, "routeradv"}}, number);
}

std::string prefixFlags(std::uint64_t number)
{
    return wordOf({{0, "none"}, {0x80, "onlink"}, {0x40, "autonomous"}, {0xC0, "onlink,autonomous"}}, number);
}

std::string lifetime(std::uint64_t number)
{
    return wordOf({{0xFFFFFFFF, "infinite"}}, number);
}

std::string neighbourType(std::uint64_t number)
{
    return wordOf({{0, "other"}, {1, "invalid"}, {2, "dynamic"}, {3, "static"}, {4, "local"}}, number);
}

std::string neighbourState(std::uint64_t number)
{
    return wordOf(
        {{1, "reachable"}, {2, "stale"}, {3, "delay"}, {4, "probe"}, {5, "invalid"}, {6, "unknown"}, {7, "incomplete"}},
        number);
}

std::string routerPreference(std::uint64_t number)
{
    return wordOf({{0, "medium"}, {0x08000000, "high"}, {0x18000000, "low"}}, number);
}

bool isInSeconds(const std::string &name)
{
    return name.size() > 2 && name.compare(name.size() - 2, 2, "_s") == 0;
}

template <typename Field>
Item itemOf(const char *name, const Field &field, Words words)
{
    const std::uint64_t number = numberOf(field);
    return {name, words(number), number, sizeof field, isInSeconds(name)};
}

Item textItem(const char *name, std::string text)
{
    return {name, std::move(text)};
}

// What does not stand in another value.
bool isTold(const Item &item)
{
    return item.name != "length" && item.name != "prefix_length";
}

} // namespace

#define FIELD(name, words) items.push_back(itemOf(#name, record.name, words));

Items itemsOf(const FullAddressRecord &record)
{
    Items items{textItem("address", prefixText(record.address, record.prefix_length))};
    IPMIB_ADDRESS_FIELDS(FIELD)
    return items;
}

Items itemsOf(const FullPrefixRecord &record)
{
    Items items{textItem("prefix", prefixText(record.prefix, ipmib_be32_get(record.length)))};
    IPMIB_PREFIX_FIELDS(FIELD)
    return items;
}

Items itemsOf(const NeighbourEntry &record)
{
    Items items{textItem("address", addressText(record.address)),
                textItem("link_layer", bytesText(record.link_layer, sizeof record.link_layer))};
    IPMIB_NEIGHBOUR_FIELDS(FIELD)
    return items;
}

Items itemsOf(const GatewayRecord &record)
{
    Items items{textItem("address", addressText(record.address))};
    IPMIB_ROUTER_FIELDS(FIELD)
    return items;
}

Items itemsOf(const NdIfConfigInfo &record)
{
    Items items;
    IPMIB_CONFIGURATION_FIELDS(FIELD)
    return items;
}

Items itemsOf(const Ip6MibStat &record)
{
    Items items;
    IPMIB_IPV6_COUNTER_FIELDS(FIELD)
    return items;
}

Items itemsOf(const IpMibIfStat &record)
{
    Items items;
    IPMIB_IPV4_COUNTER_FIELDS(FIELD)
    return items;
}

#undef FIELD

Items itemsOf(const Icmp6MibStat &stat)
{
    Items items;
    const auto add = [&](std::string name, std::uint32_t number) {
        items.push_back(itemOf(name.c_str(), number, plainNumber));
    };
    add("in_msgs", stat.counter[ICMP6_STAT_IN_MSGS]);
    add("out_msgs", stat.counter[ICMP6_STAT_OUT_MSGS]);
    for (std::uint32_t error = ICMP6_STAT_IN_ERROR_1; error <= ICMP6_STAT_IN_ERROR_4; ++error) {
        add("in_error_" + std::to_string(error - ICMP6_STAT_IN_ERROR_1 + 1), stat.counter[error]);
    }
    for (std::uint32_t type = 0; type < 256; ++type) {
        add("in_type_" + std::to_string(type), stat.counter[ICMP6_STAT_IN_TYPE + type]);
        add("out_type_" + std::to_string(type), stat.counter[ICMP6_STAT_OUT_TYPE + type]);
    }
    return items;
}

std::string textOf(const Items &items)
{
    std::string text;
    for (const Item &item : items) {
        if (isTold(item)) {
            text += (text.empty() ? "" : " ") + item.name + "=" + item.text;
        }
    }
    return text;
}

std::string differenceOf(const Items &before, const Items &after)
{
    constexpr std::uint64_t passing = 2;       // seconds between two calls
    for (const bool numbers : {true, false}) { // those say which field it is, texts may hold several
        for (std::size_t i = 0; i < before.size() && i < after.size(); ++i) {
            const std::uint64_t apart = before[i].number > after[i].number ? before[i].number - after[i].number
                                                                           : after[i].number - before[i].number;
            if ((before[i].bytes != 0) == numbers && before[i].text != after[i].text &&
                !(before[i].passes && apart <= passing)) {
                return before[i].name + " is " + before[i].text + ", and then " + after[i].text;
            }
        }
    }
    return {};
}

std::string addressText(const std::uint8_t *address)
{
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, address, text, sizeof text);
}

std::string prefixText(const std::uint8_t *prefix, std::uint32_t length)
{
    return addressText(prefix) + "/" + std::to_string(length);
}

std::string bytesText(const std::uint8_t *bytes, std::size_t count)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += text.empty() ? "" : ":";
        text += {digits[bytes[i] >> 4], digits[bytes[i] & 15]};
    }
    return text;
}

} // namespace ipmib::portcheck
