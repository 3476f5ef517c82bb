// SPDX-License-Identifier: BSD-3-Clause
// The sockets of one protocol, read from the kernel when somebody asks for them. The kernel announces no changes, and a
// server has hundreds of thousands: so one reading, in pieces between packets, serves all questions of a while, the
// next one goes into the rows in use, and rows that nobody asks for any more are given back.
#pragma once

#include "connection_table.h"
#include "core/platform_loop.h"
#include "core/rtnetlink.h"

#include <netinet/in.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace ipmib::platform
{

struct SocketTimes {
    // Since the end of a reading: rows serve for `oldest` at most, and when they are asked for later than `fresh`, the
    // next reading begins beside that.
    std::chrono::milliseconds fresh{1'000};
    std::chrono::milliseconds oldest{2'000};
    // Without a question, until the rows are given back.
    std::chrono::milliseconds idle{10'000};
};

class SocketReading
{
  public:
    // IPPROTO_TCP or IPPROTO_UDP. The rows of IPMIB_TCP_CONNECTIONS... go into the table with that number.
    SocketReading(PlatformLoop &loop, const SocketTimes &times, ConnectionTable *tables, std::uint8_t protocol)
        : loop_(loop), times_(times), tables_(tables), protocol_(protocol)
    {
    }
    ~SocketReading();
    SocketReading(const SocketReading &) = delete;
    SocketReading &operator=(const SocketReading &) = delete;

    // Whether the rows are new enough to answer from; begins what makes them so. Never blocks, and works no longer than
    // a turn of the event loop may.
    bool areRead();

    // For tests and measurements.
    unsigned timesRead() const { return timesRead_; }
    bool isIdle() const { return work_ == Work::none && !hasRows_; }

  private:
    using Clock = std::chrono::steady_clock;
    enum class Work { none, reading, sweeping, clearing };

    // The tables of the protocol.
    std::uint32_t firstTable() const { return protocol_ == IPPROTO_TCP ? IPMIB_TCP_CONNECTIONS : IPMIB_UDP_ENDPOINTS; }
    std::uint32_t lastTable() const { return protocol_ == IPPROTO_TCP ? IPMIB_TCP_LISTENERS : IPMIB_UDP_ENDPOINTS; }
    bool begin();
    void readPieces();
    bool readPiece();
    bool hasNoSuchSockets() const;
    void nextFamily();
    void closeSocket();
    void fail(const std::string &reason);
    void finish();
    void onTimer();
    void tidySome();

    PlatformLoop &loop_;
    const SocketTimes &times_;
    ConnectionTable *tables_;
    std::uint8_t protocol_;
    Rtnetlink socket_; // open while it is read from
    Timer timer_;
    Work work_ = Work::none;
    bool hasRows_ = false; // of a whole reading
    std::uint8_t family_ = 0;
    Generation generation_ = 0;
    std::uint32_t table_ = 0; // that is swept, or cleared
    Clock::time_point readAt_{};
    Clock::time_point askedAt_{};
    bool saidFailed_ = false; // in the log, since the last good reading
    unsigned timesRead_ = 0;
};

} // namespace ipmib::platform
