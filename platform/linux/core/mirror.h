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
//
// What has been announced is applied for each packet: as much of it as takes a fraction of a millisecond when the
// packet begins, what is left when it asks for rows. Whoever can ask later lets it be applied between packets instead.
#pragma once

#include "core/kernel_table.h"
#include "core/platform_loop.h"

#include <chrono>
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

namespace ipmib::platform
{

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
    // A packet asks for rows: all that had been announced when it began is applied.
    void readForPacket();
    // Whether that takes longer than a turn of the event loop may; what is left then is applied between packets. While
    // the table is read anew nothing is applied, and rows are what was last known.
    bool isBehind() const { return isBehind_ && state_ != State::dumping; }
    // A turn's worth of what has been announced is applied. False when more is left.
    bool readTurn() { return readAnnouncements(announcementsPerTurn); }

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
    static constexpr unsigned announcementsPerTurn = 100;
    // When a packet begins: likewise, for two tables that change together.
    static constexpr unsigned announcementsAtBegin = 200;
    // Octets of announcements that are kept while the table is read: some 5,000. Others wait in the socket.
    static constexpr std::size_t mostHeld = std::size_t{512} * 1024;
    // Without a loss, until the table is read again: a part of what that takes.
    static constexpr std::chrono::milliseconds longestCalm{200};
    // Changes meanwhile of a table that needs quiet.
    static constexpr std::uint64_t mostWhileCalm = 20;
    static constexpr int calmShare = 4;
    static constexpr std::chrono::milliseconds shortestRest{100};
    static constexpr std::chrono::milliseconds longestRest{2'000};
    // With losses that do not end.
    static constexpr std::chrono::milliseconds longestStorm{10'000};

    // Whether none is left.
    bool readAnnouncements(unsigned most);
    bool takeAnnouncements(unsigned most);
    bool applyHeld(unsigned most);
    void lost();
    void readWhenCalm();

    void hear(bool on);

    // The queue's view of one dump. False when it has to be called once more, packets between.
    bool beginDump();
    void endDump(bool well);

    KernelTable &table_;
    DumpQueue &dumps_;
    PlatformLoop *loop_ = nullptr;
    Rtnetlink announcements_;
    State state_ = State::live;
    bool again_ = false;
    unsigned drains_ = 0;       // before the dump that is to begin
    bool isBehind_ = false;     // the last time left some
    bool deaf_ = false;         // the loop does not call for announcements
    bool disturbed_ = false;    // the reading that is under way
    bool goesOn_ = false;       // the next dump belongs to the same reading
    Generation generation_ = 0; // of the last reading
    std::vector<std::byte> held_;
    std::size_t heldFrom_ = 0; // those before have been applied
    Timer catchUp_;            // with what is held
    Timer calm_;
    std::uint64_t changes_ = 0; // announced so far
    std::uint64_t changesBeforeCalm_ = 0;
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

} // namespace ipmib::platform
