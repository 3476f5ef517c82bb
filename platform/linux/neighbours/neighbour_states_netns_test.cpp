// SPDX-License-Identifier: BSD-3-Clause
// Each kind of neighbour and each kind of change, against the kernel's own list.
#include "core/uptime.h"
#include "neighbours/neighbour_testing.h"

namespace ipmib::platform
{
namespace
{

TEST_F(NeighboursNetns, everyStateHasItsCode)
{
    neigh("add 2001:db8::1 dev eth0 lladdr 02:00:00:00:00:01 nud permanent");
    neigh("add 2001:db8::2 dev eth0 lladdr 02:00:00:00:00:02 nud reachable");
    neigh("add 2001:db8::3 dev eth0 lladdr 02:00:00:00:00:03 nud stale");
    neigh("add 2001:db8::5 dev eth0 lladdr 02:00:00:00:00:05 nud probe");
    neigh("add 2001:db8::6 dev eth0 nud failed");
    neigh("add 2001:db8::7 dev eth0 nud incomplete");
    neigh("add fe80::8 dev eth0 lladdr 02:00:00:00:00:08 nud permanent");
    const PlatformInside platform(*space_);
    const std::uint32_t index = indexOf("eth0");
    const auto address = [&](const char *text) { return std::pair(index, std::string(text)); };
    const ShownNeighbours expected = {
        {address("2001:db8::1"), {"02:00:00:00:00:01", 4, 1}}, {address("2001:db8::2"), {"02:00:00:00:00:02", 3, 1}},
        {address("2001:db8::3"), {"02:00:00:00:00:03", 3, 2}}, {address("2001:db8::5"), {"02:00:00:00:00:05", 3, 4}},
        {address("2001:db8::6"), {"00:00:00:00:00:00", 3, 5}}, {address("2001:db8::7"), {"00:00:00:00:00:00", 3, 7}},
        {address("fe80::8"), {"02:00:00:00:00:08", 4, 1}}};
    EXPECT_EQ(walked(), expected);
    for (const auto &[key, row] : expected) {
        NeighbourEntry entry{};
        EXPECT_EQ(ND_GetNetToPhysicalTable(key.first, addressOf(key.second).data(), &entry, 0), 0u);
        EXPECT_EQ(ipmib_be32_get(entry.state), row.state);
    }
}

TEST_F(NeighboursNetns, addressesThatNeedNoResolutionAreNoNeighbours)
{
    space_->run("ip tuntap add tun0 mode tun; ip link set tun0 up");
    neigh("add 2001:db8::1 dev eth0 nud noarp lladdr 02:00:00:00:00:01");
    neigh("add 2001:db8::2 dev lo nud noarp");
    neigh("add proxy 2001:db8::3 dev eth0");
    const PlatformInside platform(*space_);
    EXPECT_NE(space_->run("ip -6 neigh show nud noarp"), "") << "multicast groups, at least, have such entries";
    EXPECT_EQ(walked(), ShownNeighbours());
    EXPECT_EQ(get("2001:db8::1"), ShownNeighbour());
    EXPECT_EQ(get("2001:db8::3"), ShownNeighbour());
}

TEST_F(NeighboursNetns, aProxiedAddressLeavesTheNeighbourOfTheSameAddressAlone)
{
    neigh("add 2001:db8::1 dev eth0 lladdr 02:00:00:00:00:01 nud permanent");
    PlatformInside platform(*space_);
    neigh("add proxy 2001:db8::1 dev eth0");
    neigh("del proxy 2001:db8::1 dev eth0");
    platform->beginPacket();
    EXPECT_EQ(platform->neighbours().table().size(), 1u);
}

TEST_F(NeighboursNetns, whatARoutingDaemonLearnedIsANeighbour)
{
    neigh("add 2001:db8::1 dev eth0 lladdr 02:00:00:00:00:01 nud noarp extern_learn");
    const PlatformInside platform(*space_);
    EXPECT_EQ(get("2001:db8::1"), (ShownNeighbour{"02:00:00:00:00:01", 3, 1}));
    EXPECT_EQ(walked().size(), 1u);
}

TEST_F(NeighboursNetns, aLinkLayerAddressOfAnotherLengthIsZeros)
{
    Neighbour neighbour;
    RtnetlinkRequest message(RTM_NEWNEIGH, 0);
    auto &header = message.family<ndmsg>();
    header.ndm_family = AF_INET6;
    header.ndm_ifindex = 1;
    header.ndm_state = NUD_REACHABLE;
    mnl_attr_put(message.message(), NDA_DST, 16, addressOf("2001:db8::1").data());
    mnl_attr_put(message.message(), NDA_LLADDR, 8, "\x02\x00\x00\x00\x00\x00\x00\x01");
    ASSERT_EQ(readNeighbour(*message.message(), AF_INET6, 0, neighbour), NeighbourNews::present);
    EXPECT_EQ(linkLayerText(neighbour.linkLayer), "00:00:00:00:00:00");
}

TEST_F(NeighboursNetns, theNextPacketSeesWhatChanged)
{
    PlatformInside platform(*space_);
    neigh("add 2001:db8::1 dev eth0 lladdr 02:00:00:00:00:01 nud permanent");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::1"), (ShownNeighbour{"02:00:00:00:00:01", 4, 1}));
    neigh("replace 2001:db8::1 dev eth0 lladdr 02:00:00:00:00:02 nud permanent");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::1"), (ShownNeighbour{"02:00:00:00:00:02", 4, 1}));
    neigh("replace 2001:db8::1 dev eth0 nud failed");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::1"), (ShownNeighbour{"00:00:00:00:00:00", 3, 5}));
    EXPECT_EQ(walked(), listed(*space_));
    neigh("del 2001:db8::1 dev eth0");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::1"), ShownNeighbour());
    EXPECT_EQ(walked(), ShownNeighbours());
}

// The kernel announces neither of them.
TEST_F(NeighboursNetns, anEntryThatIsMadeWithoutAValidAddressIsFound)
{
    PlatformInside platform(*space_);
    neigh("add 2001:db8::1 dev eth0 nud failed");
    platform->beginPacket();
    walked(); // which makes the table be read again when the packet has been answered
    EXPECT_TRUE(platform.waitUntil([&] { return platform->neighbours().table().size() == 1; }));
    EXPECT_EQ(walked(), listed(*space_));
    neigh("add 2001:db8::2 dev eth0 nud incomplete");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::2"), (ShownNeighbour{"00:00:00:00:00:00", 3, 7}));
    EXPECT_EQ(walked(), listed(*space_));
}

TEST_F(NeighboursNetns, resolutionIsSeenInEachOfItsStates)
{
    const netns::Namespace other;
    netns::Namespace::connect(*space_, "link0", other, "link1");
    holdStates("link0");
    space_->run("ip addr add 2001:db8::1/64 dev link0 nodad");
    other.run("ip addr add 2001:db8::2/64 dev link1 nodad");
    PlatformInside platform(*space_);
    const std::uint32_t index = indexOf("link0");
    const auto state = [&](const char *address) {
        platform->beginPacket();
        NeighbourEntry entry{};
        const bool found = ND_GetNetToPhysicalTable(index, addressOf(address).data(), &entry, 16) == 0;
        return found ? ipmib_be32_get(entry.state) : 0;
    };
    space_->run("ping -6 -c 1 -W 1 2001:db8::99 > /dev/null || true");
    EXPECT_EQ(state("2001:db8::99"), 7u);
    space_->run("ping -6 -c 1 -W 2 2001:db8::2 > /dev/null");
    EXPECT_EQ(state("2001:db8::2"), 1u);
    space_->run("ip -6 neigh replace 2001:db8::2 dev link0 nud stale");
    EXPECT_EQ(state("2001:db8::2"), 2u);
    space_->run("ping -6 -c 1 -W 2 2001:db8::2 > /dev/null");
    EXPECT_EQ(state("2001:db8::2"), 3u);
    space_->sysctl("net/ipv6/neigh/link0/mcast_solicit", "1");
    EXPECT_TRUE(platform.waitFor([&] { return state("2001:db8::99") == 5; }));
}

// DELAY is not announced. The table is read again between packets alone, and a packet need not wait for that.
TEST_F(NeighboursNetns, aWalkAsksForWhatMayHaveChangedAndReadsNoTable)
{
    const netns::Namespace other;
    netns::Namespace::connect(*space_, "link0", other, "link1");
    holdStates("link0");
    space_->run("ip addr add 2001:db8::1/64 dev link0 nodad");
    other.run("ip addr add 2001:db8::2/64 dev link1 nodad");
    space_->run("ping -6 -c 1 -W 2 2001:db8::2 > /dev/null");
    space_->run("ip -6 neigh replace 2001:db8::2 dev link0 nud stale");
    PlatformInside platform(*space_);
    const auto key = std::pair(indexOf("link0"), std::string("2001:db8::2"));
    space_->run("ping -6 -c 1 -W 2 2001:db8::2 > /dev/null");
    const unsigned timesRead = platform->neighbours().mirror().timesRead();
    platform->beginPacket();
    EXPECT_EQ(walked()[key].state, 3u);
    EXPECT_EQ(platform->neighbours().mirror().timesRead(), timesRead);
    EXPECT_TRUE(platform->dumps().idle());
    EXPECT_TRUE(platform.waitUntil([&] { return platform->neighbours().mirror().timesRead() == timesRead + 1; }));
}

TEST_F(NeighboursNetns, anEntryThatWentUnannouncedCostsTheWalkNoOther)
{
    for (const char *number : {"1", "2", "3"}) {
        neigh(std::string("add 2001:db8::") + number + " dev eth0 lladdr 02:00:00:00:00:01 nud stale");
    }
    PlatformInside platform(*space_);
    neigh("del 2001:db8::1 dev eth0");
    neigh("del 2001:db8::2 dev eth0");
    EXPECT_EQ(platform->neighbours().table().size(), 3u); // what was announced waits for the packet
    EXPECT_EQ(walked(), listed(*space_));
}

TEST_F(NeighboursNetns, whatAWalkAsksTheKernelWithinAPacketIsBounded)
{
    std::string batch = batchOf(0, 2 * Neighbours::mostQuestions, "add", {"eth0"});
    for (std::size_t at = 0; (at = batch.find("permanent", at)) != std::string::npos;) {
        batch.replace(at, 9, "stale");
    }
    runBatch(*space_, batch);
    PlatformInside platform(*space_);
    const unsigned before = platform->neighbours().kernel().questions();
    platform->beginPacket();
    EXPECT_EQ(walked(), listed(*space_));
    EXPECT_EQ(walked(), listed(*space_));
    EXPECT_EQ(platform->neighbours().kernel().questions(), before + Neighbours::mostQuestions);
}

TEST_F(NeighboursNetns, theTimeOfTheLastUpdateIsThatOfTheChange)
{
    PlatformInside platform(*space_);
    const std::uint32_t before = secondsSinceBoot();
    neigh("add 2001:db8::1 dev eth0 lladdr 02:00:00:00:00:01 nud stale");
    platform->beginPacket();
    const auto stamp = [&] {
        NeighbourEntry entry{};
        EXPECT_EQ(ND_GetNetToPhysicalTable(indexOf("eth0"), addressOf("2001:db8::1").data(), &entry, 16), 0u);
        return ipmib_be32_get(entry.last_updated_s);
    };
    const std::uint32_t first = stamp();
    EXPECT_GE(first + 1, before);
    EXPECT_LE(first, secondsSinceBoot());
    for (int i = 0; i < 30; ++i) {
        usleep(50'000);
        EXPECT_EQ(stamp(), first);
        platform->neighbours().mirror().refresh();
        EXPECT_TRUE(platform.waitUntil([&] { return !platform->neighbours().mirror().refreshing(); }));
    }
}

TEST_F(NeighboursNetns, modesKeepToTheirSideOfTheLinkLocalRange)
{
    for (const char *address : {"2001:db8::1", "fe7f::1", "fe80::1", "febf:ffff::1", "fec0::1", "ff00::1"}) {
        neigh(std::string("add ") + address + " dev eth0 lladdr 02:00:00:00:00:01 nud permanent || true");
    }
    neigh("add fe80::2 dev peer0 lladdr 02:00:00:00:00:01 nud permanent");
    const PlatformInside platform(*space_);
    EXPECT_EQ(walked(), listed(*space_));
    NeighbourEntry entry = keyOf(indexOf("eth0"), addressOf("fe80::"));
    ASSERT_EQ(ND_GetNextNetToPhysicalTable(2, &entry), 0u);
    EXPECT_EQ(entry.address[15], 1);
    entry = keyOf(indexOf("eth0"), addressOf("febf:ffff::1"));
    EXPECT_NE(ND_GetNextNetToPhysicalTable(2, &entry), 0u);
    entry = keyOf(indexOf("eth0"), addressOf("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"));
    EXPECT_NE(ND_GetNextNetToPhysicalTable(1, &entry), 0u);
    EXPECT_NE(ND_GetNextNetToPhysicalTable(2, &entry), 0u);
    entry = keyOf(indexOf("eth0"), addressOf("::"));
    EXPECT_NE(ND_GetNextNetToPhysicalTable(3, &entry), 0u);
}

} // namespace
} // namespace ipmib::platform
