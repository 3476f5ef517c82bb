// SPDX-License-Identifier: BSD-3-Clause
// The scalars of the ip group that modules leave out: settings and counters of IPv4, and when the interface tables
// changed.

#include "tables/ip/hook_scalars.h"

#include <algorithm>

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipGroup[] = {1, 3, 6, 1, 2, 1, 4};

constexpr host::RowColumn<IpmibIpSettings> settings[] = {
    {1, [](const IpmibIpSettings &row) { return integer(row.forwarding); }},       // ipForwarding
    {2, [](const IpmibIpSettings &row) { return integer(row.default_ttl); }},      // ipDefaultTTL
    {13, [](const IpmibIpSettings &row) { return integer(row.reasm_timeout_s); }}, // ipReasmTimeout
};

template <unsigned counter>
constexpr host::RowColumn<IpmibIpCounters> counted(host::SubId number)
{
    return {number,
            [](const IpmibIpCounters &counters) {
                return (counters.counted >> counter & 1) != 0 ? counter32(counters.value[counter]) : Cell();
            },
            1U << counter};
}

constexpr host::RowColumn<IpmibIpCounters> counters[] = {
    counted<IPMIB_IP_IN_RECEIVES>(3),       // ipInReceives
    counted<IPMIB_IP_IN_HDR_ERRORS>(4),     // ipInHdrErrors
    counted<IPMIB_IP_IN_ADDR_ERRORS>(5),    // ipInAddrErrors
    counted<IPMIB_IP_IN_FORW_DATAGRAMS>(6), // ipForwDatagrams
    counted<IPMIB_IP_IN_UNKNOWN_PROTOS>(7), // ipInUnknownProtos
    counted<IPMIB_IP_IN_DISCARDS>(8),       // ipInDiscards
    counted<IPMIB_IP_IN_DELIVERS>(9),       // ipInDelivers
    counted<IPMIB_IP_OUT_REQUESTS>(10),     // ipOutRequests
    counted<IPMIB_IP_OUT_DISCARDS>(11),     // ipOutDiscards
    counted<IPMIB_IP_OUT_NO_ROUTES>(12),    // ipOutNoRoutes
    counted<IPMIB_IP_REASM_REQDS>(14),      // ipReasmReqds
    counted<IPMIB_IP_REASM_OKS>(15),        // ipReasmOKs
    counted<IPMIB_IP_REASM_FAILS>(16),      // ipReasmFails
    counted<IPMIB_IP_OUT_FRAG_OKS>(17),     // ipFragOKs
    counted<IPMIB_IP_OUT_FRAG_FAILS>(18),   // ipFragFails
    counted<IPMIB_IP_OUT_FRAG_CREATES>(19), // ipFragCreates
    counted<IPMIB_IP_ROUTING_DISCARDS>(23), // ipRoutingDiscards
};

struct InterfaceChanges {
    std::uint32_t ofIpv4;
    std::uint32_t ofIpv6;
};

// Nothing is written, so nobody needs a lock: it is never advanced.
Cell unlocked(const InterfaceChanges &)
{
    return integer(0);
}

constexpr host::RowColumn<InterfaceChanges> changes[] = {
    {27, [](const InterfaceChanges &row) { return ticks(row.ofIpv4); }}, // ipv4InterfaceTableLastChange
    {29, [](const InterfaceChanges &row) { return ticks(row.ofIpv6); }}, // ipv6InterfaceTableLastChange
    {33, unlocked},                                                      // ipAddressSpinLock
    {38, unlocked},                                                      // ipv6RouterAdvertSpinLock
};

constexpr host::SubId ipTrafficStats[] = {1, 3, 6, 1, 2, 1, 4, 31};

constexpr host::RowColumn<InterfaceChanges> trafficChanges[] = {
    // Rows come and go with the interfaces that have IP.
    {2,
     [](const InterfaceChanges &row) { return ticks(std::max(row.ofIpv4, row.ofIpv6)); }}, // ipIfStatsTableLastChange
};

bool readSettings(const IpmibIpHooks &ip, IpmibIpSettings &row)
{
    return ip.settings(IPMIB_IPV4, &row) == 0;
}

bool readCounters(const IpmibIpHooks &ip, IpmibIpCounters &row)
{
    row.counted = 0;
    for (const auto &column : counters) {
        row.counted |= column.needs; // which are wanted
    }
    return ip.system_counters(IPMIB_IPV4, &row) == 0;
}

bool readChanges(const IpmibIpHooks &ip, InterfaceChanges &row)
{
    row = {ip.interfaces_changed(IPMIB_IPV4), ip.interfaces_changed(IPMIB_IPV6)};
    return true;
}

} // namespace

std::vector<SourcePointer> ipScalars(const IpmibIpHooks &ip)
{
    std::vector<SourcePointer> sources;
    if (ip.settings != nullptr) {
        sources.push_back(scalarsOf<IpmibIpSettings>(ipGroup, ip, readSettings, settings));
    }
    if (ip.system_counters != nullptr) {
        sources.push_back(scalarsOf<IpmibIpCounters>(ipGroup, ip, readCounters, counters));
    }
    if (ip.interfaces_changed != nullptr) {
        sources.push_back(scalarsOf<InterfaceChanges>(ipGroup, ip, readChanges, changes));
        sources.push_back(scalarsOf<InterfaceChanges>(ipTrafficStats, ip, readChanges, trafficChanges));
    }
    return sources;
}

} // namespace ipmib::tables
