// SPDX-License-Identifier: BSD-3-Clause
// The table of IPv4 addresses with its other orders, against a plain list, through random changes.
#include "addresses/ipv4_address_table.h"
#include "addresses/test_messages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

namespace
{

using namespace ipmib::platform;

TestMessage messageOf(std::uint16_t type, const Ipv4Address &row)
{
    TestMessage message(type);
    auto &header = message.family<ifaddrmsg>();
    header.ifa_family = AF_INET;
    header.ifa_prefixlen = row.length;
    header.ifa_index = row.ifIndex;
    message.with(IFA_LOCAL, htonl(row.address)).with(IFA_ADDRESS, htonl(row.peer));
    if (row.broadcast != 0) {
        message.with(IFA_BROADCAST, htonl(row.broadcast));
    }
    return message;
}

TEST(Ipv4AddressTable, hasTheOrdersOfAPlainListThroughAllChanges)
{
    std::mt19937 random(4293);
    const auto pick = [&](std::uint32_t below) { return static_cast<std::uint32_t>(random() % below); };
    Ipv4AddressTable table;
    std::map<Ipv4Address::Key, Ipv4Address> list;
    for (int step = 0; step < 4'000; ++step) {
        Ipv4Address row{};
        row.address = 1 + pick(12);
        row.ifIndex = 1 + pick(3);
        row.length = static_cast<std::uint8_t>(28 + pick(5));
        row.peer = pick(2) == 0 ? row.address : 1 + pick(12);
        row.broadcast = pick(2) == 0 ? 0 : 1 + pick(12);
        const bool comes = pick(100) < 45;
        if (step % 500 == 499) { // the kernel's table is read again
            for (const auto &[key, kept] : list) {
                table.applyDump(*messageOf(RTM_NEWADDR, kept), 1);
            }
            table.sweep(1);
        } else if (comes) {
            table.applyChange(*messageOf(RTM_NEWADDR, row));
            list[row.key()] = row;
        } else {
            table.applyChange(*messageOf(RTM_DELADDR, row));
            list.erase(row.key());
        }
        ASSERT_EQ(table.size(), list.size());
        for (std::uint32_t address = 0; address < 14; ++address) {
            const Ipv4Address *found = table.find(address);
            const auto wanted = list.lower_bound({address, 0, 0, 0});
            ASSERT_EQ(found != nullptr, wanted != list.end() && wanted->first.address == address);
            ASSERT_TRUE(found == nullptr || found->key() == wanted->first);
            const Ipv4Address *after = table.after(address);
            const auto behind = list.lower_bound({address + 1, 0, 0, 0});
            ASSERT_EQ(after != nullptr, behind != list.end());
            ASSERT_TRUE(after == nullptr || after->key() == behind->first);

            std::uint32_t nextBroadcast = UINT32_MAX;
            std::uint32_t ifIndex = UINT32_MAX; // the lowest of those with this broadcast address
            for (const auto &[key, each] : list) {
                if (each.broadcast > address) {
                    nextBroadcast = std::min(nextBroadcast, each.broadcast);
                }
                if (each.broadcast != 0 && each.broadcast == address) {
                    ifIndex = std::min(ifIndex, each.ifIndex);
                }
            }
            const Ipv4Address *broadcast = table.findBroadcast(address);
            ASSERT_EQ(broadcast != nullptr ? broadcast->ifIndex : UINT32_MAX, ifIndex);
            const Ipv4Address *next = table.afterBroadcast(address);
            ASSERT_EQ(next != nullptr ? next->broadcast : UINT32_MAX, nextBroadcast);
        }
        std::map<Ipv4AddressTable::PrefixKey, std::size_t> prefixes;
        for (const auto &[key, each] : list) {
            ++prefixes[{each.ifIndex, each.prefix(), each.length}];
        }
        Ipv4AddressTable::PrefixKey at{};
        bool more = table.prefixAtOrAfter(at, at);
        for (const auto &[prefix, addresses] : prefixes) {
            ASSERT_TRUE(more && at == prefix);
            std::size_t visited = 0;
            table.eachIn(prefix, [&](const Ipv4Address &) { ++visited; });
            ASSERT_EQ(visited, addresses);
            ASSERT_TRUE(table.hasAny(prefix.ifIndex));
            more = table.prefixAfter(at, at);
        }
        ASSERT_FALSE(more);
    }
}

TEST(Ipv4AddressTable, masksAreOfAllLengths)
{
    EXPECT_EQ(maskedIpv4(0xFFFF'FFFF, 0), 0u);
    EXPECT_EQ(maskedIpv4(0xFFFF'FFFF, 1), 0x8000'0000u);
    EXPECT_EQ(maskedIpv4(0x0A01'02FF, 24), 0x0A01'0200u);
    EXPECT_EQ(maskedIpv4(0x0A01'02FF, 32), 0x0A01'02FFu);
}

} // namespace
