// SPDX-License-Identifier: BSD-3-Clause
// Keeps a table of the kernel in memory: one dump, then the kernel's announcements; the dump again when some were lost.
#include "core/mirror.h"

#include "core/log.h"

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

std::string Mirror::start(EventLoop &loop, int receiveBuffer)
{
    loop_ = &loop;
    const std::vector<unsigned> groups = table_.groups();
    if (!announcements_.open(groups.data(), groups.size(), receiveBuffer) ||
        !loop.watch(announcements_.descriptor(), EventLoop::Work::announcement, [this] {
            readAnnouncements(loop_->packetWaits() ? announcementsPerRead : announcementsPerTurn);
        })) {
        return std::string(table_.name()) + ": cannot listen to the kernel: " + announcements_.error();
    }
    refresh();
    const std::string error = dumps_.runToEnd();
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

void Mirror::readAnnouncements(unsigned most)
{
    if (state_ == State::dumping) {
        return; // they come after the rows that are being read
    }
    for (unsigned i = 0; i < most; ++i) {
        switch (announcements_.readAnnouncements([this](const nlmsghdr &message) { table_.apply(message); })) {
        case Rtnetlink::Read::rows:
            break;
        case Rtnetlink::Read::lost:
            ++timesLost_;
            if (state_ == State::live) {
                logInfo("netlink: %s: announcements were lost, reading the table again", table_.name());
            }
            refresh();
            break; // the rest must be read, or the kernel goes on dropping
        case Rtnetlink::Read::failed:
            logWarning("netlink: %s: %s", table_.name(), announcements_.error().c_str());
            return;
        default:
            return;
        }
    }
}

void Mirror::dumpBegins()
{
    state_ = State::waiting; // also when it follows an interrupted one
    readAnnouncements();     // what is older than the dump must not be applied to it
    state_ = State::dumping;
    again_ = false;
    table_.beginRebuild();
}

void Mirror::dumpEnds(bool committed)
{
    state_ = State::live;
    timesRead_ += committed ? 1 : 0;
    if (again_) {
        again_ = false;
        refresh();
    }
    readAnnouncements();
}

} // namespace ipmib::platform
