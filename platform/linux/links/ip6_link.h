// SPDX-License-Identifier: BSD-3-Clause
// What the kernel says of IPv6 on one link at this moment: counters, timers, settings. Read once for a packet of
// requests, however many of its values are asked for.
#pragma once

#include "core/rtnetlink.h"
#include "counters/ip6_counters.h"

#include <linux/if_link.h>
#include <linux/ipv6.h>

#include <array>
#include <unordered_map>

namespace ipmib::platform
{

struct Ip6Link {

    bool present =
        false; // false: the kernel runs no IPv6 on this link (its MTU is below 1280, or IPv6 is not built in)
    std::array<std::uint64_t, ip6CounterCount> counters{}; // by Ip6Counter; what the kernel does not count stays 0
    std::size_t counterCount = 0;                          // those that it counts are below
    std::uint32_t reachableMs = 0;
    std::uint32_t retransmitMs = 0;
    std::uint32_t mtu = 0;
    bool disabled = false; // by sysctl disable_ipv6
    std::array<std::uint8_t, 16> token{};
};

// Of an RTM_NEWLINK message with its AF_INET6 attributes.
Ip6Link parseIp6Link(const nlmsghdr &message);

class Ip6LinkReader
{
  public:
    bool open();
    void close();
    const std::string &error() const { return socket_.error(); }

    // Forgets what the packet before has read.
    void newPacket() { ++packet_; }
    // A link that has gone for good.
    void forget(std::uint32_t ifIndex) { read_.erase(ifIndex); }

    // Null when the kernel has no such link. One that vanishes while a packet still counts on it keeps what was last
    // read.
    const Ip6Link *read(std::uint32_t ifIndex);

    // Requests to the kernel since the start; a benchmark compares it with rows.
    std::uint64_t kernelReads() const { return kernelReads_; }

  private:
    struct Entry {
        std::uint64_t packet = 0;
        Ip6Link link;
    };

    Rtnetlink socket_;
    std::unordered_map<std::uint32_t, Entry> read_;
    std::uint64_t packet_ = 1;
    std::uint64_t kernelReads_ = 0;
};

} // namespace ipmib::platform
