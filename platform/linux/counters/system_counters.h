// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 and ICMPv6 counters of this network namespace, read once for a packet of requests.
#pragma once

#include "core/proc_file.h"
#include "counters/ip6_counters.h"

#include <array>

namespace ipmib::platform
{

struct Snmp6 {
    std::array<std::uint64_t, ip6CounterCount> ip6{};
    std::size_t ip6Known = 0; // counters that the kernel has are below
    std::uint64_t icmp6InMsgs = 0;
    std::uint64_t icmp6InErrors = 0;
    std::uint64_t icmp6OutMsgs = 0;
    std::array<std::uint64_t, 256> icmp6InType{};
    std::array<std::uint64_t, 256> icmp6OutType{};
};

// Of the text of /proc/net/snmp6: a name and a number on each line. Lines that mean nothing to us are passed over.
void parseSnmp6(std::string_view text, Snmp6 &counters);

class SystemCounters
{
  public:
    // Whether the kernel runs IPv6 in this namespace.
    bool available() { return file_.open(); }
    void close();

    void newPacket() { fresh_ = false; }
    // Null when there is no IPv6.
    const Snmp6 *read();
    std::uint64_t kernelReads() const { return kernelReads_; }

  private:
    ProcFile file_{"/proc/thread-self/net/snmp6"};
    Snmp6 counters_;
    bool fresh_ = false;
    std::uint64_t kernelReads_ = 0;
};

} // namespace ipmib::platform
