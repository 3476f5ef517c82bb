// SPDX-License-Identifier: BSD-3-Clause
// The neighbour mirror against the kernel's own list: every state, every kind of change, many neighbours.
#include "core/boot_time.h"
#include "netns/namespace.h"
#include "netns/process.h"
#include "test_platform.h"

#include <ipmib/platform.h>

#include <gtest/gtest.h>

#include <arpa/inet.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>

namespace
{

using namespace ipmib::platform;
using ipmib::netns::Namespace;

// One neighbour as text, so that two lists can be compared and read.
struct Row {
    std::string linkLayer;
    std::uint32_t type = 0;
    std::uint32_t state = 0;
    bool operator==(const Row &) const = default;
};
void PrintTo(const Row &row, std::ostream *out)
{
    *out << row.linkLayer << " type " << row.type << " state " << row.state;
}
using Address = std::array<std::uint8_t, 16>;
using Rows = std::map<std::pair<std::uint32_t, std::string>, Row>; // by ifIndex and address

Address addressOf(const std::string &text)
{
    Address address{};
    EXPECT_EQ(inet_pton(AF_INET6, text.c_str(), address.data()), 1) << text;
    return address;
}

std::string textOf(const std::uint8_t *address)
{
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(AF_INET6, address, text, sizeof text);
}

std::string hex(const std::uint8_t *bytes)
{
    char text[18];
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", bytes[0], bytes[1], bytes[2], bytes[3], bytes[4],
                  bytes[5]);
    return text;
}

NeighbourEntry keyOf(std::uint32_t ifIndex, const Address &address)
{
    NeighbourEntry entry{};
    entry.if_index = ipmib_be32(ifIndex);
    std::copy(address.begin(), address.end(), entry.address);
    return entry;
}

// What a walk of next calls yields; fails when it is not in order.
Rows walked()
{
    Rows rows;
    for (std::uint32_t ifIndex = 1; ifIndex < 64; ++ifIndex) {
        for (const std::uint32_t mode : {1u, 2u}) {
            Address last{};
            NeighbourEntry entry = keyOf(ifIndex, last);
            while (ND_GetNextNetToPhysicalTable(mode, &entry) == 0) {
                Address address;
                std::copy(std::begin(entry.address), std::end(entry.address), address.begin());
                EXPECT_EQ(ipmib_be32_get(entry.if_index), ifIndex);
                EXPECT_LT(last, address);
                EXPECT_EQ(mode == 2, address[0] == 0xfe && (address[1] & 0xc0) == 0x80);
                rows[{ifIndex, textOf(entry.address)}] = {hex(entry.link_layer), ipmib_be32_get(entry.type) + 1,
                                                          ipmib_be32_get(entry.state)};
                last = address;
            }
        }
    }
    return rows;
}

// What `ip -6 -j neigh` says, with the meaning of its words in the table.
Rows listed(const Namespace &space)
{
    static const std::map<std::string, std::uint32_t> states = {
        {"REACHABLE", 1}, {"PERMANENT", 1}, {"STALE", 2}, {"DELAY", 3}, {"PROBE", 4}, {"FAILED", 5}, {"INCOMPLETE", 7}};
    std::map<std::string, std::uint32_t> indexes;
    for (const auto &link : space.json("ip -j link")) {
        indexes[link["ifname"]] = link["ifindex"];
    }
    Rows rows;
    for (const auto &neighbour : space.json("ip -6 -j neigh")) {
        const std::string state = neighbour["state"][0];
        EXPECT_EQ(states.count(state), 1u) << state;
        rows[{indexes[neighbour["dev"]], neighbour["dst"]}] = {neighbour.value("lladdr", "00:00:00:00:00:00"),
                                                               state == "PERMANENT" ? 4u : 3u, states.at(state)};
    }
    return rows;
}

std::uint32_t indexOf(const Namespace &space, const std::string &device)
{
    return space.json("ip -j link show " + device)[0]["ifindex"];
}

class NeighboursNetns : public testing::Test
{
  protected:
    void SetUp() override
    {
        if (const std::string why = ipmib::netns::unavailable(); !why.empty()) {
            GTEST_SKIP() << why;
        }
        space_.emplace();
        space_->run("ip link add eth0 type veth peer name peer0; ip link set eth0 up; ip link set peer0 up");
    }
    void neigh(const std::string &command) { space_->run("ip -6 neigh " + command); }
    std::uint32_t eth0() const { return indexOf(*space_, "eth0"); }

    // The row of an address on eth0 by exact lookup; state 0 when there is none.
    Row get(const std::string &address)
    {
        NeighbourEntry entry{};
        if (ND_GetNetToPhysicalTable(eth0(), addressOf(address).data(), &entry, 16) != 0) {
            return {};
        }
        return {hex(entry.link_layer), ipmib_be32_get(entry.type) + 1, ipmib_be32_get(entry.state)};
    }

    // Lets a reading of the table that is under way come to its end.
    static void settle(PlatformInside &platform)
    {
        platform->beginPacket();
        EXPECT_TRUE(platform.waitUntil([&] { return !platform->neighbours().mirror().refreshing(); }));
    }

    std::optional<Namespace> space_;
};

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
    const std::uint32_t index = eth0();
    const auto address = [&](const char *text) { return std::pair(index, std::string(text)); };
    const Rows expected = {
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
    EXPECT_EQ(walked(), Rows());
    EXPECT_EQ(get("2001:db8::1"), Row());
    EXPECT_EQ(get("2001:db8::3"), Row());
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
    EXPECT_EQ(get("2001:db8::1"), (Row{"02:00:00:00:00:01", 3, 1}));
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
    ASSERT_EQ(readNeighbour(*message.message(), 0, neighbour), NeighbourNews::present);
    EXPECT_EQ(hex(neighbour.linkLayer), "00:00:00:00:00:00");
}

TEST_F(NeighboursNetns, theNextPacketSeesWhatChanged)
{
    PlatformInside platform(*space_);
    neigh("add 2001:db8::1 dev eth0 lladdr 02:00:00:00:00:01 nud permanent");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::1"), (Row{"02:00:00:00:00:01", 4, 1}));
    neigh("replace 2001:db8::1 dev eth0 lladdr 02:00:00:00:00:02 nud permanent");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::1"), (Row{"02:00:00:00:00:02", 4, 1}));
    neigh("replace 2001:db8::1 dev eth0 nud failed");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::1"), (Row{"00:00:00:00:00:00", 3, 5}));
    EXPECT_EQ(walked(), listed(*space_));
    neigh("del 2001:db8::1 dev eth0");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::1"), Row());
    EXPECT_EQ(walked(), Rows());
}

// The kernel announces neither of them.
TEST_F(NeighboursNetns, anEntryThatIsMadeWithoutAValidAddressIsFound)
{
    PlatformInside platform(*space_);
    neigh("add 2001:db8::1 dev eth0 nud failed");
    platform->beginPacket();
    EXPECT_EQ(walked(), listed(*space_));
    EXPECT_EQ(walked().size(), 1u);
    neigh("add 2001:db8::2 dev eth0 nud incomplete");
    platform->beginPacket();
    EXPECT_EQ(get("2001:db8::2"), (Row{"00:00:00:00:00:00", 3, 7}));
    EXPECT_EQ(walked(), listed(*space_));
}

TEST_F(NeighboursNetns, resolutionIsSeenInEachOfItsStates)
{
    const Namespace other;
    Namespace::connect(*space_, "link0", other, "link1");
    space_->run("ip addr add 2001:db8::1/64 dev link0 nodad");
    other.run("ip addr add 2001:db8::2/64 dev link1 nodad");
    PlatformInside platform(*space_);
    const std::uint32_t index = indexOf(*space_, "link0");
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
    EXPECT_TRUE(platform.waitUntil([&] { return state("2001:db8::99") == 5; }));
}

TEST_F(NeighboursNetns, theTimeOfTheLastUpdateIsThatOfTheChange)
{
    PlatformInside platform(*space_);
    const std::uint32_t before = secondsSinceBoot();
    neigh("add 2001:db8::1 dev eth0 lladdr 02:00:00:00:00:01 nud stale");
    platform->beginPacket();
    const auto stamp = [&] {
        NeighbourEntry entry{};
        EXPECT_EQ(ND_GetNetToPhysicalTable(eth0(), addressOf("2001:db8::1").data(), &entry, 16), 0u);
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
    NeighbourEntry entry = keyOf(eth0(), addressOf("fe80::"));
    ASSERT_EQ(ND_GetNextNetToPhysicalTable(2, &entry), 0u);
    EXPECT_EQ(entry.address[15], 1);
    entry = keyOf(eth0(), addressOf("febf:ffff::1"));
    EXPECT_NE(ND_GetNextNetToPhysicalTable(2, &entry), 0u);
    entry = keyOf(eth0(), addressOf("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"));
    EXPECT_NE(ND_GetNextNetToPhysicalTable(1, &entry), 0u);
    EXPECT_NE(ND_GetNextNetToPhysicalTable(2, &entry), 0u);
    entry = keyOf(eth0(), addressOf("::"));
    EXPECT_NE(ND_GetNextNetToPhysicalTable(3, &entry), 0u);
}

std::string batchOf(int first, int count, const std::string &command, const std::vector<std::string> &devices)
{
    std::string batch;
    for (int i = first; i < first + count; ++i) {
        char line[128];
        std::snprintf(line, sizeof line, "neigh %s %s::%x:%x dev %s lladdr 02:00:00:%02x:%02x:%02x nud permanent\n",
                      command.c_str(), i % 4 == 0 ? "fe80" : "2001:db8", i >> 16, i & 0xffff,
                      devices[static_cast<std::size_t>(i) % devices.size()].c_str(), i >> 16 & 0xff, i >> 8 & 0xff,
                      i & 0xff);
        batch += line;
    }
    return batch;
}

void runBatch(const Namespace &space, const std::string &batch)
{
    const std::string path = testing::TempDir() + "neighbours" + std::to_string(getpid()) + ".batch";
    std::ofstream(path) << batch;
    space.run("ip -6 -batch " + path);
    std::remove(path.c_str());
}

TEST_F(NeighboursNetns, twentyThousandOnSixteenInterfacesEqualTheKernelsList)
{
    std::vector<std::string> devices;
    for (int i = 0; i < 8; ++i) {
        const std::string left = "left" + std::to_string(i);
        const std::string right = "right" + std::to_string(i);
        space_->run("ip link add " + left + " type veth peer name " + right + "; ip link set " + left +
                    " up; ip link set " + right + " up");
        devices.insert(devices.end(), {left, right});
    }
    runBatch(*space_, batchOf(0, 10'000, "add", devices));
    PlatformInside platform(*space_);
    runBatch(*space_, batchOf(10'000, 10'000, "add", devices));
    platform->beginPacket();
    const Rows rows = walked();
    EXPECT_EQ(rows.size(), 20'000u);
    EXPECT_TRUE(rows == listed(*space_));
    EXPECT_EQ(platform->neighbours().mirror().timesLost(), 0u);

    // What goes with a link is announced one by one, so the table need not be read again.
    settle(platform);
    space_->run("ip link set left0 down; ip link del left1");
    platform->beginPacket();
    EXPECT_EQ(platform->neighbours().table().size(), 20'000u - 3 * 1'250u);
    EXPECT_TRUE(walked() == listed(*space_));
}

TEST_F(NeighboursNetns, lostAnnouncementsMakeTheTableBeReadAgain)
{
    Settings settings;
    settings.receiveBuffer = 1;
    PlatformInside platform(*space_, settings);
    runBatch(*space_, batchOf(0, 1'000, "add", {"eth0", "peer0"}));
    platform->beginPacket();
    EXPECT_GT(platform->neighbours().mirror().timesLost(), 0u);
    settle(platform);
    EXPECT_TRUE(walked() == listed(*space_));
}

// Every address has the one link-layer address that ends as it does, so a wrong row shows.
void expectRowsOf(const Rows &rows)
{
    for (const auto &[key, row] : rows) {
        const Address address = addressOf(key.second);
        const std::uint8_t *tail = address.data() + 13;
        const std::uint8_t expected[] = {2, 0, 0, tail[0], tail[1], tail[2]};
        ASSERT_EQ(row.linkLayer, hex(expected));
        ASSERT_EQ(row.type, 4u);
    }
}

TEST_F(NeighboursNetns, walksDuringChangesAreInOrderAndRight)
{
    const std::string add = testing::TempDir() + "add" + std::to_string(getpid());
    const std::string del = testing::TempDir() + "del" + std::to_string(getpid());
    runBatch(*space_, batchOf(0, 2'000, "add", {"eth0", "peer0"}));
    std::ofstream(add) << batchOf(2'000, 100, "add", {"eth0", "peer0"});
    std::ofstream(del) << batchOf(2'000, 100, "del", {"eth0", "peer0"});
    PlatformInside platform(*space_);
    const Rows before = walked();
    EXPECT_EQ(before.size(), 2'000u);
    ipmib::netns::Process changes(*space_, {"sh", "-c",
                                            "for i in 1 2 3 4 5 6 7 8 9 10; do ip -6 -batch " + add +
                                                "; sleep 0.1; ip -6 -batch " + del + "; sleep 0.1; done"});
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    std::set<std::size_t> sizes;
    while (std::chrono::steady_clock::now() < end) {
        platform->dispatch();
        platform->beginPacket();
        const Rows rows = walked();
        ASSERT_NO_FATAL_FAILURE(expectRowsOf(rows));
        ASSERT_TRUE(std::includes(rows.begin(), rows.end(), before.begin(), before.end(),
                                  [](const auto &a, const auto &b) { return a.first < b.first; }));
        sizes.insert(rows.size());
    }
    EXPECT_EQ(changes.wait(), 0);
    EXPECT_TRUE(sizes.count(2'000) == 1 && sizes.count(2'100) == 1) << "the walks saw the changes";
    settle(platform);
    EXPECT_TRUE(walked() == listed(*space_));
    std::remove(add.c_str());
    std::remove(del.c_str());
}

} // namespace
