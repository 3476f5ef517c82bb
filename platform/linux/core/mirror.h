// SPDX-License-Identifier: BSD-3-Clause
// Keeps a table of the kernel in memory: one dump, then the kernel's announcements; the dump again when some were lost.
//
// How it stays right: the groups are joined before the dump is asked for, and what is announced while it runs is
// applied behind it. Each mirror has a socket of its own, so that a loss names its table and the others stay live while
// it is read again. A dump goes into the rows in use and gives them its generation; when it has ended, and the kernel
// has not marked it as interrupted, rows without that generation are swept out. One that ends otherwise needs no
// undoing: all that it brought was so, and what it has not brought stays.
//
// A loss means that the kernel announces faster than is read here, and reading the table meanwhile would only end in
// the next loss: so what still comes is taken in, and the table is read once when no more is lost for a while, which is
// longer for a table that takes longer to read.
#pragma once

#include "core/platform_loop.h"
#include "core/rtnetlink.h"
#include "ordered_table.h"

#include <chrono>
#include <climits>
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
    // The requests that together dump the table: how many there are, and one of them, which is sent now: what comes
    // from now on answers it.
    virtual std::size_t dumps() const { return 1; }
    virtual RtnetlinkRequest dump(std::size_t which) = 0;

    // A message of a dump: its rows come in, or are changed, and have this generation.
    virtual void applyDump(const nlmsghdr &message, Generation generation) = 0;
    // All dumps of a reading have ended well: rows that do not have this generation are gone. Called until it is true,
    // packets between: a large table does this in pieces.
    virtual bool sweep(Generation generation) = 0;
    // Whether the kernel, when it announces this while it dumps the table, may have passed other rows over without
    // marking the dump as interrupted.
    virtual bool disturbs(const nlmsghdr &) const { return false; }
    // An announcement.
    virtual void applyChange(const nlmsghdr &message) = 0;
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

    // Joins the groups and fills the table; the answer, when it fails, is one line for the user. What is left of it
    // after so many pieces of up to 32 KiB is read between packets.
    std::string start(PlatformLoop &loop, int receiveBuffer = defaultReceiveBuffer, unsigned pieces = UINT_MAX);

    // Reads the table again, between packets, while the rows of now are served on. A reading that is under way may have
    // missed what the caller knows of, so another one follows it.
    void refresh();
    // The same from the first row on: a reading that is under way is given up.
    void readAnew();
    // The same after a moment, for what needs no haste and comes in bursts.
    void refreshSoon();
    // Applies what has been announced by now.
    void readAnnouncements() { readAnnouncements(announcementsPerRead); }

    KernelTable &table() { return table_; }
    // For tests and the log: how often the table was read, and how often announcements were lost.
    unsigned timesRead() const { return timesRead_; }
    unsigned timesLost() const { return timesLost_; }
    bool refreshing() const { return state_ != State::live || calm_.armed() || !held_.empty(); }
    // How often a reading ended, well or not.
    unsigned timesEnded() const { return timesEnded_; }

  private:
    friend class DumpQueue;
    enum class State { live, waiting, dumping };

    using Clock = std::chrono::steady_clock;
    // More than fits into the receive buffer: bounds a packet's wait when the kernel announces faster than we read.
    static constexpr unsigned announcementsPerRead = 100'000;
    // Between packets: well below a millisecond.
    static constexpr unsigned announcementsPerTurn = 200;
    // Octets of announcements that are kept while the table is read: some 5,000. Others wait in the socket.
    static constexpr std::size_t mostHeld = 512 * 1024;
    // Without a loss, until the table is read again: a part of what that takes.
    static constexpr std::chrono::milliseconds longestCalm{200};
    static constexpr int calmShare = 4;
    static constexpr std::chrono::milliseconds shortestRest{100};
    static constexpr std::chrono::milliseconds longestRest{2'000};
    // With losses that do not end.
    static constexpr std::chrono::milliseconds longestStorm{10'000};

    void readAnnouncements(unsigned most);
    bool applyHeld(unsigned most);
    void lost();
    void readWhenCalm();

    // The queue's view of one dump.
    void dumpBegins();
    void dumpEnds(bool well);

    KernelTable &table_;
    DumpQueue &dumps_;
    PlatformLoop *loop_ = nullptr;
    Rtnetlink announcements_;
    State state_ = State::live;
    bool again_ = false;
    bool disturbed_ = false;    // the reading that is under way
    bool goesOn_ = false;       // the next dump belongs to the same reading
    Generation generation_ = 0; // of the last reading
    std::vector<std::byte> held_;
    std::size_t heldFrom_ = 0; // those before have been applied
    Timer catchUp_;            // with what is held; opened when it is first needed
    bool catchesUp_ = false;
    Timer calm_;
    bool storm_ = false;     // since a loss, until a reading ends without another one
    bool lostSince_ = false; // the reading began
    bool saidStorm_ = false; // in the log
    Clock::time_point stormBegan_{};
    Clock::time_point readingBegan_{};
    std::chrono::milliseconds readingTook_{0};
    bool saidCannotRead_ = false; // in the log, since the last good reading
    unsigned timesRead_ = 0;
    unsigned timesLost_ = 0;
    unsigned timesEnded_ = 0;
};

// Reads tables one after the other over one socket, in pieces.
class DumpQueue
{
  public:
    static constexpr unsigned attempts = 5;             // in a row, of a dump that is interrupted
    static constexpr unsigned disturbedDumps = 3;       // that together make up a reading
    static constexpr unsigned retryMilliseconds = 1000; // until the next row of attempts
    // Between packets, before the last read, which takes a third of it.
    static constexpr std::chrono::microseconds longestPiece{300};

    std::string start(PlatformLoop &loop);
    void stop();

    // The reading begins with the next turn of the event loop, never within the call; later when the system has no
    // descriptor or no memory for it.
    void add(Mirror &mirror);
    void remove(Mirror &mirror);
    // Works until the queue is empty or so many pieces have been read, waiting for the kernel: at the start only. The
    // answer, when a dump failed or could not begin, is one line for the user.
    std::string runToEnd(unsigned pieces = UINT_MAX);
    bool idle() const { return waiting_.empty(); }
    // One read of the dump that is under way, or one piece of the sweep behind it; false when there was nothing to
    // read.
    bool readPiece();
    // For tests: dumps that the kernel marked as interrupted.
    unsigned timesInterrupted() const { return timesInterrupted_; }

  private:
    bool openSocket();
    void closeSocket();
    void begin();
    void readPieces();
    bool sendRequest();
    void sweep();
    void finish(Rtnetlink::Read result);
    void fail();
    void tryAgainLater(Mirror &mirror, const std::string &reason);
    void armRetry();
    void end(bool well);

    PlatformLoop *loop_ = nullptr;
    Rtnetlink socket_;
    Timer soon_;
    Timer retry_;
    std::deque<Mirror *> waiting_; // the first is the one that is read, when reading_ says so
    std::vector<Mirror *> later_;  // wait for the retry timer
    bool reading_ = false;
    bool sweeping_ = false; // the reading has all its rows
    std::size_t which_ = 0;
    unsigned attempt_ = 0;
    bool interrupted_ = false;
    bool saidCannotBegin_ = false; // in the log, since the last beginning
    unsigned timesInterrupted_ = 0;
    std::string lastError_;
};

} // namespace ipmib::platform
