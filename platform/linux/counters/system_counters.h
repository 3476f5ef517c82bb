// SPDX-License-Identifier: BSD-3-Clause
// The counters of this network namespace as the files of /proc/net tell them, each read at most once for a packet of
// requests.
#pragma once

#include "core/proc_file.h"
#include "counters/ipv4_counter_text.h"
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
