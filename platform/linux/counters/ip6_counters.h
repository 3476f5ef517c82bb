// SPDX-License-Identifier: BSD-3-Clause
// How the kernel's IPv6 counters become the counters of the contract, of the system and of one link alike.
#pragma once

#include <ipmib/records.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace ipmib::platform
{

// Positions in the kernel's array of IPv6 counters. The kernel only ever appends; a header older than the running
// kernel lacks the last ones, so they are written down here.
enum Ip6Counter : std::size_t {
    ip6InReceives = 1,
    ip6InOctets = 2,
    ip6InDelivers = 3,
    ip6OutForwDatagrams = 4,
    ip6OutRequests = 5,
    ip6OutOctets = 6,
    ip6InHdrErrors = 7,
    ip6InTooBigErrors = 8,
    ip6InNoRoutes = 9,
    ip6InAddrErrors = 10,
    ip6InUnknownProtos = 11,
    ip6InTruncatedPkts = 12,
    ip6InDiscards = 13,
    ip6OutDiscards = 14,
    ip6OutNoRoutes = 15,
    ip6ReasmTimeout = 16,
    ip6ReasmReqds = 17,
    ip6ReasmOKs = 18,
    ip6ReasmFails = 19,
    ip6FragOKs = 20,
    ip6FragFails = 21,
    ip6FragCreates = 22,
    ip6InMcastPkts = 23,
    ip6OutMcastPkts = 24,
    ip6OutTransmits = 37, // since Linux 6.7
    ip6CounterCount = 40, // with room for some more
};

// Fills the record from an array by Ip6Counter; `known` of its elements are counted by this kernel.
void fillIp6MibStat(std::span<const std::uint64_t, ip6CounterCount> counters, std::size_t known, Ip6MibStat &stat);

} // namespace ipmib::platform
