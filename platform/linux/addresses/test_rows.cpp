// SPDX-License-Identifier: BSD-3-Clause
// For tests: the rows that the services give, as a walk collects them, in words that `ip` uses.
#include "addresses/test_rows.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstring>

namespace ipmib::platform
{

namespace
{

constexpr std::size_t rowLimit = 100'000; // a walk that goes round is a failure, not a hang

std::uint32_t secondsNow()
{
    std::uint32_t now = 0;
    std::uint32_t unused = 0;
    TIME_GetSystemBootTime(&now, &unused);
    return now;
}

void mask(std::uint8_t *bytes, unsigned length)
{
    for (unsigned bit = length; bit < 128; ++bit) {
        bytes[bit / 8] = static_cast<std::uint8_t>(bytes[bit / 8] & ~(0x80u >> (bit % 8)));
    }
}

std::string preferenceText(std::uint32_t flags)
{
    switch (flags >> 24 & 0x18) {
    case 0x00:
        return "medium";
    case 0x08:
        return "high";
    case 0x18:
        return "low";
    default:
        return "reserved";
    }
}

} // namespace

std::string addressText(const std::uint8_t *bytes)
{
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, bytes, text, sizeof text);
}

std::string networkText(const std::string &address, unsigned length)
{
    std::uint8_t bytes[16];
    EXPECT_EQ(inet_pton(AF_INET6, address.c_str(), bytes), 1) << address;
    mask(bytes, length);
    return addressText(bytes);
}

std::vector<AddressRow> walkAddresses()
{
    std::vector<AddressRow> rows;
    FullAddressRecord record{};
    std::uint32_t result = IP6Mib_GetFirstAddrInVrf(0, 14, &record);
    for (; result == 0 && rows.size() < rowLimit; result = IP6Mib_GetNextAddrInVrf(0, 14, &record)) {
        if (!rows.empty()) {
            EXPECT_LT(std::memcmp(rows.back().record.address, record.address, 16), 0);
        }
        FullAddressRecord got{};
        EXPECT_EQ(IP6Mib_GetAddrFullInfoInVrf(0, record.address, -1, &got), 0u);
        EXPECT_EQ(std::memcmp(&got, &record, sizeof got), 0) << "got by its address it is the same";
        rows.push_back({addressText(record.address), record.if_index, record});
        FullAddressRecord key{}; // as the module passes it
        std::memcpy(key.address, record.address, 16);
        record = key;
    }
    EXPECT_LT(rows.size(), rowLimit);
    return rows;
}

std::vector<AddressRow> walkLinkLocals(const std::vector<std::uint32_t> &interfaces)
{
    std::vector<AddressRow> rows;
    for (const std::uint32_t ifIndex : interfaces) {
        FullAddressRecord record{};
        LinkLocalBuffer buffer{};
        const bool has = IP6Mib_GetLinkLocalFullAddr(ifIndex, &record) == 0;
        EXPECT_EQ(has, IP6Addr_GetLinkLocalAddr(ifIndex, &buffer) == 0);
        if (has) {
            rows.push_back({addressText(record.address), record.if_index, record});
        }
    }
    return rows;
}

std::vector<PrefixRow> walkPrefixes(std::uint32_t ifIndex)
{
    std::vector<PrefixRow> rows;
    FullPrefixRecord record{};
    FullPrefixRecord before{};
    for (std::uint32_t result = IP6CFG_GetFirstFullPrefix(ifIndex, -1, &record); result == 0 && rows.size() < rowLimit;
         result = IP6CFG_GetNextFullPrefix(ifIndex, -1, &record)) {
        if (!rows.empty()) { // prefix and length lie behind each other, in network order
            EXPECT_LT(std::memcmp(before.prefix, record.prefix, 20), 0);
        }
        before = record;
        const std::uint32_t elapsed = secondsNow() - ipmib_be32_get(record.learned_at_s);
        const std::uint32_t origin = ipmib_be32_get(record.origin);
        const bool ages = origin == 8 || origin == 16;
        const auto left = [&](IpmibBe32 lifetime) {
            const std::uint32_t seconds = ipmib_be32_get(lifetime);
            return !ages ? seconds : elapsed < seconds ? seconds - elapsed : 0;
        };
        rows.push_back({ipmib_be32_get(record.if_index), addressText(record.prefix), ipmib_be32_get(record.length),
                        origin, left(record.valid_s), left(record.preferred_s), (record.flags & 0x80) != 0,
                        (record.flags & 0x40) != 0});
        EXPECT_EQ(rows.back().ifIndex, ifIndex);
        EXPECT_EQ(networkText(rows.back().prefix, rows.back().length), rows.back().prefix);
    }
    EXPECT_LT(rows.size(), rowLimit);
    return rows;
}

std::vector<RouterRow> walkRouters()
{
    std::vector<RouterRow> rows;
    for (const std::uint32_t of : {14u, 2u}) {
        GatewayRecord record{};
        GatewayKey key{};
        for (std::uint32_t result = IP6Mib_GetFirstGatewayInVrf(0, of, &record); result == 0 && rows.size() < rowLimit;
             result = IP6Mib_GetNextGatewayInVrf(0, of, &key, &record)) {
            const bool linkLocal = record.address[0] == 0xFE && (record.address[1] & 0xC0) == 0x80;
            EXPECT_EQ(linkLocal, of == 2u);
            GatewayKey next{};
            next.if_index = record.if_index;
            std::memcpy(next.address, record.address, 16);
            EXPECT_LT(
                std::tuple(std::string(reinterpret_cast<char *>(key.address), 16), ipmib_be32_get(key.if_index)),
                std::tuple(std::string(reinterpret_cast<char *>(next.address), 16), ipmib_be32_get(next.if_index)));
            key = next;
            GatewayRecord got{};
            EXPECT_EQ(IP6Mib_GetGatewayByKey(&key, &got), 0u);
            EXPECT_EQ(std::memcmp(&got, &record, sizeof got), 0);
            got = {};
            EXPECT_EQ(IP6ADDR_DRVK_GetGatewayByKey(&key, &got), 0u);
            EXPECT_EQ(std::memcmp(&got, &record, sizeof got), 0);
            const std::uint32_t elapsed = secondsNow() - ipmib_be32_get(record.learned_at_s);
            const std::uint32_t lifetime = ipmib_be32_get(record.lifetime_s);
            rows.push_back({addressText(record.address), ipmib_be32_get(record.if_index),
                            elapsed < lifetime ? lifetime - elapsed : 1, preferenceText(ipmib_be32_get(record.flags))});
            record = {};
        }
    }
    EXPECT_LT(rows.size(), rowLimit);
    return rows;
}

bool prefixIsListed(const FullAddressRecord &record)
{
    const std::string network = networkText(addressText(record.address), record.prefix_length);
    for (const PrefixRow &row : walkPrefixes(record.if_index)) {
        if (row.prefix == network && row.length == record.prefix_length) {
            return true;
        }
    }
    return false;
}

} // namespace ipmib::platform
