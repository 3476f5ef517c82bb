// SPDX-License-Identifier: BSD-3-Clause
// The counters of this network namespace as the files of /proc/net tell them, each read at most once for a packet of
// requests.
#pragma once

#include "core/proc_file.h"
#include "counters/ipv4_counter_text.h"
#include "counters/snmp6_text.h"

namespace ipmib::platform
{

// One of the files; `Text` knows its form.
template <class Text, class Values>
class CounterFile
{
  public:
    explicit CounterFile(const char *path) : file_(path) {}

    void newPacket() { fresh_ = false; }
    // False when it cannot be read: the values are what they last were.
    bool read()
    {
        if (fresh_) {
            return true;
        }
        static char buffer[64 * 1024]; // several times what a kernel of today writes
        const std::string_view content = file_.read(buffer, sizeof buffer);
        if (content.empty()) {
            return false;
        }
        text_.parse(content, values_);
        ++kernelReads_;
        return fresh_ = true;
    }

    ProcFile &file() { return file_; }
    const Values &values() const { return values_; }
    std::uint64_t kernelReads() const { return kernelReads_; }

  private:
    ProcFile file_;
    Text text_;
    Values values_{};
    bool fresh_ = false;
    std::uint64_t kernelReads_ = 0;
};

// Of IPv6, of ICMPv6 and of UDP over IPv6.
class SystemCounters
{
  public:
    // Whether the kernel runs IPv6 in this namespace.
    bool available() { return !snmp6_.file().isAbsent(); }

    void newPacket() { snmp6_.newPacket(); }
    // Null when there is no IPv6. While they cannot be read for another reason they are what they last were, and null
    // before that; the log says so once.
    const Snmp6Counters *read();
    std::uint64_t kernelReads() const { return snmp6_.kernelReads(); }

  private:
    CounterFile<Snmp6Text, Snmp6Counters> snmp6_{"/proc/thread-self/net/snmp6"};
    bool saidUnreadable_ = false; // in the log, since they were last read
};

// Of IPv4, ICMP, TCP and UDP.
class Ipv4Counters
{
  public:
    void newPacket()
    {
        snmp_.newPacket();
        netstat_.newPacket();
    }

    // False when the kernel does not say. Of `ip` those counters whose bits are set in `counted`, and others as they
    // come: /proc/net/netstat takes the kernel longer than all else, and has few that are asked for alone.
    bool ip(IpmibIpCounters &counters);
    bool icmp(IpmibIcmpCounters &counters);
    bool tcp(IpmibTcpCounters &counters);
    // Without what the kernel counts for IPv6.
    bool udp(IpmibUdpCounters &counters);

    std::uint64_t kernelReads() const { return snmp_.kernelReads() + netstat_.kernelReads(); }

  private:
    using File = CounterFile<Ipv4CounterText, Ipv4CounterText::Values>;

    File snmp_{"/proc/thread-self/net/snmp"};
    File netstat_{"/proc/thread-self/net/netstat"};
};

} // namespace ipmib::platform
