// SPDX-License-Identifier: BSD-3-Clause
// The counters of IPv6, of ICMPv6 and of UDP over IPv6 of this network namespace, read once for a packet of requests.
#pragma once

#include "core/proc_file.h"
#include "counters/snmp6_text.h"

namespace ipmib::platform
{

class SystemCounters
{
  public:
    // Whether the kernel runs IPv6 in this namespace.
    bool available() { return !file_.isAbsent(); }

    void newPacket() { fresh_ = false; }
    // Null when there is no IPv6. While they cannot be read for another reason they are what they last were, and null
    // before that; the log says so once.
    const Snmp6Counters *read();
    std::uint64_t kernelReads() const { return kernelReads_; }

  private:
    ProcFile file_{"/proc/thread-self/net/snmp6"};
    Snmp6Text text_;
    Snmp6Counters values_;
    bool fresh_ = false;
    bool saidUnreadable_ = false; // in the log, since they were last read
    std::uint64_t kernelReads_ = 0;
};

} // namespace ipmib::platform
