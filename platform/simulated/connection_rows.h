// SPDX-License-Identifier: BSD-3-Clause
// A simulated device's connections as platform_connections.h has them: they are as the scenario says at all times.
#pragma once

#include "device/device.h"

#include <ipmib/platform_connections.h>

namespace ipmib::simulated
{

class ConnectionRows
{
  public:
    explicit ConnectionRows(const Device &device) : device_(device) {}

    std::uint32_t areRead(std::uint32_t) const { return 1; }
    bool find(std::uint32_t table, const IpmibConnectionKey &key, IpmibConnection &row) const
    {
        return table < IPMIB_CONNECTION_TABLES && device_.connections[table].find(key, row);
    }
    bool next(std::uint32_t table, const IpmibConnectionKey &key, IpmibConnection &row) const
    {
        return table < IPMIB_CONNECTION_TABLES && device_.connections[table].next(key, row);
    }

  private:
    const Device &device_;
};

} // namespace ipmib::simulated
