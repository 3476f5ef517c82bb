// SPDX-License-Identifier: BSD-3-Clause
// Keeps a table of the kernel in memory: one dump, then the kernel's announcements; the dump again when some were lost.
//
// How it stays right: the groups are joined before the dump is asked for, and what is announced while it runs waits in
// the socket until the dumped rows are in use. Each mirror has a socket of its own, so that a loss names its table and
// the others stay live while it is read again. A dump is built beside the table in use and replaces it as a whole.
#pragma once

#include "core/event_loop.h"
#include "core/rtnetlink.h"

#include <deque>
#include <string>
#include <vector>

namespace ipmib::platform
{

// One table of the kernel: how to ask for it, and what a message says about its rows.
class KernelTable
{
  public:
    virtual ~KernelTable() = default;

    // For log lines.
    virtual const char *name() const = 0;
    // The RTNLGRP_* groups that announce changes.
    virtual std::vector<unsigned> groups() const = 0;
    // The requests that together dump the table: how many there are, and one of them.
    virtual std::size_t dumps() const { return 1; }
    virtual RtnetlinkRequest dump(std::size_t which) const = 0;
    // What comes from now on answers this one.
    virtual void dumpBegins(std::size_t) {}

    // A new set of rows begins beside the one in use, which stays as it is.
    virtual void beginRebuild() = 0;
    // A message of a dump, for the new set.
    virtual void rebuildWith(const nlmsghdr &message) = 0;
    // The new set takes the place of the old one.
    virtual void commitRebuild() = 0;
    // The new set is dropped.
    virtual void abandonRebuild() = 0;

    // An announcement, for the rows in use.
    virtual void apply(const nlmsghdr &message) = 0;
};

class DumpQueue;

class Mirror
{
  public:
    // Bytes of announcements that may wait; 0 leaves the system's default. A row's announcement occupies about 1 KiB.
    static constexpr int defaultReceiveBuffer = 64 * 1024 * 1024;

    Mirror(KernelTable &table, DumpQueue &dumps);
    ~Mirror();
    Mirror(const Mirror &) = delete;
    Mirror &operator=(const Mirror &) = delete;

    // Joins the groups and fills the table; the answer, when it fails, is one line for the user.
    std::string start(EventLoop &loop, int receiveBuffer = defaultReceiveBuffer);

    // Reads the table again, between packets, while the rows of now are served on. A reading that is under way may have
    // missed what the caller knows of, so another one follows it.
    void refresh();
    // Applies what has been announced by now.
    void readAnnouncements() { readAnnouncements(announcementsPerRead); }

    KernelTable &table() { return table_; }
    // For tests and the log: how often the table was read, and how often announcements were lost.
    unsigned timesRead() const { return timesRead_; }
    unsigned timesLost() const { return timesLost_; }
    bool refreshing() const { return state_ != State::live; }

  private:
    friend class DumpQueue;
    enum class State { live, waiting, dumping };

    // More than fits into the receive buffer: bounds a packet's wait when the kernel announces faster than we read.
    static constexpr unsigned announcementsPerRead = 100'000;
    // Between packets: well below a millisecond.
    static constexpr unsigned announcementsPerTurn = 200;
    void readAnnouncements(unsigned most);

    // The queue's view of one dump.
    void dumpBegins();
    void dumpEnds(bool committed);

    KernelTable &table_;
    DumpQueue &dumps_;
    EventLoop *loop_ = nullptr;
    Rtnetlink announcements_;
    State state_ = State::live;
    bool again_ = false;
    bool saidCannotRead_ = false; // in the log, since the last good reading
    unsigned timesRead_ = 0;
    unsigned timesLost_ = 0;
};

// Reads tables one after the other over one socket, in pieces.
class DumpQueue
{
  public:
    static constexpr unsigned attempts = 5;             // in a row, of a dump that is interrupted
    static constexpr unsigned retryMilliseconds = 1000; // until the next row of attempts
    static constexpr unsigned readsPerPiece = 8;        // of up to 32 KiB: below a millisecond

    std::string start(EventLoop &loop);
    void stop();

    // The reading begins with the next turn of the event loop, never within the call; later when the system has no
    // descriptor or no memory for it.
    void add(Mirror &mirror);
    void remove(Mirror &mirror);
    // Works until the queue is empty, waiting for the kernel: at the start only. The answer, when a dump failed or
    // could not begin, is one line for the user.
    std::string runToEnd();
    bool idle() const { return waiting_.empty(); }
    // One read of the dump that is under way; false when there was nothing to read.
    bool readPiece();
    // For tests: dumps that the kernel marked as interrupted.
    unsigned timesInterrupted() const { return timesInterrupted_; }

  private:
    bool openSocket();
    void closeSocket();
    void begin();
    bool sendRequest();
    void finish(Rtnetlink::Read result);
    void fail();
    void tryAgainLater(Mirror &mirror, const std::string &reason);
    void armRetry();
    void end(bool committed);

    EventLoop *loop_ = nullptr;
    Rtnetlink socket_;
    Timer soon_;
    Timer retry_;
    std::deque<Mirror *> waiting_; // the first is the one that is read, when reading_ says so
    std::vector<Mirror *> later_;  // wait for the retry timer
    bool reading_ = false;
    std::size_t which_ = 0;
    unsigned attempt_ = 0;
    bool interrupted_ = false;
    bool saidCannotBegin_ = false; // in the log, since the last beginning
    unsigned timesInterrupted_ = 0;
    std::string lastError_;
};

} // namespace ipmib::platform
