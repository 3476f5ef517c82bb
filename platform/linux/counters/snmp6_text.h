// SPDX-License-Identifier: BSD-3-Clause
// The text in which the kernel tells its IPv6 counters: /proc/net/snmp6, and /proc/net/dev_snmp6/INTERFACE.
#pragma once

#include "counters/ip6_counters.h"

#include <bitset>

namespace ipmib::platform
{

struct Icmp6Counters {
    std::uint64_t inMsgs = 0;
    std::uint64_t inErrors = 0;
    std::uint64_t outMsgs = 0;
    std::uint64_t outErrors = 0;
    std::array<std::uint64_t, 256> inType{};
    std::array<std::uint64_t, 256> outType{};
    std::bitset<256> listed; // types that the kernel lists: it has seen one, in or out

    bool operator==(const Icmp6Counters &) const = default;
};

struct Udp6Counters {
    std::uint64_t inDatagrams = 0;
    std::uint64_t noPorts = 0;
    std::uint64_t inErrors = 0;
    std::uint64_t outDatagrams = 0;

    bool operator==(const Udp6Counters &) const = default;
};

struct Snmp6Counters {
    Ip6Counters ip6;
    Icmp6Counters icmp6;
    Udp6Counters udp6;

    bool operator==(const Snmp6Counters &) const = default;
};

// A name and a number on each line. Lines that mean nothing to us are passed over.
void parseSnmp6(std::string_view text, Snmp6Counters &counters);

} // namespace ipmib::platform
