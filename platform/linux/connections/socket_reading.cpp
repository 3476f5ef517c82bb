// SPDX-License-Identifier: BSD-3-Clause
// The sockets of one protocol, read from the kernel in pieces.
#include "connections/socket_reading.h"

#include "connections/socket_message.h"
#include "core/log.h"

#include <linux/netlink.h>
#include <malloc.h>
#include <netinet/in.h>

namespace ipmib::platform
{
namespace
{

// Between packets, before the last piece, which takes a third of it: some sixty sockets.
constexpr std::chrono::microseconds longestTurn{300};
constexpr std::size_t pieceSize = std::size_t{8} * 1024;

} // namespace

SocketReading::~SocketReading()
{
    closeSocket();
    timer_.close();
}

bool SocketReading::areRead()
{
    askedAt_ = Clock::now();
    if (hasRows_ && askedAt_ - readAt_ <= times_.fresh) {
        return true;
    }
    if (work_ == Work::none || work_ == Work::clearing) {
        if (!begin()) {
            return true; // there will be no others
        }
        readPieces(); // a few sockets are read at once
    }
    return hasRows_ && Clock::now() - readAt_ <= times_.oldest;
}

bool SocketReading::begin()
{
    if (!timer_.isOpen() && !timer_.open(loop_, [this] { onTimer(); })) {
        return false;
    }
    timer_.disarm();
    ++generation_;
    family_ = AF_INET;
    if (!socket_.openFor(NETLINK_SOCK_DIAG, pieceSize) || !askForSockets(socket_, family_, protocol_)) {
        fail(socket_.error());
        return false;
    }
    if (!loop_.watch(socket_.descriptor(), PlatformLoop::Work::background, [this] { readPieces(); })) {
        socket_.close(); // which nobody watches
        fail("cannot watch a socket");
        return false;
    }
    work_ = Work::reading;
    return true;
}

void SocketReading::readPieces()
{
    const auto end = Clock::now() + longestTurn;
    while (work_ == Work::reading && Clock::now() < end && readPiece()) {
    }
    if (work_ == Work::sweeping) {
        tidySome();
    }
}

// False when there was nothing to read.
bool SocketReading::readPiece()
{
    const Rtnetlink::Read result = socket_.read([this](const nlmsghdr &message) {
        SocketRow socket;
        if (readSocket(message, protocol_, socket)) {
            tables_[socket.table].put(socket.row, generation_);
        }
    });
    const bool isEnd = result == Rtnetlink::Read::done || result == Rtnetlink::Read::interrupted;
    if (isEnd || (result == Rtnetlink::Read::failed && hasNoSuchSockets())) {
        nextFamily();
    } else if (result == Rtnetlink::Read::failed || result == Rtnetlink::Read::lost) {
        fail(socket_.error());
    }
    return result != Rtnetlink::Read::nothing;
}

// A kernel without IPv6.
bool SocketReading::hasNoSuchSockets() const
{
    return family_ == AF_INET6 && socket_.errorNumber() == ENOENT;
}

void SocketReading::nextFamily()
{
    if (family_ == AF_INET) {
        family_ = AF_INET6;
        if (!askForSockets(socket_, family_, protocol_)) {
            fail(socket_.error());
        }
        return;
    }
    closeSocket();
    saidFailed_ = false;
    work_ = Work::sweeping;
    table_ = firstTable();
}

// The rows that there are serve on: without them every question would be kept back.
void SocketReading::fail(const std::string &reason)
{
    closeSocket();
    if (!saidFailed_) {
        saidFailed_ = true;
        logWarning("%s: cannot read the sockets: %s", protocol_ == IPPROTO_TCP ? "tcp" : "udp", reason.c_str());
    }
    finish();
}

void SocketReading::closeSocket()
{
    if (socket_.isOpen()) {
        loop_.forget(socket_.descriptor());
        socket_.close();
    }
}

void SocketReading::finish()
{
    work_ = Work::none;
    hasRows_ = true;
    readAt_ = Clock::now();
    ++timesRead_;
    timer_.arm(static_cast<unsigned>(times_.idle.count()));
}

void SocketReading::onTimer()
{
    if (work_ == Work::none) {
        const auto unasked = std::chrono::floor<std::chrono::milliseconds>(Clock::now() - askedAt_);
        if (unasked < times_.idle) {
            timer_.arm(static_cast<unsigned>((times_.idle - unasked).count()));
            return;
        }
        hasRows_ = false;
        work_ = Work::clearing;
        table_ = firstTable();
    }
    tidySome();
}

// What is left of a sweep, or of a clearing: some of it.
void SocketReading::tidySome()
{
    const auto end = Clock::now() + longestTurn;
    while (table_ <= lastTable() && Clock::now() < end) {
        ConnectionTable &table = tables_[table_];
        table_ += (work_ == Work::sweeping ? table.sweepSome(generation_) : table.clearSome()) ? 1 : 0;
    }
    if (work_ == Work::clearing) {
        malloc_trim(0); // the rows were most of what there was; all of them together would take longer than a turn
    }
    if (table_ <= lastTable()) {
        timer_.arm(0);
    } else if (work_ == Work::sweeping) {
        finish();
    } else {
        work_ = Work::none;
    }
}

} // namespace ipmib::platform
