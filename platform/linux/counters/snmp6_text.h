// SPDX-License-Identifier: BSD-3-Clause
// The text in which the kernel tells its IPv6 counters: /proc/net/snmp6, and /proc/net/dev_snmp6/INTERFACE.
#pragma once

#include "counters/ip6_counters.h"

namespace ipmib::platform
{

struct Icmp6Counters {
    std::uint64_t inMsgs = 0;
    std::uint64_t inErrors = 0;
    std::uint64_t outMsgs = 0;
    std::array<std::uint64_t, 256> inType{};
    std::array<std::uint64_t, 256> outType{};
};

// A name and a number on each line. Lines that mean nothing to us are passed over.
void parseSnmp6(std::string_view text, Ip6Counters &ip6, Icmp6Counters &icmp6);

} // namespace ipmib::platform
