// SPDX-License-Identifier: BSD-3-Clause
// How tables are read again: what is tried anew when it cannot be, and in which order dumps and announcements are used.
#include "core/descriptor.h"
#include "core/dump_queue.h"
#include "core/log.h"
#include "netns/namespace.h"
#include "test_descriptors.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/eventfd.h>

#include <optional>
#include <string>
#include <vector>

namespace ipmib::platform
{
namespace
{

using Words = std::vector<std::string>;

// The list of links, of which it only remembers what happened, and nothing twice in a row.
class Diary : public KernelTable
{
  public:
    const Words &events() const { return events_; }
    void refuse(bool on) { refused_ = on; }
    unsigned announced() const { return announced_; }
    void beForEveryPacket() { forEveryPacket_ = true; }
    void needQuiet() { quiet_ = true; }

    const char *name() const override { return "diary"; }
    std::vector<unsigned> groups() const override { return {RTNLGRP_LINK}; }
    RtnetlinkRequest dump(std::size_t) override
    {
        RtnetlinkRequest request(RTM_GETLINK, NLM_F_DUMP);
        request.family<ifinfomsg>().ifi_flags =
            refused_ ? 1 : 0; // strict checking refuses what a dump does not look at
        return request;
    }
    void applyDump(const nlmsghdr &, Generation) override { write("fill"); }
    bool sweep(Generation) override
    {
        write("sweep");
        return true;
    }
    void applyChange(const nlmsghdr &) override
    {
        ++announced_;
        write("announcement");
    }
    bool isForEveryPacket() const override { return forEveryPacket_; }
    bool needsQuiet() const override { return quiet_; }

  private:
    void write(const char *event)
    {
        if (events_.empty() || events_.back() != event) {
            events_.emplace_back(event);
        }
    }

    Words events_;
    bool refused_ = false;
    bool forEveryPacket_ = false;
    unsigned announced_ = 0;
    bool quiet_ = false;
};

Words lines;

class MirrorNetns : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        space_.emplace();
        // More than one datagram holds.
        space_->run("seq 100 | sed 's/.*/link add bridge& type bridge/' | ip -batch -");
        inside_.emplace(*space_);
        lines.clear();
        setLogSink([](int, const char *line) { lines.emplace_back(line); });
        ASSERT_TRUE(loop_.open());
        ASSERT_EQ(dumps_.start(loop_), "");
        mirror_.emplace(diary_, dumps_);
        ASSERT_EQ(mirror_->start(loop_), "");
    }
    void TearDown() override { setLogSink(nullptr); }

    // Waits until there is something to do, and does it; false when that takes too long.
    bool turn()
    {
        pollfd wait{loop_.descriptor(), POLLIN, 0};
        const bool ready = poll(&wait, 1, 60000) > 0;
        loop_.run();
        return ready;
    }
    // Announcements, each of them when the command has ended, and at least so many.
    static constexpr unsigned ofBurst = 400;
    void burst()
    {
        space_->run("for mtu in 1300 1350 1400 1450; do seq 100 | sed \"s/.*/link set bridge& mtu $mtu/\"; done | "
                    "ip -batch -");
    }
    bool waitForReading(unsigned times)
    {
        while (mirror_->timesRead() < times && turn()) {
        }
        return mirror_->timesRead() == times;
    }

    std::optional<netns::Namespace> space_;
    std::optional<netns::Inside> inside_;
    PlatformLoop loop_;
    DumpQueue dumps_;
    Diary diary_;
    std::optional<Mirror> mirror_;
};

// A table that goes away while it is read takes the socket along, and for the next reading there is no other one.
TEST_F(MirrorNetns, aReadingThatCannotBeginIsTriedAgainAndSaidOnce)
{
    for (std::size_t time = 1; time <= 2; ++time) {
        Diary other;
        std::optional<Mirror> leaving(std::in_place, other, dumps_);
        ASSERT_EQ(leaving->start(loop_), "");
        leaving->refresh();
        ASSERT_TRUE(dumps_.readPiece());
        NoDescriptors starving;
        leaving.reset();
        mirror_->refresh();
        turn();
        for (int attempts = 0; attempts < 3; ++attempts) {
            EXPECT_FALSE(dumps_.readPiece());
        }
        EXPECT_NE(dumps_.runToEnd(), "") << "what the start would say";
        ASSERT_EQ(lines.size(), time);
        EXPECT_NE(lines.back().find("Too many open files, trying again later"), std::string::npos) << lines.back();
        starving.end();
        EXPECT_TRUE(waitForReading(static_cast<unsigned>(time) + 1));
    }
}

TEST_F(MirrorNetns, aReadingThatIsRefusedIsSaidOnceUntilOneSucceeds)
{
    for (std::size_t time = 1; time <= 2; ++time) {
        diary_.refuse(true);
        for (int attempts = 0; attempts < 3; ++attempts) {
            mirror_->refresh();
            EXPECT_NE(dumps_.runToEnd(), "");
        }
        EXPECT_EQ(lines.size(), time) << lines.back();
        diary_.refuse(false);
        mirror_->refresh();
        EXPECT_EQ(dumps_.runToEnd(), "");
    }
}

// The kernel marks a dump when the list changes between two of its datagrams.
TEST_F(MirrorNetns, announcementsOlderThanARetriedDumpAreNotAppliedToIt)
{
    const Words before = diary_.events();
    mirror_->refresh();
    ASSERT_TRUE(dumps_.readPiece());
    space_->run("ip link del bridge50");
    while (mirror_->refreshing()) {
        dumps_.readPiece();
    }
    mirror_->readAnnouncements();
    EXPECT_GT(dumps_.timesInterrupted(), 0u);
    const Words since(diary_.events().begin() + static_cast<std::ptrdiff_t>(before.size()), diary_.events().end());
    EXPECT_EQ(since, (Words{"fill", "announcement", "fill", "sweep"}));
}

TEST_F(MirrorNetns, ofABurstAPacketWaitsForWhatItAsksForOnly)
{
    Diary other;
    other.beForEveryPacket();
    Mirror forEveryPacket(other, dumps_);
    ASSERT_EQ(forEveryPacket.start(loop_), "");
    burst();
    loop_.runAnnouncements();
    EXPECT_GE(other.announced(), ofBurst);
    EXPECT_FALSE(forEveryPacket.isBehind());
    EXPECT_LT(diary_.announced(), ofBurst) << "a turn's worth";
    EXPECT_TRUE(mirror_->isBehind());
    mirror_->readForPacket();
    EXPECT_GE(diary_.announced(), ofBurst);
    EXPECT_FALSE(mirror_->isBehind());
}

TEST_F(MirrorNetns, whatABurstLeavesIsAppliedBetweenPackets)
{
    burst();
    loop_.runAnnouncements();
    EXPECT_TRUE(mirror_->isBehind());
    while (mirror_->isBehind() && turn()) {
    }
    EXPECT_FALSE(mirror_->isBehind());
    EXPECT_GE(diary_.announced(), ofBurst);
}

TEST_F(MirrorNetns, aPacketSeesWhatWasAnnouncedHoweverMuchElseIsReady)
{
    std::vector<Descriptor> others;
    for (int i = 0; i < 40; ++i) {
        others.emplace_back(eventfd(1, EFD_CLOEXEC));
        ASSERT_TRUE(loop_.watch(others.back().get(), PlatformLoop::Work::background, [] {}));
    }
    const unsigned before = diary_.announced();
    space_->run("ip link del bridge50");
    loop_.runAnnouncements();
    EXPECT_GT(diary_.announced(), before);
    for (const Descriptor &other : others) {
        loop_.forget(other.get());
    }
}

// The kernel would go through such a table from the first row on for each piece of it.
TEST_F(MirrorNetns, aTableThatNeedsQuietIsNotReadWhileItChanges)
{
    Diary other;
    other.needQuiet();
    Mirror quiet(other, dumps_);
    ASSERT_EQ(quiet.start(loop_, 4096), "");
    const unsigned before = quiet.timesRead();
    // More than the buffer holds, and all of them long before such a table is read although it goes on changing.
    const auto change = [&] {
        space_->run("seq 10 | sed 's/.*/link set bridge& mtu 1400\\nlink set bridge& mtu 1500/' | ip -batch -");
    };
    change();
    while (quiet.timesLost() == 0) {
        ASSERT_TRUE(turn());
    }
    for (int i = 0; i < 3; ++i) {
        change();
        turn();
    }
    EXPECT_EQ(quiet.timesRead(), before);
    while (quiet.refreshing() && turn()) {
    }
    EXPECT_EQ(quiet.timesRead(), before + 1);
}

} // namespace
} // namespace ipmib::platform
