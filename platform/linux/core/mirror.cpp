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
    if (!announcements_.open(groups.data(), groups.size(), receiveBuffer) ||
        !loop.watch(announcements_.descriptor(), PlatformLoop::Work::announcement, [this] {
            readAnnouncements(loop_->packetWaits() ? announcementsPerRead : announcementsPerTurn);
        })) {
        return std::string(table_.name()) + ": cannot listen to the kernel: " + announcements_.error();
    }
    if (!calm_.open(loop, [this] { readWhenCalm(); })) {
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
    dumps_.remove(*this);
    dumps_.add(*this);
}

void Mirror::refreshSoon()
{
    if (!calm_.armed()) {
        calm_.arm(static_cast<unsigned>(std::clamp(readingTook_, shortestRest, longestRest).count()));
    }
}

void Mirror::readAnnouncements(unsigned most)
{
    if (state_ != State::dumping && !applyHeld(std::min(most, announcementsPerTurn))) {
        return;
    }
    for (unsigned i = 0; i < most; ++i) {
        if (state_ == State::dumping && held_.size() >= mostHeld) {
            return;
        }
        const auto take = [this](const nlmsghdr &message) {
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
            return;
        default:
            return;
        }
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
        catchesUp_ = catchesUp_ || catchUp_.open(*loop_, [this] { readAnnouncements(announcementsPerTurn); });
        if (catchesUp_) {
            catchUp_.arm(0);
            return false;
        }
        return applyHeld(UINT_MAX);
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
    const auto storm = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - stormBegan_);
    if (!std::exchange(lostSince_, false)) { // and the time is over
        refresh();
    } else if (storm < longestStorm) {
        const std::chrono::milliseconds calm = std::min(readingTook_ / calmShare, longestCalm);
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

void Mirror::dumpBegins()
{
    state_ = State::waiting; // also when it follows an interrupted one
    applyHeld(UINT_MAX);
    readAnnouncements(); // what is older than the dump must not be applied to it
    state_ = State::dumping;
    again_ = false;
    lostSince_ = false;
    disturbed_ = false;
    if (std::exchange(goesOn_, false)) {
        return;
    }
    generation_ = generation_ == std::numeric_limits<Generation>::max() ? 1 : static_cast<Generation>(generation_ + 1);
    readingBegan_ = Clock::now();
}

void Mirror::dumpEnds(bool well)
{
    state_ = State::live;
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
