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
Cell counted(const IpmibIpCounters &counters)
{
    return (counters.counted >> counter & 1) != 0 ? counter32(counters.value[counter]) : Cell();
}

constexpr host::RowColumn<IpmibIpCounters> counters[] = {
    {3, counted<IPMIB_IP_IN_RECEIVES>},       // ipInReceives
    {4, counted<IPMIB_IP_IN_HDR_ERRORS>},     // ipInHdrErrors
    {5, counted<IPMIB_IP_IN_ADDR_ERRORS>},    // ipInAddrErrors
    {6, counted<IPMIB_IP_IN_FORW_DATAGRAMS>}, // ipForwDatagrams
    {7, counted<IPMIB_IP_IN_UNKNOWN_PROTOS>}, // ipInUnknownProtos
    {8, counted<IPMIB_IP_IN_DISCARDS>},       // ipInDiscards
    {9, counted<IPMIB_IP_IN_DELIVERS>},       // ipInDelivers
    {10, counted<IPMIB_IP_OUT_REQUESTS>},     // ipOutRequests
    {11, counted<IPMIB_IP_OUT_DISCARDS>},     // ipOutDiscards
    {12, counted<IPMIB_IP_OUT_NO_ROUTES>},    // ipOutNoRoutes
    {14, counted<IPMIB_IP_REASM_REQDS>},      // ipReasmReqds
    {15, counted<IPMIB_IP_REASM_OKS>},        // ipReasmOKs
    {16, counted<IPMIB_IP_REASM_FAILS>},      // ipReasmFails
    {17, counted<IPMIB_IP_OUT_FRAG_OKS>},     // ipFragOKs
    {18, counted<IPMIB_IP_OUT_FRAG_FAILS>},   // ipFragFails
    {19, counted<IPMIB_IP_OUT_FRAG_CREATES>}, // ipFragCreates
    {23, counted<IPMIB_IP_ROUTING_DISCARDS>}, // ipRoutingDiscards
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
