// SPDX-License-Identifier: BSD-3-Clause
// The text in which the kernel tells its IPv6 counters.
#include "counters/snmp6_text.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace ipmib::platform
{

namespace
{

bool takePrefix(std::string_view &text, std::string_view prefix)
{
    const bool there = text.starts_with(prefix);
    text.remove_prefix(there ? prefix.size() : 0);
    return there;
}

std::optional<std::uint64_t> number(std::string_view text)
{
    std::uint64_t value = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

void setOfType(std::string_view type, std::uint64_t value, std::array<std::uint64_t, 256> &counters,
               std::bitset<256> &listed)
{
    if (const auto which = number(type); which && *which < counters.size()) {
        counters[*which] = value;
        listed.set(*which);
    }
}

void setIcmp6(std::string_view name, std::uint64_t value, Icmp6Counters &counters)
{
    if (takePrefix(name, "InType")) {
        setOfType(name, value, counters.inType, counters.listed);
    } else if (takePrefix(name, "OutType")) {
        setOfType(name, value, counters.outType, counters.listed);
    } else if (name == "InMsgs") {
        counters.inMsgs = value;
    } else if (name == "InErrors") {
        counters.inErrors = value;
    } else if (name == "OutMsgs") {
        counters.outMsgs = value;
    } else if (name == "OutErrors") {
        counters.outErrors = value;
    }
}

void setUdp6(std::string_view name, std::uint64_t value, Udp6Counters &counters)
{
    if (name == "InDatagrams") {
        counters.inDatagrams = value;
    } else if (name == "NoPorts") {
        counters.noPorts = value;
    } else if (name == "InErrors") {
        counters.inErrors = value;
    } else if (name == "OutDatagrams") {
        counters.outDatagrams = value;
    }
}

} // namespace

void parseSnmp6(std::string_view text, Snmp6Counters &counters)
{
    constexpr std::string_view blanks = " \t";
    counters = {};
    std::size_t hint = 0;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::size_t nameEnd = std::min(line.find_first_of(blanks), line.size());
        const std::size_t valueStart = std::min(line.find_first_not_of(blanks, nameEnd), line.size());
        const auto value = number(line.substr(valueStart));
        if (!value) {
            continue;
        }
        std::string_view name = line.substr(0, nameEnd);
        if (takePrefix(name, "Ip6")) {
            counters.ip6.set(ip6CounterByName(name, hint), *value);
        } else if (takePrefix(name, "Icmp6")) {
            setIcmp6(name, *value, counters.icmp6);
        } else if (takePrefix(name, "Udp6")) {
            setUdp6(name, *value, counters.udp6);
        }
    }
}

} // namespace ipmib::platform
