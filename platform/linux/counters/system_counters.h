// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 and ICMPv6 counters of this network namespace, read once for a packet of requests.
#pragma once

#include "core/proc_file.h"
#include "counters/snmp6_text.h"

namespace ipmib::platform
{

class SystemCounters
{
  public:
    struct Values {
        Ip6Counters ip6;
        Icmp6Counters icmp6;
    };

    // Whether the kernel runs IPv6 in this namespace.
    bool available() { return file_.open(); }

    void newPacket() { fresh_ = false; }
    // Null when there is no IPv6.
    const Values *read();
    std::uint64_t kernelReads() const { return kernelReads_; }

  private:
    ProcFile file_{"/proc/thread-self/net/snmp6"};
    Values values_;
    bool fresh_ = false;
    std::uint64_t kernelReads_ = 0;
};

} // namespace ipmib::platform
