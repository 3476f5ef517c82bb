// SPDX-License-Identifier: BSD-3-Clause
// Reads tables of the kernel one after the other over one socket, in pieces.
#include "core/dump_queue.h"

#include "core/log.h"

#include <poll.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace ipmib::platform
{

namespace
{
constexpr int answerTimeout = 5000; // ms
constexpr int receiveBuffer = 1024 * 1024;

// A kernel without the table (IPv6 switched off, a routing table that nobody has used) has no rows of it.
bool meansEmpty(int error)
{
    return error == EOPNOTSUPP || error == EAFNOSUPPORT || error == ENOENT;
}
// Of this thread: a busy machine takes what else passes.
std::chrono::nanoseconds processorTime()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}
} // namespace

std::string DumpQueue::start(PlatformLoop &loop)
{
    loop_ = &loop;
    const bool timers = soon_.open(loop, [this] { readPieces(); }) && retry_.open(loop, [this] {
        for (Mirror *mirror : std::exchange(later_, {})) {
            mirror->refresh();
        }
        begin();
    });
    const bool rest = rest_.open(loop, [this] {
        if (socket_.isOpen()) {
            loop_->heed(socket_.descriptor(), true);
        }
        readPieces();
    });
    if (!timers || !rest) {
        return std::string("cannot create a timer: ") + std::strerror(errno);
    }
    return openSocket() ? "" : "cannot open a netlink socket: " + lastError_;
}

void DumpQueue::stop()
{
    soon_.close();
    retry_.close();
    rest_.close();
    closeSocket();
    waiting_.clear();
    later_.clear();
    reading_ = false;
    settling_ = false;
    sweeping_ = false;
}

bool DumpQueue::openSocket()
{
    if (!socket_.open({}, receiveBuffer)) {
        lastError_ = socket_.error();
        return false;
    }
    if (!loop_->watch(socket_.descriptor(), PlatformLoop::Work::background, [this] { readPieces(); })) {
        lastError_ = std::string("watch: ") + std::strerror(errno);
        socket_.close();
        return false;
    }
    return true;
}

// The kernel's half of a dump ends with the socket; the next dump opens another one.
void DumpQueue::closeSocket()
{
    if (socket_.isOpen()) {
        loop_->forget(socket_.descriptor());
        socket_.close();
    }
}

void DumpQueue::add(Mirror &mirror)
{
    waiting_.push_back(&mirror);
    if (!reading_) {
        soon_.arm(0);
    }
}

void DumpQueue::remove(Mirror &mirror)
{
    std::erase(later_, &mirror);
    if (reading_ && waiting_.front() == &mirror) {
        waiting_.pop_front();
        reading_ = false;
        settling_ = false;
        sweeping_ = false;
        rest_.disarm();
        closeSocket();
        begin();
    } else {
        std::erase(waiting_, &mirror);
    }
}

void DumpQueue::readPieces()
{
    const auto end = std::chrono::steady_clock::now() + longestPiece;
    bool more = !rest_.armed();
    while (more && std::chrono::steady_clock::now() < end) {
        const auto before = processorTime();
        more = readPiece();
        const auto cost = processorTime() - before;
        if (reading_ && cost > costlyRead && waiting_.front()->table_.needsQuiet()) {
            rest(std::chrono::duration_cast<std::chrono::microseconds>(cost));
            return;
        }
    }
    if (settling_ || sweeping_) {
        soon_.arm(0); // no descriptor becomes readable for it
    }
}

void DumpQueue::rest(std::chrono::microseconds cost)
{
    const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(cost * restRatio);
    if (loop_->heed(socket_.descriptor(), false)) {
        rest_.arm(static_cast<unsigned>(std::min(rest, longestRest).count()));
    }
}

void DumpQueue::begin()
{
    if (reading_ || waiting_.empty()) {
        return;
    }
    if (!socket_.isOpen() && !openSocket()) {
        if (!std::exchange(saidCannotBegin_, true)) {
            logWarning("netlink: no table can be read anew: %s, trying again later", lastError_.c_str());
        }
        armRetry();
        return;
    }
    saidCannotBegin_ = false;
    if (!waiting_.front()->beginDump()) {
        postponed_ = true;
        soon_.arm(0);
        return;
    }
    reading_ = true;
    which_ = 0;
    interrupted_ = false;
    sendRequest();
}

bool DumpQueue::sendRequest()
{
    KernelTable &table = waiting_.front()->table_;
    RtnetlinkRequest request = table.dump(which_);
    if (socket_.send(request)) {
        return true;
    }
    fail();
    return false;
}

std::string DumpQueue::runToEnd(unsigned pieces)
{
    lastError_.clear();
    for (unsigned read = 0; !idle() && read < pieces;) {
        if (readPiece() || idle()) {
            ++read;
            continue;
        }
        if (std::exchange(postponed_, false)) {
            continue;
        }
        if (!reading_) {
            return lastError_;
        }
        pollfd wait{socket_.descriptor(), POLLIN, 0};
        if (poll(&wait, 1, answerTimeout) == 0) {
            return "no answer";
        }
    }
    return lastError_;
}

bool DumpQueue::readPiece()
{
    begin();
    if (!reading_) {
        return false;
    }
    if (settling_) {
        return settle();
    }
    if (sweeping_) {
        sweep();
        return !idle();
    }
    Mirror &mirror = *waiting_.front();
    const Rtnetlink::Read result =
        socket_.read([&](const nlmsghdr &message) { mirror.table_.applyDump(message, mirror.generation_); });
    switch (result) {
    case Rtnetlink::Read::rows:
        return true;
    case Rtnetlink::Read::nothing:
        return false;
    default:
        finish(result);
        return !idle();
    }
}

void DumpQueue::finish(Rtnetlink::Read result)
{
    Mirror &mirror = *waiting_.front();
    interrupted_ = interrupted_ || result == Rtnetlink::Read::interrupted;
    const bool empty = result == Rtnetlink::Read::failed && meansEmpty(socket_.errorNumber());
    if ((result == Rtnetlink::Read::failed && !empty) || result == Rtnetlink::Read::lost) {
        fail();
        return;
    }
    if (++which_ < mirror.table_.dumps()) {
        sendRequest();
        return;
    }
    settling_ = true;
    soon_.arm(0);
}

// The announcements are kept, but looked at: those that were made until the dump ended tell whether it is whole.
bool DumpQueue::settle()
{
    Mirror &mirror = *waiting_.front();
    if (!mirror.readAnnouncements(Mirror::announcementsPerTurn)) {
        return true;
    }
    settling_ = false;
    if (!interrupted_ && mirror.disturbed_ && attempt_ + 1 < disturbedDumps) {
        ++attempt_;
        mirror.goesOn_ = true;
        reading_ = false;
        begin();
        return true;
    }
    if (!interrupted_) {
        sweeping_ = true;
        return true;
    }
    ++timesInterrupted_;
    if (++attempt_ < attempts) {
        reading_ = false;
        begin();
        return true;
    }
    tryAgainLater(mirror, "the table changed during each of " + std::to_string(attempts) + " readings");
    end(false);
    return !idle();
}

void DumpQueue::sweep()
{
    Mirror &mirror = *waiting_.front();
    if (mirror.table_.sweep(mirror.generation_)) {
        sweeping_ = false;
        mirror.saidCannotRead_ = false;
        end(true);
    }
}

void DumpQueue::fail()
{
    Mirror &mirror = *waiting_.front();
    lastError_ = socket_.error();
    closeSocket();
    tryAgainLater(mirror, lastError_);
    end(false);
}

void DumpQueue::tryAgainLater(Mirror &mirror, const std::string &reason)
{
    if (!std::exchange(mirror.saidCannotRead_, true)) {
        logWarning("netlink: %s: %s, trying again later", mirror.table_.name(), reason.c_str());
    }
    later_.push_back(&mirror);
    armRetry();
}

// Whoever asks for a reading meanwhile must not put it off.
void DumpQueue::armRetry()
{
    if (!retry_.armed()) {
        retry_.arm(retryMilliseconds);
    }
}

void DumpQueue::end(bool well)
{
    Mirror *mirror = waiting_.front();
    waiting_.pop_front();
    reading_ = false;
    attempt_ = 0;
    mirror->endDump(well);
    begin();
}

} // namespace ipmib::platform
