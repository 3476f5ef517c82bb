// SPDX-License-Identifier: BSD-3-Clause
// What the tables of TCP and UDP say of sockets: each function is the one of IpmibConnectionHooks that its name says.
#pragma once

#include "connections/socket_reading.h"

namespace ipmib::platform
{

class Connections
{
  public:
    explicit Connections(PlatformLoop &loop)
        : readings_{SocketReading(loop, times_, tables_, IPPROTO_TCP),
                    SocketReading(loop, times_, tables_, IPPROTO_UDP)}
    {
    }

    std::uint32_t areRead(std::uint32_t table)
    {
        return table >= IPMIB_CONNECTION_TABLES || reading(table).areRead() ? 1 : 0;
    }
    bool find(std::uint32_t table, const IpmibConnectionKey &key, IpmibConnection &row) const
    {
        return table < IPMIB_CONNECTION_TABLES && tables_[table].find(key, row);
    }
    bool next(std::uint32_t table, const IpmibConnectionKey &key, IpmibConnection &row) const
    {
        return table < IPMIB_CONNECTION_TABLES && tables_[table].next(key, row);
    }

    // For tests and measurements.
    void setTimes(const SocketTimes &times) { times_ = times; }
    const ConnectionTable &table(std::uint32_t table) const { return tables_[table]; }
    SocketReading &reading(std::uint32_t table) { return readings_[table == IPMIB_UDP_ENDPOINTS ? 1 : 0]; }

  private:
    SocketTimes times_;
    ConnectionTable tables_[IPMIB_CONNECTION_TABLES];
    SocketReading readings_[2];
};

} // namespace ipmib::platform
