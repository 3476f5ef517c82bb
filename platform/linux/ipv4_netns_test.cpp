// SPDX-License-Identifier: BSD-3-Clause
// The mirrors of IPv4 addresses and neighbours: what the kernel's announcements alone do not tell, and many rows.
#include "ipv4.h"
#include "netns/namespace.h"
#include "test_platform.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <vector>

namespace
{

using namespace ipmib::platform;
using ipmib::netns::Namespace;

constexpr std::uint32_t net10 = 0x0A00'0000;

std::vector<IpmibIpv4Address> addressesOf(Ipv4 &ipv4)
{
    std::vector<IpmibIpv4Address> rows;
    IpmibIpv4Address row{};
    while (ipv4.addressAfter(row.address, row)) {
        rows.push_back(row);
    }
    return rows;
}

std::vector<IpmibIpv4Neighbour> neighboursOf(Ipv4 &ipv4)
{
    std::vector<IpmibIpv4Neighbour> rows;
    IpmibIpv4Neighbour row{};
    while (ipv4.neighbourAfter(row.if_index, row.address, row)) {
        rows.push_back(row);
    }
    return rows;
}

TEST(Ipv4Netns, lostAnnouncementsOfAddressesAreMadeUpFor)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up");
    Settings settings;
    settings.receiveBuffer = 1; // the kernel rounds up to room for one or two announcements
    PlatformInside platform(space, settings);
    ASSERT_EQ(platform->followIpv4(), "");
    space.run("for i in $(seq 40); do echo addr add 10.0.0.$i/24 dev v0; done | ip -batch -");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return platform->dumps().idle() && addressesOf(platform->ipv4()).size() == 41;
    }));
    EXPECT_GT(platform->ipv4().addressMirror().timesLost(), 0u);
    std::uint32_t expected = net10;
    for (const IpmibIpv4Address &row : addressesOf(platform->ipv4())) {
        if (row.address < 0x7F00'0000) {
            EXPECT_EQ(row.address, ++expected);
            EXPECT_EQ(row.prefix_length, 24u);
        }
    }
}

// The kernel announces neither the beginning of a resolution nor what is not valid yet.
TEST(Ipv4Netns, aNeighbourThatIsBeingResolvedIsSeen)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up;"
              "ip addr add 10.0.0.1/24 dev v0; ip neigh add 10.0.0.9 lladdr 02:00:00:00:00:09 nud reachable dev v0");
    PlatformInside platform(space);
    ASSERT_EQ(platform->followIpv4(), "");
    EXPECT_EQ(neighboursOf(platform->ipv4()).size(), 1u);
    space.run("ping -q -c 1 -W 1 10.0.0.77 >/dev/null || true");
    const std::uint32_t v0 = space.json("ip -j link show dev v0")[0]["ifindex"];
    platform->beginPacket();
    IpmibIpv4Neighbour row{};
    ASSERT_TRUE(platform->ipv4().findNeighbour(v0, net10 + 77, row));
    EXPECT_EQ(row.type, std::uint32_t{IPMIB_MEDIA_INVALID});
    EXPECT_EQ(row.link_layer_size, 0u);
    EXPECT_TRUE(platform.waitFor([&] {
        platform->beginPacket();
        return neighboursOf(platform->ipv4()).size() == 2;
    }));
}

TEST(Ipv4Netns, manyNeighboursComeInOrderAndAreFound)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    PlatformInside platform(space);
    ASSERT_EQ(platform->followIpv4(), "");
    space.run("for i in $(seq 2000); do echo neigh add 10.$((i * 7 % 250)).$((i / 250)).$((i % 250))"
              " lladdr 02:00:00:00:00:09 nud permanent dev v$((i % 2)); done | ip -batch -");
    platform->beginPacket();
    const std::vector<IpmibIpv4Neighbour> rows = neighboursOf(platform->ipv4());
    ASSERT_EQ(rows.size(), 2000u);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        IpmibIpv4Neighbour row{};
        ASSERT_TRUE(platform->ipv4().findNeighbour(rows[i].if_index, rows[i].address, row));
        EXPECT_EQ(row.address, rows[i].address);
        EXPECT_TRUE(i == 0 || std::pair(rows[i - 1].if_index, rows[i - 1].address) <
                                  std::pair(rows[i].if_index, rows[i].address));
    }
    IpmibIpv4Neighbour row{};
    EXPECT_FALSE(platform->ipv4().findNeighbour(rows[0].if_index, 0x0B00'0000, row));
    space.run("ip neigh flush nud permanent");
    platform->beginPacket();
    EXPECT_TRUE(neighboursOf(platform->ipv4()).empty());
}

} // namespace
