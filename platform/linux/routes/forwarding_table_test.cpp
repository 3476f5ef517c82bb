// SPDX-License-Identifier: BSD-3-Clause
// What a forwarding table costs, and what its parts do for any sequence of changes.
#include "addresses/test_messages.h"
#include "routes/forwarding_table.h"

#include <ipmib/platform_ip.h>

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace ipmib::platform
{
namespace
{

struct Word {
    std::uint32_t number = 0;
    bool operator==(const Word &) const = default;
    std::uint64_t hash() const { return mixed(0, number % 7); } // many share a bucket
};

TEST(Interned, keepsEachValueOnceForAsLongAsItIsUsed)
{
    std::mt19937 random(1);
    Interned<Word> words;
    std::map<std::uint32_t, std::pair<std::uint32_t, unsigned>> model; // value: its number and its uses
    std::vector<std::pair<std::uint32_t, unsigned>> retired;
    for (int step = 0; step < 20'000; ++step) {
        const auto value = static_cast<std::uint32_t>(random() % 300);
        const auto known = model.find(value);
        if (random() % 50 == 0 && known != model.end()) {
            retired.push_back(known->second);
            words.retire(known->second.first);
            model.erase(known);
        } else if (random() % 50 == 0 && !retired.empty()) {
            EXPECT_TRUE(words.isRetired(retired.back().first));
            for (; retired.back().second > 0; --retired.back().second) {
                words.leave(retired.back().first);
            }
            retired.pop_back();
        } else if (random() % 2 == 0) {
            const std::uint32_t number = words.take(Word{value});
            EXPECT_TRUE(known == model.end() || known->second.first == number);
            model[value] = {number, known == model.end() ? 1 : known->second.second + 1};
        } else if (known != model.end()) {
            words.leave(known->second.first);
            if (--known->second.second == 0) {
                model.erase(known);
            }
        }
        ASSERT_EQ(words.size(), model.size());
    }
    for (std::uint32_t value = 0; value < 300; ++value) {
        const auto known = model.find(value);
        EXPECT_EQ(words.find(Word{value}), known == model.end() ? Interned<Word>::none : known->second.first);
        if (known != model.end()) {
            EXPECT_EQ(words[known->second.first].number, value);
            EXPECT_EQ(words.uses(known->second.first), known->second.second);
        }
    }
}

class Table
{
  public:
    explicit Table(std::uint8_t family) : family_(family), table_(family, nexthops_, tables_, limit_) {}

    // In the order of a dump.
    void fill(std::uint32_t number, std::uint32_t hop, Generation generation = 1)
    {
        Route route;
        route.destination = family_ == AF_INET ? PackedAddress{0, number << 8}
                                               : PackedAddress{0x2001'0db8'0000'0000 + (std::uint64_t{number} << 8), 0};
        route.length = family_ == AF_INET ? 24 : 56;
        route.type = RTN_UNICAST;
        route.table = RT_TABLE_MAIN;
        RouteNexthop nexthop;
        nexthop.ifIndex = 1 + hop % 16;
        nexthop.gatewayFamily = family_;
        nexthop.gateway = {family_ == AF_INET ? 0 : std::uint64_t{0x2001'0db8'ffff'0000}, hop};
        route.nexthops.push_back(nexthop);
        table_.fillRoute(route, generation);
    }
    ForwardingTable &operator*() { return table_; }
    ForwardingTable *operator->() { return &table_; }

  private:
    std::uint8_t family_;
    NexthopTable nexthops_;
    RouteTables tables_;
    RouteLimit limit_;
    ForwardingTable table_;
};

// A twentieth of 1,000,000 and of 230,000 routes, with 50,000 different next hops.
TEST(ForwardingTable, aRouteTakesFewOctets)
{
    Table ipv4(AF_INET);
    for (std::uint32_t number = 0; number < 50'000; ++number) {
        ipv4.fill(number, number % 2'500);
    }
    while (!ipv4->sweepRoutes(1)) {
    }
    EXPECT_EQ(ipv4->count(), 50'000u);
    EXPECT_LE(ipv4->memory() / ipv4->count(), 24u);

    Table ipv6(AF_INET6);
    for (std::uint32_t number = 0; number < 11'500; ++number) {
        ipv6.fill(number, number % 575);
    }
    while (!ipv6->sweepRoutes(1)) {
    }
    EXPECT_EQ(ipv6->count(), 11'500u);
    EXPECT_LE(ipv6->memory() / ipv6->count(), 40u);
}

// Routes that go with a link are no rows from then on, whenever their records are taken out.
TEST(ForwardingTable, aLinkTakesItsRoutesAlongAtOnceAndTheirRecordsInPieces)
{
    Table table(AF_INET);
    constexpr std::uint32_t routes = 20'000;
    for (std::uint32_t number = 0; number < routes; ++number) {
        table.fill(number, number % 100);
    }
    const auto walked = [&] {
        IpmibRoute row{};
        std::uint64_t rows = 0;
        std::uint64_t overLost = 0;
        while (table->next(row.key, 0, row)) {
            ++rows;
            overLost += row.if_index == 1 ? 1 : 0;
        }
        EXPECT_EQ(rows, table->count());
        return std::pair(rows, overLost);
    };
    const std::uint64_t lost = walked().second;
    EXPECT_GT(lost, routes / 20);
    bool littered = false;
    table->onLitter([&] { littered = true; });
    const std::size_t before = table->memory();
    table->linkDown(1, RouteConsumer::LinkLoss::down);
    EXPECT_TRUE(littered);
    EXPECT_EQ(walked(), std::pair(routes - lost, std::uint64_t{0}));

    table->linkUp(1);
    table.fill(0, 0); // comes back, and another one over the same gateway
    table.fill(routes, 0);
    EXPECT_EQ(walked(), std::pair(routes - lost + 2, std::uint64_t{2}));
    unsigned pieces = 0;
    while (table->tidy()) {
        ++pieces;
        EXPECT_EQ(walked(), std::pair(routes - lost + 2, std::uint64_t{2}));
    }
    EXPECT_GT(pieces, 2u);
    EXPECT_EQ(walked(), std::pair(routes - lost + 2, std::uint64_t{2}));
    for (std::uint32_t link = 2; link <= 16; ++link) {
        table->linkDown(link, RouteConsumer::LinkLoss::gone);
    }
    EXPECT_EQ(walked().first, 2u);
    while (table->tidy()) {
    }
    EXPECT_LT(table->memory(), before / 2);
}

// A reading that another one follows before it has been swept behind leaves nothing out.
TEST(ForwardingTable, aSweepThatIsGivenUpBeginsAnew)
{
    Table table(AF_INET);
    constexpr std::uint32_t routes = 20'000;
    for (std::uint32_t number = 0; number < routes; ++number) {
        table.fill(number, 7);
    }
    table.fill(routes, 7, 2);
    EXPECT_FALSE(table->sweepRoutes(2));
    table.fill(routes, 7, 3);
    table.fill(0, 7, 2);
    unsigned pieces = 1;
    while (!table->sweepRoutes(3)) {
        ++pieces;
    }
    EXPECT_GT(pieces, 2u);
    EXPECT_EQ(table->count(), 1u);
}

TEST(ForwardingTable, anyKeyIsFollowedByTheFirstRowBehindIt)
{
    Table table(AF_INET);
    for (std::uint32_t number = 0; number < 1'000; number += 10) {
        table.fill(number, 7);
    }
    IpmibRouteKey key{};
    key.version = IPMIB_IPV4;
    IpmibRoute row{};
    const auto nextNumber = [&] {
        return table->next(key, 0, row) ? row.key.destination[1] << 8 | row.key.destination[2] : -1;
    };
    EXPECT_EQ(nextNumber(), 0);
    key.destination[2] = 5;
    EXPECT_EQ(nextNumber(), 10);
    key.destination[2] = 10;
    EXPECT_EQ(nextNumber(), 10) << "lengths from 0 on";
    key.prefix_length = 24;
    EXPECT_EQ(nextNumber(), 10);
    key.next_hop_type = 0xFFFFFFFF;
    EXPECT_EQ(nextNumber(), 20);
    key.next_hop_type = 0;
    key.prefix_length = 0xFFFFFFFF;
    EXPECT_EQ(nextNumber(), 20);
    key.prefix_length = 0;
    key.destination[15] = 1;
    EXPECT_EQ(nextNumber(), 20) << "octets behind the address";
    key.destination[0] = 255;
    EXPECT_EQ(nextNumber(), -1);
    EXPECT_FALSE(table->find(key, 0, row));
}

} // namespace
} // namespace ipmib::platform
