// SPDX-License-Identifier: BSD-3-Clause
// Generated devices: as many rows as asked for, the same ones for the same seed.
#include "test_scenario.h"

#include <ipmib/platform.h>

#include <map>
#include <vector>

namespace ipmib::simulated
{
namespace
{

std::string scenario(unsigned seed, unsigned interfaces, unsigned neighbours)
{
    return R"({"uptime": 1000, "seed": )" + std::to_string(seed) + R"(, "generate": {"interfaces": {"count": )" +
           std::to_string(interfaces) + R"(, "name": "xe"}, "addresses": 50, "routers": 5, "neighbours": )" +
           std::to_string(neighbours) + "}}";
}

// Everything that the services tell of neighbours, by interface.
using Rows = std::map<std::uint32_t, std::vector<Neighbour>>;

Rows rowsOf(const Device &device)
{
    Rows rows;
    device.neighbours().each([&rows](const Neighbour &row) { rows[row.ifIndex].push_back(row); });
    return rows;
}

bool same(const std::vector<Neighbour> &a, const std::vector<Neighbour> &b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

bool same(const Rows &a, const Rows &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const auto &x, const auto &y) { return x.first == y.first && same(x.second, y.second); });
}

TEST(Generate, theSameSeedMakesTheSameDevice)
{
    const Device one = deviceOf(scenario(7, 10, 1'000));
    const Device again = deviceOf(scenario(7, 10, 1'000));
    const Device other = deviceOf(scenario(8, 10, 1'000));
    EXPECT_TRUE(same(rowsOf(one), rowsOf(again)));
    EXPECT_FALSE(same(rowsOf(one), rowsOf(other)));
    EXPECT_EQ(one.interfaces()[3].mac, again.interfaces()[3].mac);
    EXPECT_NE(one.interfaces()[3].mac, other.interfaces()[3].mac);
    EXPECT_EQ(one.systemTraffic(IPMIB_IPV6).value[IPMIB_IP_IN_RECEIVES],
              again.systemTraffic(IPMIB_IPV6).value[IPMIB_IP_IN_RECEIVES]);
    EXPECT_NE(one.systemTraffic(IPMIB_IPV6).value[IPMIB_IP_IN_RECEIVES],
              other.systemTraffic(IPMIB_IPV6).value[IPMIB_IP_IN_RECEIVES]);
}

// So that a seed means the same on every machine and tomorrow.
TEST(Generate, aSeedIsForGood)
{
    const Device device = deviceOf(scenario(7, 10, 1'000));
    const Neighbour first = rowsOf(device).at(1).front();
    EXPECT_EQ(first.high, 0x2001'0db8'0000'0000u);
    EXPECT_EQ(first.low, 0x0130'F07D'D5F7'060Fu);
}

TEST(Generate, numbersAreSpreadEvenly)
{
    const Device device = deviceOf(scenario(1, 7, 1'000));
    EXPECT_EQ(device.interfaces().size(), 7u);
    EXPECT_EQ(device.neighbours().size(), 1'000u);
    EXPECT_EQ(device.addresses().size(), 57u);
    for (const auto &[ifIndex, rows] : rowsOf(device)) {
        EXPECT_TRUE(rows.size() == 142 || rows.size() == 143) << ifIndex;
    }
}

TEST(Generate, prefixesStandBesideTheNetworksOfAddressesAndChangeNothingElse)
{
    const char *const begin = R"({"uptime": 1000, "seed": 7, "generate": {"interfaces": {"count": 3, "name": "xe"})";
    const Device with = deviceOf(begin + std::string(R"(, "prefixes": 10, "neighbours": 100}})"));
    const Device without = deviceOf(begin + std::string(R"(, "neighbours": 100}})"));
    int more = 0;
    for (std::uint32_t ifIndex = 1; ifIndex <= 3; ++ifIndex) {
        int here = 0;
        for (const Prefix *prefix = with.firstPrefix(ifIndex); prefix != nullptr;
             prefix = with.prefixAfter(prefix->key())) {
            ++here;
        }
        EXPECT_TRUE(here == 4 || here == 5) << here;
        more += here - 1;
    }
    EXPECT_EQ(more, 10);
    EXPECT_TRUE(same(rowsOf(with), rowsOf(without)));
}

TEST(Generate, oneMoreInterfaceLeavesTheOthersAsTheyAre)
{
    const Rows seven = rowsOf(deviceOf(scenario(1, 7, 700)));
    const Rows eight = rowsOf(deviceOf(scenario(1, 8, 800)));
    for (const auto &[ifIndex, rows] : seven) {
        EXPECT_TRUE(same(rows, eight.at(ifIndex))) << ifIndex;
    }
}

TEST(Generate, theyStandBehindWhatIsListed)
{
    const Device device = deviceOf(R"({"interfaces": [{"name": "lo", "ifIndex": 30}],
        "generate": {"interfaces": {"count": 2, "name": "xe", "mtu": 9000, "type": "other"},
                     "network": "fd00::/63"}})");
    ASSERT_EQ(device.interfaces().size(), 3u);
    EXPECT_EQ(device.named("xe0")->ifIndex, 31u);
    EXPECT_EQ(device.named("xe1")->ifIndex, 32u);
    EXPECT_EQ(device.named("xe1")->mtu, 9000u);
    EXPECT_EQ(device.named("xe1")->type, 1u);
    EXPECT_EQ(device.addressAfter(PackedAddress{})->address, (PackedAddress{0xfd00'0000'0000'0000, 1}));
}

TEST(Generate, aMillionNeighboursAreFoundInOrder)
{
    constexpr unsigned million = 1'000'000;
    const ScenarioFile file(scenario(3, 64, million));
    const Running running(file.path(), 0);
    std::size_t count = 0;
    for (std::uint32_t ifIndex = 1; ifIndex <= 64; ++ifIndex) {
        for (const std::uint32_t mode : {platform::neighboursGlobal, platform::neighboursLinkLocal}) {
            NeighbourEntry entry{};
            NeighbourKey before{ifIndex, 0, 0};
            entry.if_index = ipmib_be32(ifIndex);
            while (ND_GetNextNetToPhysicalTable(mode, &entry) == 0) {
                const NeighbourKey key = NeighbourKey::of(ipmib_be32_get(entry.if_index), entry.address);
                ASSERT_LT(before, key);
                ASSERT_EQ(key.ifIndex, ifIndex);
                before = key;
                ++count;
            }
        }
    }
    EXPECT_EQ(count, million);
}

} // namespace
} // namespace ipmib::simulated
