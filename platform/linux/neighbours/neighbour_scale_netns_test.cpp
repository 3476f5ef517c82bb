// SPDX-License-Identifier: BSD-3-Clause
// Many neighbours, and changes while they are read, against the kernel's own list.
#include "core/dump_queue.h"
#include "neighbours/neighbour_testing.h"
#include "netns/process.h"

#include <linux/neighbour.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <set>

namespace ipmib::platform
{
namespace
{

TEST_F(NeighboursNetns, twentyThousandOnSixteenInterfacesEqualTheKernelsList)
{
    space_->run("for i in 0 1 2 3 4 5 6 7; do ip link add left$i type veth peer name right$i;"
                "ip link set left$i up; ip link set right$i up; done");
    std::vector<std::string> devices;
    for (const char number : std::string("01234567")) {
        devices.insert(devices.end(), {std::string("left") + number, std::string("right") + number});
    }
    runBatch(*space_, batchOf(0, 10'000, "add", devices));
    PlatformInside platform(*space_);
    runBatch(*space_, batchOf(10'000, 10'000, "add", devices));
    platform->beginPacket();
    const ShownNeighbours rows = walked();
    EXPECT_EQ(rows.size(), 20'000u);
    EXPECT_TRUE(rows == listed(*space_));
    EXPECT_EQ(platform->neighbours().mirror().timesLost(), 0u);

    // What goes with a link is announced one by one, so the table need not be read again.
    settle(platform);
    space_->run("ip link set left0 down; ip link del left1");
    platform->beginPacket();
    EXPECT_TRUE(walked() == listed(*space_));
    EXPECT_EQ(platform->neighbours().table().size(), 20'000u - 3 * 1'250u);
}

TEST_F(NeighboursNetns, aPacketBehindABurstMayWaitOrAskAllTheSame)
{
    PlatformInside platform(*space_);
    const auto served = [&] { return platform->neighbours().table().size(); };
    const auto isCurrent = [&] { return platform->areCurrent(IPMIB_FOLLOW_NEIGHBOURS) == 1; };
    const std::size_t before = served();
    runBatch(*space_, batchOf(0, 2'000, "add", {"eth0", "peer0"}));
    platform->beginPacket();
    EXPECT_FALSE(isCurrent());
    EXPECT_LT(served(), before + 2'000);
    EXPECT_TRUE(platform.waitUntil(isCurrent));
    platform->beginPacket();
    EXPECT_TRUE(isCurrent());
    EXPECT_TRUE(walked() == listed(*space_));

    runBatch(*space_, batchOf(0, 2'000, "del", {"eth0", "peer0"}));
    platform->beginPacket();
    EXPECT_FALSE(isCurrent());
    EXPECT_TRUE(walked() == listed(*space_));
    EXPECT_TRUE(isCurrent());
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
void expectRowsOf(const ShownNeighbours &rows)
{
    for (const auto &[key, row] : rows) {
        const AddressBytes address = addressOf(key.second);
        const std::uint8_t *tail = address.data() + 13;
        const std::uint8_t expected[] = {2, 0, 0, tail[0], tail[1], tail[2]};
        ASSERT_EQ(row.linkLayer, linkLayerText(expected));
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
    const ShownNeighbours before = walked();
    EXPECT_EQ(before.size(), 2'000u);
    const std::string stop = testing::TempDir() + "stop" + std::to_string(getpid());
    netns::Process changes(*space_, {"sh", "-c",
                                     "until [ -e " + stop + " ]; do ip -6 -batch " + add +
                                         "; sleep 0.1; ip -6 -batch " + del + "; sleep 0.1; done"});
    const auto end = std::chrono::steady_clock::now() + PlatformInside::patience;
    constexpr int enoughWalks = 200;
    std::set<std::size_t> sizes;
    const auto sawBoth = [&] { return sizes.count(2'000) == 1 && sizes.count(2'100) == 1; };
    for (int walks = 0; (walks < enoughWalks || !sawBoth()) && std::chrono::steady_clock::now() < end; ++walks) {
        platform->dispatch();
        platform->beginPacket();
        const ShownNeighbours rows = walked();
        ASSERT_NO_FATAL_FAILURE(expectRowsOf(rows));
        ASSERT_TRUE(std::includes(rows.begin(), rows.end(), before.begin(), before.end(),
                                  [](const auto &a, const auto &b) { return a.first < b.first; }));
        sizes.insert(rows.size());
    }
    std::ofstream(stop).close();
    EXPECT_EQ(changes.wait(), 0);
    EXPECT_TRUE(sawBoth()) << "the walks saw the changes";
    settle(platform);
    EXPECT_TRUE(walked() == listed(*space_));
    std::remove(add.c_str());
    std::remove(del.c_str());
    std::remove(stop.c_str());
}

// Remembers the rows of a dump in the order in which they came.
class Recorder : public KernelTable
{
  public:
    explicit Recorder(NeighbourTable &table) : table_(table) {}
    std::vector<NeighbourKey> keys() const { return keys_; }

    const char *name() const override { return table_.name(); }
    std::vector<unsigned> groups() const override { return table_.groups(); }
    RtnetlinkRequest dump(std::size_t which) override
    {
        keys_.clear();
        return table_.dump(which);
    }
    void applyDump(const nlmsghdr &message, Generation generation) override
    {
        Neighbour row;
        if (readNeighbour(message, AF_INET6, 0, row) == NeighbourNews::present) {
            keys_.push_back(row.key());
        }
        table_.applyDump(message, generation);
    }
    bool sweep(Generation generation) override { return table_.sweep(generation); }
    void applyChange(const nlmsghdr &message) override { table_.applyChange(message); }

  private:
    NeighbourTable &table_;
    std::vector<NeighbourKey> keys_;
};

void remove(Rtnetlink &kernel, const NeighbourKey &key)
{
    RtnetlinkRequest request(RTM_DELNEIGH, NLM_F_ACK);
    ndmsg &header = request.family<ndmsg>();
    header.ndm_family = AF_INET6;
    header.ndm_ifindex = static_cast<int>(key.ifIndex);
    std::uint8_t address[16];
    key.copyAddress(address);
    mnl_attr_put(request.message(), NDA_DST, sizeof address, address);
    ASSERT_EQ(kernel.ask(request, [](const nlmsghdr &) {}), 0) << kernel.error();
}

// Ascending addresses would stand alone in the kernel's hash buckets, as long as there are more buckets than addresses.
std::string batchOfRandomAddresses(int count)
{
    std::mt19937 random(1);
    std::string batch;
    for (int i = 0; i < count; ++i) {
        char line[160];
        const auto word = [&] { return static_cast<unsigned>(random() & 0xffff); };
        std::snprintf(line, sizeof line,
                      "neigh replace 2001:db8:%x:%x:%x:%x:%x:%x dev eth0 lladdr 02:00:00:00:00:01 nud permanent\n",
                      word(), word(), word(), word(), word(), word());
        batch += line;
    }
    return batch;
}

// A dump pauses in its hash table after each datagram, one datagram ahead of its reader. The row in front of the place
// goes: where others of the same bucket were to follow, the kernel then passes over one of them.
TEST_F(NeighboursNetns, rowsThatADumpPassesOverStay)
{
    runBatch(*space_, batchOfRandomAddresses(20'000));
    const netns::Inside inside(*space_);
    PlatformLoop loop;
    DumpQueue dumps;
    KernelNeighbours kernel(AF_INET6);
    NeighbourTable table(kernel);
    Recorder recorder(table);
    Mirror mirror(recorder, dumps);
    Rtnetlink changes;
    ASSERT_TRUE(loop.open() && kernel.open() && changes.open());
    ASSERT_EQ(dumps.start(loop), "");
    ASSERT_EQ(mirror.start(loop), "");

    std::size_t passedOver = 0;
    for (int round = 0; round < 20 && passedOver == 0; ++round) {
        std::vector<std::size_t> pauses;
        mirror.refresh();
        while (dumps.readPiece()) {
            if (pauses.empty() || pauses.back() < recorder.keys().size()) { // behind the rows there are other pieces
                pauses.push_back(recorder.keys().size());
            }
        }
        const std::vector<NeighbourKey> order = recorder.keys();
        ASSERT_EQ(order.size(), table.size());
        ASSERT_GT(pauses.size(), 40u);

        std::size_t removed = 0;
        mirror.refresh();
        for (std::size_t piece = 0; dumps.readPiece(); ++piece) {
            if (piece + 1 < pauses.size()) {
                remove(changes, order[pauses[piece + 1] - 1]);
                ++removed;
            }
        }
        passedOver = order.size() - recorder.keys().size();
        mirror.readAnnouncements();
        EXPECT_EQ(table.size(), order.size() - removed);
    }
    if (passedOver == 0) {
        GTEST_SKIP() << "the kernel's hash table is so large that its buckets hold single rows";
    }
}

} // namespace
} // namespace ipmib::platform
