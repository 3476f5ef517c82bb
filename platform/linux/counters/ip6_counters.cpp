// SPDX-License-Identifier: BSD-3-Clause
// How the kernel's IPv6 counters become the counters of the contract. docs/linux-platform.md says where meanings
// differ.
#include "counters/ip6_counters.h"

namespace ipmib::platform
{

void fillIp6MibStat(std::span<const std::uint64_t, ip6CounterCount> counters, std::size_t known, Ip6MibStat &stat)
{
    const auto low = [&](Ip6Counter which) { return static_cast<std::uint32_t>(counters[which]); };

    stat = Ip6MibStat{};
    stat.in_receives = counters[ip6InReceives];
    stat.in_forwarded = counters[ip6OutForwDatagrams];
    stat.out_forwarded = counters[ip6OutForwDatagrams];
    stat.out_transmits =
        known > ip6OutTransmits ? counters[ip6OutTransmits] : counters[ip6OutRequests] + counters[ip6OutForwDatagrams];
    stat.out_requests = counters[ip6OutRequests];
    stat.in_octets = counters[ip6InOctets];
    stat.out_octets = counters[ip6OutOctets];

    stat.header_errors_1 = low(ip6InHdrErrors);
    stat.in_truncated = low(ip6InTruncatedPkts);
    stat.reasm_required = low(ip6ReasmReqds);
    stat.reasm_oks = low(ip6ReasmOKs);
    stat.reasm_fails_1 = low(ip6ReasmFails);
    stat.unknown_protos = low(ip6InUnknownProtos);
    stat.in_delivers = low(ip6InDelivers);
    stat.in_no_routes = low(ip6InNoRoutes);
    stat.address_errors = low(ip6InAddrErrors);
    stat.frag_fails = low(ip6FragFails);
    stat.frag_oks = low(ip6FragOKs);
    stat.frag_creates = low(ip6FragCreates);
    stat.in_mcast_pkts = low(ip6InMcastPkts);
    stat.out_mcast_pkts = low(ip6OutMcastPkts);
    stat.in_discards = low(ip6InDiscards);
    stat.out_discards = low(ip6OutDiscards);
    stat.out_no_routes = low(ip6OutNoRoutes);
}

} // namespace ipmib::platform
