// SPDX-License-Identifier: BSD-3-Clause
// Reads tables one after the other over one socket, in pieces.
#pragma once

#include "core/mirror.h"

#include <deque>

namespace ipmib::platform
{

class DumpQueue
{
  public:
    static constexpr unsigned attempts = 5;             // in a row, of a dump that is interrupted
    static constexpr unsigned disturbedDumps = 3;       // that together make up a reading
    static constexpr unsigned retryMilliseconds = 1000; // until the next row of attempts
    // Between packets, before the last read, which takes a third of it.
    static constexpr std::chrono::microseconds longestPiece{300};
    // Of a table that needs quiet: behind a read that took longer, packets have the processor to themselves for a
    // multiple of that.
    static constexpr std::chrono::microseconds costlyRead{1000};
    static constexpr int restRatio = 50;
    static constexpr std::chrono::milliseconds longestRest{500};

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
    // One read of the dump that is under way, or one piece of what follows it; false when there was nothing to read.
    bool readPiece();
    // For tests: dumps that the kernel marked as interrupted.
    unsigned timesInterrupted() const { return timesInterrupted_; }

  private:
    bool openSocket();
    void closeSocket();
    void begin();
    void readPieces();
    void rest(std::chrono::microseconds cost);
    bool settle();
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
    Timer rest_;
    std::deque<Mirror *> waiting_; // the first is the one that is read, when reading_ says so
    std::vector<Mirror *> later_;  // wait for the retry timer
    bool reading_ = false;
    bool postponed_ = false; // the beginning, until older announcements have been read
    bool settling_ = false;  // the reading has all its rows, and looks for what was announced meanwhile
    bool sweeping_ = false;
    std::size_t which_ = 0;
    unsigned attempt_ = 0;
    bool interrupted_ = false;
    bool saidCannotBegin_ = false; // in the log, since the last beginning
    unsigned timesInterrupted_ = 0;
    std::string lastError_;
};

} // namespace ipmib::platform
