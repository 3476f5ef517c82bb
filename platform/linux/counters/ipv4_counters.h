// SPDX-License-Identifier: BSD-3-Clause
// The counters of IPv4, ICMP, TCP and UDP of this network namespace: /proc/net/snmp and /proc/net/netstat, each read at
// most once for a packet of requests.
#pragma once

#include "core/proc_file.h"
#include "counters/ipv4_counter_text.h"

namespace ipmib::platform
{

class Ipv4Counters
{
  public:
    void newPacket() { freshSnmp_ = freshNetstat_ = false; }

    // False when the kernel does not say. Of `ip` those counters whose bits are set in `counted`, and others as they
    // come: /proc/net/netstat takes the kernel longer than all else, and has few that are asked for alone.
    bool ip(IpmibIpCounters &counters);
    bool icmp(IpmibIcmpCounters &counters);
    bool tcp(IpmibTcpCounters &counters);
    // Without what the kernel counts for IPv6.
    bool udp(IpmibUdpCounters &counters);

    std::uint64_t kernelReads() const { return kernelReads_; }

  private:
    bool readSnmp() { return read(snmp_, snmpText_, snmpValues_, freshSnmp_); }
    bool readNetstat() { return read(netstat_, netstatText_, netstatValues_, freshNetstat_); }
    bool read(ProcFile &file, Ipv4CounterText &text, Ipv4CounterText::Values &values, bool &fresh);

    ProcFile snmp_{"/proc/thread-self/net/snmp"};
    ProcFile netstat_{"/proc/thread-self/net/netstat"};
    Ipv4CounterText snmpText_;
    Ipv4CounterText netstatText_;
    Ipv4CounterText::Values snmpValues_{};
    Ipv4CounterText::Values netstatValues_{};
    bool freshSnmp_ = false;
    bool freshNetstat_ = false;
    std::uint64_t kernelReads_ = 0;
};

} // namespace ipmib::platform
