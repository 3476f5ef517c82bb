// SPDX-License-Identifier: BSD-3-Clause
// The link mirror against the kernel's own list: every kind of link, changes, lost announcements, interrupted dumps.
#include "netns/namespace.h"
#include "test_platform.h"

#include <ipmib/platform.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <net/if_arp.h>

#include <random>

namespace
{

using namespace ipmib::platform;
using ipmib::netns::Namespace;

// Every ifIndex that the module's standard selection yields, in the order in which it yields them.
std::vector<std::uint32_t> selected()
{
    static constexpr std::uint32_t standard[] = {22, 35, 42, 10, 6,   23,  67,  31,  16,  39,  5,   71,
                                                 27, 29, 1,  89, 26,  28,  41,  25,  7,   55,  2,   47,
                                                 51, 70, 97, 86, 105, 110, 111, 122, 124, 144, 168, 176};
    IfSelection selection;
    IF_Select_Init(5, &selection);
    for (const std::uint32_t type : standard) {
        EXPECT_EQ(IF_SelectType_Set(type, &selection), 0u);
    }
    EXPECT_EQ(IF_SelectCondition_Set(8, &selection), 0u);
    std::vector<std::uint32_t> found;
    uintptr_t iterator = IF_IteratorInitialize();
    for (std::uint32_t at = IF_GetFirstIfIndexByIfSelect(&selection, iterator); at != 0;
         at = IF_GetNextIfIndexByIfSelect(&selection, iterator, at)) {
        found.push_back(at);
    }
    IF_IteratorFinalize(&iterator);
    return found;
}

// The kernel's list, in ascending ifIndex.
std::vector<std::uint32_t> listed(const Namespace &space)
{
    std::vector<std::uint32_t> found;
    for (const auto &link : space.json("ip -j link")) {
        found.push_back(link["ifindex"]);
    }
    std::sort(found.begin(), found.end());
    return found;
}

void addEveryKind(const Namespace &space)
{
    space.run("ip link add br0 type bridge");
    space.run("ip link add veth0 type veth peer name veth1");
    space.run("ip link add macvlan0 link veth0 type macvlan");
    space.run("ip link add macvtap0 link veth0 type macvtap");
    space.run("ip link add vxlan0 type vxlan id 7 dstport 4789");
    space.run("ip tuntap add tun0 mode tun");
    space.run("ip tuntap add tap0 mode tap");
    space.run("ip link set veth0 up; ip link set veth1 up mtu 1279; ip link set br0 up");
    space.run("ip link add ifb7 type ifb");
}

void addBridges(const Namespace &space, int count)
{
    std::string batch;
    for (int i = 0; i < count; ++i) {
        batch += "link add bridge" + std::to_string(i) + " type bridge\n";
    }
    space.run("ip -batch - <<'END'\n" + batch + "END");
}

TEST(LinksNetns, everyKindIsSelectedInOrder)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    addEveryKind(space);
    PlatformInside platform(space);
    EXPECT_EQ(selected(), listed(space));
    EXPECT_GE(selected().size(), 10u);
}

TEST(LinksNetns, aLinkIsWhatIpSaysOfIt)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    addEveryKind(space);
    PlatformInside platform(space);
    for (const auto &expected : space.json("ip -j -d link")) {
        const Link *link = platform->links().find(expected["ifindex"]);
        ASSERT_NE(link, nullptr) << expected;
        EXPECT_EQ(expected["ifname"], link->name);
        EXPECT_EQ(expected["mtu"], link->mtu);
        EXPECT_EQ(expected.contains("linkinfo") ? expected["linkinfo"]["info_kind"] : "", link->kind);
        const auto &flags = expected["flags"];
        EXPECT_EQ(std::find(flags.begin(), flags.end(), "UP") != flags.end(), (link->flags & IFF_UP) != 0);
        if (expected["link_type"] == "ether") {
            EXPECT_EQ(link->hardware, ARPHRD_ETHER);
            ASSERT_EQ(link->addressSize, 6);
            char text[18];
            std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", link->address[0], link->address[1],
                          link->address[2], link->address[3], link->address[4], link->address[5]);
            EXPECT_EQ(expected["address"], text);
        }
    }
}

TEST(LinksNetns, theNextPacketSeesWhatChanged)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add keep type veth peer name keep1");
    PlatformInside platform(space);

    space.run("ip link add br9 type bridge");
    EXPECT_NE(selected(), listed(space)) << "a packet under way keeps what it began with";
    platform->beginPacket();
    EXPECT_EQ(selected(), listed(space));

    const std::uint32_t index = space.json("ip -j link show br9")[0]["ifindex"];
    space.run("ip link set br9 name renamed");
    platform->beginPacket();
    EXPECT_STREQ(platform->links().find(index)->name, "renamed");

    space.run("ip link del renamed");
    platform->beginPacket();
    EXPECT_EQ(selected(), listed(space));
    EXPECT_EQ(IF_IsValidIfIndex(index), 0u);
    EXPECT_EQ(IF_IsValidIfIndex(1), 1u);
    EXPECT_EQ(platform->linkMirror().timesRead(), 1u) << "changes come by announcement, not by reading again";
}

TEST(LinksNetns, theOneBehindAnIndexThatIsGoneIsFound)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add br1 index 10 type bridge; ip link add br2 index 20 type bridge;"
              "ip link add br3 index 30 type bridge");
    PlatformInside platform(space);
    space.run("ip link del br2");
    platform->beginPacket();
    IfSelection selection;
    IF_Select_Init(5, &selection);
    IF_SelectTypeSetGroup(2, &selection);
    EXPECT_EQ(IF_GetNextIfIndexByIfSelect(&selection, 1, 20), 30u);
    EXPECT_EQ(IF_GetNextIfIndexByIfSelect(&selection, 1, 30), 0u);
    EXPECT_EQ(IF_GetNextIfIndexByIfSelect(&selection, 1, 0xFFFFFFFF), 0u);
}

TEST(LinksNetns, lostAnnouncementsMakeTheTableBeReadAgain)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    Settings settings;
    settings.receiveBuffer = 1; // the kernel rounds up to room for one or two announcements
    PlatformInside platform(space, settings);
    addBridges(space, 40);
    platform->beginPacket();
    EXPECT_GT(platform->linkMirror().timesLost(), 0u);
    EXPECT_TRUE(platform.waitUntil([&] { return !platform->linkMirror().refreshing(); }));
    EXPECT_GT(platform->linkMirror().timesRead(), 1u);
    EXPECT_EQ(selected(), listed(space));
}

TEST(LinksNetns, aPacketDuringAReadingIsServedFromTheRowsBefore)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add br1 type bridge");
    PlatformInside platform(space);
    const auto before = selected();
    platform->linkMirror().refresh();
    ASSERT_TRUE(platform->dumps().readPiece());
    space.run("ip link add br2 type bridge");
    platform->beginPacket();
    EXPECT_EQ(selected(), before);
    EXPECT_TRUE(platform.waitUntil([&] { return !platform->linkMirror().refreshing(); }));
    EXPECT_EQ(selected(), listed(space));
}

// Enough links for a dump of several datagrams; the kernel marks the dump when the list changes between two of them.
TEST(LinksNetns, anInterruptedDumpIsReadAgain)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    addBridges(space, 100);
    PlatformInside platform(space);
    const unsigned reads = platform->linkMirror().timesRead();
    platform->linkMirror().refresh();
    ASSERT_TRUE(platform->dumps().readPiece());
    space.run("ip link del bridge50; ip link add late type bridge");
    EXPECT_TRUE(platform.waitUntil([&] { return !platform->linkMirror().refreshing(); }));
    EXPECT_EQ(platform->linkMirror().timesRead(), reads + 1);
    EXPECT_GT(platform->dumps().timesInterrupted(), 0u);
    EXPECT_EQ(selected(), listed(space));
}

TEST(LinksNetns, aTableThatNeverStandsStillKeepsItsLastGoodRows)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    addBridges(space, 100);
    PlatformInside platform(space);
    const auto before = selected();
    platform->linkMirror().refresh();
    for (unsigned attempt = 0; attempt < DumpQueue::attempts; ++attempt) {
        ASSERT_TRUE(platform->dumps().readPiece()) << "no reading under way in attempt " << attempt;
        space.run("ip link add late type bridge; ip link del late");
        while (platform->dumps().timesInterrupted() == attempt) {
            platform->dumps().readPiece();
        }
    }
    EXPECT_FALSE(platform->linkMirror().refreshing());
    EXPECT_EQ(platform->linkMirror().timesRead(), 1u);
    EXPECT_EQ(selected(), before);
    EXPECT_TRUE(platform.waitUntil([&] { return platform->linkMirror().timesRead() == 2; }))
        << "it is tried again later";
    EXPECT_EQ(selected(), listed(space));
}

// Changes of every kind, some of them lost, some during readings that the losses cause.
TEST(LinksNetns, afterAStormTheMirrorIsTheKernelsTable)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    addBridges(space, 60);
    Settings settings;
    settings.receiveBuffer = 8192;
    PlatformInside platform(space, settings);
    std::mt19937 random(7);
    for (int round = 0; round < 12; ++round) {
        std::string batch;
        for (int change = 0; change < 10; ++change) {
            const std::string i = std::to_string(random() % 60);
            const char *const changes[] = {" up", " down", " mtu 1400", " txqueuelen 500"};
            batch += random() % 3 == 0 ? "link del bridge" + i + "\nlink add bridge" + i + " type bridge\n"
                                       : "link set bridge" + i + changes[random() % 4] + "\n";
        }
        space.run("ip -batch - <<'END'\n" + batch + "END");
        if (round % 3 == 0) {
            platform->beginPacket();
        }
        if (round % 2 == 0) {
            platform->dispatch();
        }
    }
    EXPECT_GT(platform->linkMirror().timesLost(), 0u);
    platform->beginPacket();
    ASSERT_TRUE(platform.waitUntil([&] { return !platform->linkMirror().refreshing(); }));
    EXPECT_EQ(selected(), listed(space));
    for (const auto &expected : space.json("ip -j link")) {
        const Link *link = platform->links().find(expected["ifindex"]);
        ASSERT_NE(link, nullptr);
        const auto &flags = expected["flags"];
        EXPECT_EQ(expected["ifname"], link->name);
        EXPECT_EQ(expected["mtu"], link->mtu);
        EXPECT_EQ(std::find(flags.begin(), flags.end(), "UP") != flags.end(), (link->flags & IFF_UP) != 0);
    }
}

} // namespace
