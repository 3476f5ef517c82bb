// SPDX-License-Identifier: BSD-3-Clause
// IPv4 counters of one interface, which the kernel does not keep by itself.
#pragma once

#include <ipmib/records.h>

#include <cstdint>

namespace ipmib::platform
{

class Ipv4Accounting
{
  public:
    virtual ~Ipv4Accounting() = default;
    // The next read asks the kernel again.
    virtual void newPacket() = 0;
    // Fills the record, zeroed by the caller. An interface that has seen nothing keeps its zeros.
    virtual void read(std::uint32_t ifIndex, IpMibIfStat &stat) = 0;
};

} // namespace ipmib::platform
