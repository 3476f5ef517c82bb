// SPDX-License-Identifier: BSD-3-Clause
// Keeps a table of the kernel in memory: one dump, then the kernel's announcements; the dump again when some were lost.
#include "core/mirror.h"

#include "core/datagram.h"
#include "core/dump_queue.h"
#include "core/log.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace ipmib::platform
{

Mirror::Mirror(KernelTable &table, DumpQueue &dumps) : table_(table), dumps_(dumps) {}

Mirror::~Mirror()
{
    dumps_.remove(*this);
    if (loop_ != nullptr && announcements_.isOpen()) {
        loop_->forget(announcements_.descriptor());
    }
}

std::string Mirror::start(PlatformLoop &loop, int receiveBuffer, unsigned pieces)
{
    loop_ = &loop;
    const std::vector<unsigned> groups = table_.groups();
    const unsigned atBegin = table_.isForEveryPacket() ? announcementsPerRead : announcementsAtBegin;
    if (!announcements_.open(groups.data(), groups.size(), receiveBuffer) ||
        !loop.watch(announcements_.descriptor(), PlatformLoop::Work::announcement,
                    [this, atBegin] { readAnnouncements(loop_->packetWaits() ? atBegin : announcementsPerTurn); })) {
        return std::string(table_.name()) + ": cannot listen to the kernel: " + announcements_.error();
    }
    const auto look = [this] {
        const unsigned lostBefore = timesLost_;
        readAnnouncements(announcementsPerTurn);
        if (timesLost_ == lostBefore) { // else it has been called
            readWhenCalm();
        }
    };
    if (!calm_.open(loop, look) || !catchUp_.open(loop, [this] { readAnnouncements(announcementsPerTurn); })) {
        return std::string(table_.name()) + ": cannot create a timer";
    }
    refresh();
    const std::string error = dumps_.runToEnd(pieces);
    return error.empty() ? "" : std::string(table_.name()) + ": cannot read the kernel's table: " + error;
}

void Mirror::refresh()
{
    if (state_ == State::live) {
        state_ = State::waiting;
        dumps_.add(*this);
    } else if (state_ == State::dumping) {
        again_ = true;
    }
}

void Mirror::readAnew()
{
    if (state_ != State::dumping) {
        refresh();
        return;
    }
    state_ = State::waiting;
    hear(true);
    dumps_.remove(*this);
    dumps_.add(*this);
}

void Mirror::refreshSoon()
{
    if (!calm_.armed()) {
        calm_.arm(static_cast<unsigned>(std::clamp(readingTook_, shortestRest, longestRest).count()));
    }
}

void Mirror::readForPacket()
{
    if (isBehind_) {
        readAnnouncements();
        isBehind_ = false; // what goes on is not awaited
    }
}

bool Mirror::readAnnouncements(unsigned most)
{
    const bool isAll = takeAnnouncements(most);
    isBehind_ = !isAll;
    return isAll;
}

bool Mirror::takeAnnouncements(unsigned most)
{
    if (state_ != State::dumping && !applyHeld(std::min(most, announcementsPerTurn))) {
        return false;
    }
    for (unsigned i = 0; i < most; ++i) {
        if (state_ == State::dumping && held_.size() >= mostHeld) {
            hear(!table_.needsQuiet()); // its reading may rest for long
            return true;
        }
        const auto take = [this](const nlmsghdr &message) {
            ++changes_;
            if (state_ != State::dumping) {
                table_.applyChange(message);
                return;
            }
            const auto *bytes = reinterpret_cast<const std::byte *>(&message);
            held_.insert(held_.end(), bytes, bytes + message.nlmsg_len);
            held_.resize(NLMSG_ALIGN(held_.size()));
            disturbed_ = disturbed_ || table_.disturbs(message);
        };
        switch (announcements_.readAnnouncements(take)) {
        case Rtnetlink::Read::rows:
            break;
        case Rtnetlink::Read::lost:
            lost();
            break; // the rest must be read, or the kernel goes on dropping
        case Rtnetlink::Read::failed:
            logWarning("netlink: %s: %s", table_.name(), announcements_.error().c_str());
            return true;
        default:
            return true;
        }
    }
    return !announcements_.isReadable();
}

void Mirror::hear(bool on)
{
    if (deaf_ == on && loop_->heed(announcements_.descriptor(), on)) {
        deaf_ = !on;
    }
}

// Until the last one has been applied the rows are what the reading has brought. False when some are left for later.
bool Mirror::applyHeld(unsigned most)
{
    auto left = static_cast<int>(held_.size() - heldFrom_);
    const auto *message = reinterpret_cast<const nlmsghdr *>(held_.data() + heldFrom_);
    for (; most > 0 && holdsMessage(message, left); --most) {
        table_.applyChange(*message);
        message = mnl_nlmsg_next(message, &left);
    }
    if (left > 0) {
        heldFrom_ = held_.size() - static_cast<std::size_t>(left);
        catchUp_.arm(0);
        return false;
    }
    held_ = {};
    heldFrom_ = 0;
    return true;
}

void Mirror::lost()
{
    ++timesLost_;
    lostSince_ = true;
    if (!std::exchange(storm_, true)) {
        stormBegan_ = Clock::now();
        logInfo("netlink: %s: announcements were lost, reading the table again", table_.name());
    }
    if (state_ == State::live) {
        readWhenCalm();
    }
}

// Called for each loss, and when the time that it sets is over.
void Mirror::readWhenCalm()
{
    constexpr std::chrono::milliseconds shortestQuiet{20};
    const auto storm = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - stormBegan_);
    const std::uint64_t changed = changes_ - std::exchange(changesBeforeCalm_, changes_);
    const bool quiet = !table_.needsQuiet() || changed <= mostWhileCalm;
    if (!std::exchange(lostSince_, false) && quiet) { // and the time is over
        refresh();
    } else if (storm < longestStorm) {
        const std::chrono::milliseconds shortest = table_.needsQuiet() ? shortestQuiet : std::chrono::milliseconds(0);
        const std::chrono::milliseconds calm = std::clamp(readingTook_ / calmShare, shortest, longestCalm);
        calm_.arm(static_cast<unsigned>(calm.count()));
    } else {
        if (!std::exchange(saidStorm_, true)) {
            logWarning("netlink: %s: the kernel goes on announcing more than the socket's buffer holds; meanwhile the "
                       "table is read every %lld s",
                       table_.name(), static_cast<long long>(longestStorm.count() / 1000));
        }
        stormBegan_ = Clock::now();
        calm_.disarm();
        refresh();
    }
}

bool Mirror::beginDump()
{
    state_ = State::waiting; // also when it follows an interrupted one
    hear(true);
    // What is older than the dump must not be applied to it.
    if (!readAnnouncements(announcementsPerTurn) && ++drains_ < announcementsPerRead / announcementsPerTurn) {
        return false;
    }
    drains_ = 0;
    applyHeld(UINT_MAX);
    state_ = State::dumping;
    again_ = false;
    lostSince_ = false;
    disturbed_ = false;
    if (std::exchange(goesOn_, false)) {
        return true;
    }
    generation_ = generation_ == std::numeric_limits<Generation>::max() ? 1 : static_cast<Generation>(generation_ + 1);
    readingBegan_ = Clock::now();
    return true;
}

void Mirror::endDump(bool well)
{
    state_ = State::live;
    hear(true);
    timesRead_ += well ? 1 : 0;
    ++timesEnded_;
    readingTook_ = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - readingBegan_);
    readAnnouncements(announcementsPerTurn);
    if (lostSince_) {
        readWhenCalm();
    } else if (well) {
        storm_ = false;
        if (std::exchange(saidStorm_, false)) {
            logInfo("netlink: %s: nothing is lost any more", table_.name());
        }
    }
    if (std::exchange(again_, false)) {
        refresh();
    }
}

} // namespace ipmib::platform
