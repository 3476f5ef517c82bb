// SPDX-License-Identifier: BSD-3-Clause
// What a simulated device says of its routes.
#include "core/log.h"
#include "route_rows.h"
#include "test_scenario.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace ipmib::simulated
{
namespace
{

constexpr const char *severalKinds = R"({
  "uptime": 5000,
  "interfaces": [
    { "name": "a", "ifIndex": 2 },
    { "name": "b", "ifIndex": 3, "down": [{ "from": 10, "to": 20 }] }
  ],
  "routes": [
    { "destination": "0.0.0.0/0", "interface": "a", "via": "192.0.2.1", "metric": 100, "protocol": "dhcp" },
    { "destination": "0.0.0.0/0", "interface": "b", "via": "198.51.100.1", "metric": 50 },
    { "destination": "0.0.0.0/0", "type": "reject", "metric": 200 },
    { "destination": "192.0.2.0/24", "interface": "a", "changed": 4990 },
    { "destination": "192.0.2.0/24", "interface": "b" },
    { "destination": "10.0.0.0/8", "type": "blackhole" },
    { "destination": "10.0.0.0/16", "interface": "a", "via": "192.0.2.7", "tos": 8, "table": 7 },
    {
      "destination": "10.0.0.0/24", "count": 40,
      "nextHops": [
        { "interface": "b", "via": "198.51.100.7" }, { "interface": "a", "via": "fe80::7" }, { "interface": "a" }
      ],
      "as": 64496
    },
    { "destination": "2001:db8::/32", "interface": "a", "via": "2001:db8::1" },
    { "destination": "2001:db8:0:1::/64", "interface": "b", "via": "fe80::1", "count": 20, "step": 256 }
  ]
})";

// Signed, for GCC 12 compares lists of unsigned numbers wrongly on big-endian processors.
std::vector<std::int64_t> placeOf(const IpmibRouteKey &key)
{
    std::vector<std::int64_t> place{key.version};
    place.insert(place.end(), std::begin(key.destination), std::end(key.destination));
    place.push_back(key.prefix_length);
    place.insert(place.end(), std::begin(key.policy), std::end(key.policy));
    place.insert(place.end(), {key.next_hop_type, key.next_hop_size});
    place.insert(place.end(), std::begin(key.next_hop), std::end(key.next_hop));
    return place;
}

std::vector<IpmibRoute> walk(const RouteRows &rows)
{
    std::vector<IpmibRoute> all;
    IpmibRoute row{};
    while (rows.next(row.key, row)) {
        all.push_back(row);
    }
    return all;
}

std::uint64_t countOf(const std::vector<IpmibRoute> &rows, std::uint32_t version)
{
    return static_cast<std::uint64_t>(
        std::ranges::count_if(rows, [version](const IpmibRoute &row) { return row.key.version == version; }));
}

TEST(RouteRowsTest, aWalkIsInOrderAndAsLongAsTheCount)
{
    Device device = deviceOf(severalKinds);
    const RouteRows rows(device);
    for (const Time time : {Time{0}, Time{15'000}}) {
        device.setTime(time);
        const std::vector<IpmibRoute> all = walk(rows);
        ASSERT_EQ(all.size(), time == 0 ? 148u : 86u);
        EXPECT_EQ(rows.count(IPMIB_IPV4), countOf(all, IPMIB_IPV4));
        EXPECT_EQ(rows.count(IPMIB_IPV6), countOf(all, IPMIB_IPV6));
        for (std::size_t i = 1; i < all.size(); ++i) {
            EXPECT_LT(placeOf(all[i - 1].key), placeOf(all[i].key));
        }
        for (const IpmibRoute &row : all) {
            IpmibRoute found{};
            EXPECT_TRUE(rows.find(row.key, found));
            EXPECT_EQ(std::memcmp(&found, &row, sizeof row), 0);
        }
    }
}

TEST(RouteRowsTest, whatFollowsAKeyIsTheSmallestBehindIt)
{
    Device device = deviceOf(severalKinds);
    const RouteRows rows(device);
    const std::vector<IpmibRoute> all = walk(rows);
    std::minstd_rand random(1);
    for (int i = 0; i < 1'000; ++i) {
        IpmibRouteKey key = all[random() % all.size()].key;
        auto *octets = reinterpret_cast<std::uint8_t *>(&key);
        std::uint8_t &octet = octets[random() % sizeof key];
        octet = static_cast<std::uint8_t>(octet + random() % 3 - 1);
        key.next_hop_size = std::min<std::uint32_t>(key.next_hop_size, sizeof key.next_hop);
        std::fill(key.next_hop + key.next_hop_size, std::end(key.next_hop), std::uint8_t{0});
        const auto expected =
            std::ranges::find_if(all, [&](const IpmibRoute &row) { return placeOf(row.key) > placeOf(key); });
        IpmibRoute next{};
        ASSERT_EQ(rows.next(key, next), expected != all.end());
        if (expected != all.end()) {
            EXPECT_EQ(placeOf(next.key), placeOf(expected->key));
        }
        IpmibRoute found{};
        EXPECT_EQ(rows.find(key, found),
                  std::ranges::any_of(all, [&](const IpmibRoute &row) { return placeOf(row.key) == placeOf(key); }));
    }
}

std::string matchOf(const RouteRows &rows, std::initializer_list<std::uint8_t> address)
{
    IpmibRoute row{};
    const std::uint32_t version = address.size() == 4 ? +IPMIB_IPV4 : +IPMIB_IPV6;
    if (!rows.match(version, std::data(address), row)) {
        return "none";
    }
    return std::to_string(row.key.prefix_length) + " type " + std::to_string(row.type) + " metric " +
           std::to_string(row.metric);
}

TEST(RouteRowsTest, anAddressMatchesTheLongestPrefixAndThereTheFirstRow)
{
    Device device = deviceOf(severalKinds);
    const RouteRows rows(device);
    EXPECT_EQ(matchOf(rows, {10, 0, 39, 255}), "24 type 4 metric 0");
    EXPECT_EQ(matchOf(rows, {10, 0, 40, 0}), "16 type 4 metric 0");
    EXPECT_EQ(matchOf(rows, {10, 1, 0, 0}), "8 type 5 metric 0");
    EXPECT_EQ(matchOf(rows, {11, 0, 0, 0}), "0 type 4 metric 50");
    EXPECT_EQ(matchOf(rows, {0x20, 1, 0x0D, 0xB8, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 9}), "64 type 4 metric 0");
    EXPECT_EQ(matchOf(rows, {0x20, 1, 0x0D, 0xB8, 0, 0, 1, 2, 0, 0, 0, 0, 0, 0, 0, 9}), "32 type 4 metric 0");
    EXPECT_EQ(matchOf(rows, {0x20, 1, 0x0D, 0xB9, 0, 0, 1, 2, 0, 0, 0, 0, 0, 0, 0, 9}), "none");
    device.setTime(15'000);
    EXPECT_EQ(matchOf(rows, {11, 0, 0, 0}), "0 type 4 metric 100");
    EXPECT_EQ(matchOf(rows, {0x20, 1, 0x0D, 0xB8, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 9}), "32 type 4 metric 0");
}

TEST(RouteRowsTest, theAgeCountsFromTheLastChange)
{
    Device device = deviceOf(severalKinds);
    const RouteRows rows(device);
    device.setTime(7'000);
    for (const IpmibRoute &row : walk(rows)) {
        const bool isChanged = row.key.destination[0] == 192 && row.if_index == 2;
        EXPECT_EQ(row.age_s, isChanged ? 17u : 5007u);
    }
}

TEST(RouteRowsTest, rowsBehindALimitAreDiscards)
{
    Device device = deviceOf(severalKinds);
    RouteRows rows(device);
    static unsigned lines;
    lines = 0;
    platform::setLogSink([](int, const char *) { ++lines; });
    rows.newDevice();
    EXPECT_EQ(lines, 0u);
    rows.limit(10);
    platform::setLogSink(nullptr);
    EXPECT_EQ(lines, 1u);
    EXPECT_EQ(walk(rows).size(), 10u);
    EXPECT_EQ(rows.count(IPMIB_IPV4) + rows.count(IPMIB_IPV6), 10u);
    EXPECT_EQ(rows.discards(), 138u);
    device = deviceOf(severalKinds);
    rows.newDevice();
    EXPECT_EQ(rows.discards(), 138u);
}

TEST(RouteRowsTest, aSpreadRouteHasOneNextHopForEachDestination)
{
    Device device = deviceOf(R"({
      "interfaces": [{ "name": "a", "ifIndex": 2 }],
      "routes": [{
        "destination": "10.0.0.0/32", "count": 7, "spread": true,
        "nextHops": [{ "interface": "a", "via": "192.0.2.1" }, { "interface": "a", "via": "192.0.2.2" }]
      }]
    })");
    const std::vector<IpmibRoute> all = walk(RouteRows(device));
    ASSERT_EQ(all.size(), 7u);
    for (std::uint32_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i].key.destination[3], i);
        EXPECT_EQ(all[i].key.next_hop[3], 1 + i % 2);
    }
}

} // namespace
} // namespace ipmib::simulated
