// SPDX-License-Identifier: BSD-3-Clause
// What a link has carried, whatever the protocol, as of this moment. Read once for a packet of requests.
#pragma once

#include "core/rtnetlink.h"

#include <ipmib/platform_interfaces.h>

#include <linux/if_link.h>

#include <unordered_map>

namespace ipmib::platform
{

class LinkTrafficReader
{
  public:
    // The socket is the caller's, and open before the first reading.
    explicit LinkTrafficReader(Rtnetlink &socket) : socket_(socket) {}

    // Forgets what the packet before has read.
    void newPacket() { ++packet_; }
    // A link that has gone for good.
    void forget(std::uint32_t ifIndex) { read_.erase(ifIndex); }

    // Null when the kernel has no such link. One that vanishes while a packet still counts on it keeps what was last
    // read.
    const IpmibInterfaceTraffic *read(std::uint32_t ifIndex);

    // Requests to the kernel since the start.
    std::uint64_t kernelReads() const { return kernelReads_; }

  private:
    bool ask(std::uint32_t ifIndex, rtnl_link_stats64 &stats);

    struct Entry {
        std::uint64_t packet = 0;
        IpmibInterfaceTraffic traffic{};
    };

    Rtnetlink &socket_;
    std::unordered_map<std::uint32_t, Entry> read_;
    std::uint64_t packet_ = 1;
    std::uint64_t kernelReads_ = 0;
};

// The kernel's counters as the interface tables have them.
IpmibInterfaceTraffic trafficOf(const rtnl_link_stats64 &stats);

} // namespace ipmib::platform
