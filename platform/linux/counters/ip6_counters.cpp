// SPDX-License-Identifier: BSD-3-Clause
// The kernel's IPv6 counters and how they become those of the contract; docs/linux-platform.md says where meanings
// differ.
#include "counters/ip6_counters.h"

namespace ipmib::platform
{

namespace
{
constexpr std::array<std::string_view, ip6CounterCount> names = {
    "InReceives",      "InHdrErrors", "InTooBigErrors", "InNoRoutes",       "InAddrErrors", "InUnknownProtos",
    "InTruncatedPkts", "InDiscards",  "InDelivers",     "OutForwDatagrams", "OutRequests",  "OutDiscards",
    "OutNoRoutes",     "ReasmReqds",  "ReasmOKs",       "ReasmFails",       "FragOKs",      "FragFails",
    "FragCreates",     "InMcastPkts", "OutMcastPkts",   "InOctets",         "OutOctets",    "OutTransmits",
};
} // namespace

Ip6Counter ip6CounterByName(std::string_view name, std::size_t &hint)
{
    for (std::size_t tried = 0; tried < names.size(); ++tried) {
        const std::size_t at = (hint + tried) % names.size();
        if (names[at] == name) {
            hint = at + 1;
            return static_cast<Ip6Counter>(at);
        }
    }
    return Ip6Counter::ignored;
}

void fillIp6MibStat(const Ip6Counters &counters, Ip6MibStat &stat)
{
    using enum Ip6Counter;
    const auto low = [&](Ip6Counter which) { return static_cast<std::uint32_t>(counters[which]); };

    stat = Ip6MibStat{};
    stat.in_receives = counters[inReceives];
    // Those that found no route, or too small a link, were tried as well; the kernel counts no other input as
    // forwarded.
    stat.in_forwarded = counters[outForwDatagrams] + counters[inNoRoutes] + counters[inTooBigErrors];
    stat.out_forwarded = counters[outForwDatagrams];
    stat.out_transmits =
        counters.counted(outTransmits) ? counters[outTransmits] : counters[outRequests] + counters[outForwDatagrams];
    stat.out_requests = counters[outRequests];
    stat.in_octets = counters[inOctets];
    stat.out_octets = counters[outOctets];

    stat.header_errors_1 = low(inHdrErrors);
    stat.in_truncated = low(inTruncatedPkts);
    stat.reasm_required = low(reasmReqds);
    stat.reasm_oks = low(reasmOKs);
    stat.reasm_fails_1 = low(reasmFails);
    stat.unknown_protos = low(inUnknownProtos);
    stat.in_delivers = low(inDelivers);
    stat.in_no_routes = low(inNoRoutes);
    stat.address_errors = low(inAddrErrors);
    stat.frag_fails = low(fragFails);
    stat.frag_oks = low(fragOKs);
    stat.frag_creates = low(fragCreates);
    stat.in_mcast_pkts = low(inMcastPkts);
    stat.out_mcast_pkts = low(outMcastPkts);
    stat.in_discards = low(inDiscards);
    stat.out_discards = low(outDiscards);
    stat.out_no_routes = low(outNoRoutes);
}

} // namespace ipmib::platform
