// SPDX-License-Identifier: BSD-3-Clause
// The kernel's IPv6 counters and how they become those of the contract; docs/linux-platform.md says where meanings
// differ.
#include "counters/ip6_counters.h"

#include <algorithm>

namespace ipmib::platform
{

namespace
{
constexpr std::array<std::string_view, ip6CounterCount> kernelNames = {
    "InReceives",      "InHdrErrors",  "InTooBigErrors", "InNoRoutes",       "InAddrErrors", "InUnknownProtos",
    "InTruncatedPkts", "InDiscards",   "InDelivers",     "OutForwDatagrams", "OutRequests",  "OutDiscards",
    "OutNoRoutes",     "ReasmReqds",   "ReasmOKs",       "ReasmFails",       "FragOKs",      "FragFails",
    "FragCreates",     "InMcastPkts",  "OutMcastPkts",   "InOctets",         "OutOctets",    "InMcastOctets",
    "OutMcastOctets",  "OutTransmits",
};

// What found no route, or too small a link, was tried as well; the kernel counts
// no other input as forwarded.
std::uint64_t triedToForward(const Ip6Counters &counters)
{
    return counters[Ip6Counter::outForwDatagrams] + counters[Ip6Counter::inNoRoutes] +
           counters[Ip6Counter::inTooBigErrors];
}

std::uint64_t transmitted(const Ip6Counters &counters)
{
    using enum Ip6Counter;
    return counters.counted(outTransmits) ? counters[outTransmits] : counters[outRequests] + counters[outForwDatagrams];
}
} // namespace

Ip6Counter ip6CounterByName(std::string_view name)
{
    return static_cast<Ip6Counter>(std::find(kernelNames.begin(), kernelNames.end(), name) - kernelNames.begin());
}

void fillIp6MibStat(const Ip6Counters &counters, Ip6MibStat &stat)
{
    using enum Ip6Counter;
    const auto low = [&](Ip6Counter which) { return static_cast<std::uint32_t>(counters[which]); };

    stat = Ip6MibStat{};
    stat.in_receives = counters[inReceives];
    stat.in_forwarded = triedToForward(counters);
    stat.out_forwarded = counters[outForwDatagrams];
    stat.out_transmits = transmitted(counters);
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

void fillIpCounters(const Ip6Counters &counters, IpmibIpCounters &columns)
{
    using enum Ip6Counter;
    constexpr struct {
        unsigned column;
        Ip6Counter counter;
    } same[] = {
        {IPMIB_IP_IN_RECEIVES, inReceives},
        {IPMIB_IP_IN_OCTETS, inOctets},
        {IPMIB_IP_IN_HDR_ERRORS, inHdrErrors},
        {IPMIB_IP_IN_NO_ROUTES, inNoRoutes},
        {IPMIB_IP_IN_ADDR_ERRORS, inAddrErrors},
        {IPMIB_IP_IN_UNKNOWN_PROTOS, inUnknownProtos},
        {IPMIB_IP_IN_TRUNCATED_PKTS, inTruncatedPkts},
        {IPMIB_IP_REASM_REQDS, reasmReqds},
        {IPMIB_IP_REASM_OKS, reasmOKs},
        {IPMIB_IP_REASM_FAILS, reasmFails},
        {IPMIB_IP_IN_DISCARDS, inDiscards},
        {IPMIB_IP_IN_DELIVERS, inDelivers},
        {IPMIB_IP_OUT_REQUESTS, outRequests},
        {IPMIB_IP_OUT_NO_ROUTES, outNoRoutes},
        {IPMIB_IP_OUT_FORW_DATAGRAMS, outForwDatagrams},
        {IPMIB_IP_OUT_DISCARDS, outDiscards},
        {IPMIB_IP_OUT_FRAG_OKS, fragOKs},
        {IPMIB_IP_OUT_FRAG_FAILS, fragFails},
        {IPMIB_IP_OUT_FRAG_CREATES, fragCreates},
        {IPMIB_IP_OUT_OCTETS, outOctets},
        {IPMIB_IP_IN_MCAST_PKTS, inMcastPkts},
        {IPMIB_IP_IN_MCAST_OCTETS, inMcastOctets},
        {IPMIB_IP_OUT_MCAST_PKTS, outMcastPkts},
        {IPMIB_IP_OUT_MCAST_OCTETS, outMcastOctets},
    };
    columns = IpmibIpCounters{};
    const auto set = [&](unsigned column, std::uint64_t value) {
        columns.value[column] = value;
        columns.counted |= std::uint64_t{1} << column;
    };
    for (const auto &[column, counter] : same) {
        if (counters.counted(counter)) {
            set(column, counters[counter]);
        }
    }
    if (counters.counted(outForwDatagrams)) {
        set(IPMIB_IP_IN_FORW_DATAGRAMS, triedToForward(counters));
    }
    if (counters.counted(outRequests)) {
        set(IPMIB_IP_OUT_TRANSMITS, transmitted(counters));
    }
    if (counters.counted(fragOKs)) {
        set(IPMIB_IP_OUT_FRAG_REQDS, counters[fragOKs] + counters[fragFails]);
    }
}

} // namespace ipmib::platform
