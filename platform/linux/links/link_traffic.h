// SPDX-License-Identifier: BSD-3-Clause
// What a link has carried, whatever the protocol, as of this moment. Read once for a packet of requests.
#pragma once

#include "core/packet_readings.h"
#include "core/rtnetlink.h"

#include <ipmib/platform_interfaces.h>

#include <linux/if_link.h>

namespace ipmib::platform
{

class LinkTrafficReader
{
  public:
    // The socket is the caller's, and open before the first reading.
    explicit LinkTrafficReader(Rtnetlink &socket) : socket_(socket) {}

    // Forgets what the packet before has read.
    void newPacket() { readings_.newPacket(); }
    // A link that has gone for good.
    void forget(std::uint32_t ifIndex) { readings_.forget(ifIndex); }

    // Null when the kernel has no such link. One that vanishes while a packet still counts on it keeps what was last
    // read.
    const IpmibInterfaceTraffic *read(std::uint32_t ifIndex);

    // Requests to the kernel since the start.
    std::uint64_t kernelReads() const { return kernelReads_; }

  private:
    bool ask(std::uint32_t ifIndex, IpmibInterfaceTraffic &traffic);

    Rtnetlink &socket_;
    PacketReadings<std::uint32_t, IpmibInterfaceTraffic> readings_;
    std::uint64_t kernelReads_ = 0;
};

// The kernel's counters as the interface tables have them.
IpmibInterfaceTraffic trafficOf(const rtnl_link_stats64 &stats);

} // namespace ipmib::platform
