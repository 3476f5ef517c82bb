// SPDX-License-Identifier: BSD-3-Clause
// ipSystemStatsTable: the system's IP traffic counters, one row for IPv6.
#include "frame/described_table.h"
#include "frame/gate.h"
#include "frame/tables.h"
#include "stats/traffic.h"

#include <ipmib/platform.h>

#include <cstddef>

namespace ipmib
{

namespace
{

constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(TrafficRow, ip_version)),    // ipSystemStatsIPVersion
    counter32Of64(offsetof(TrafficRow, stat.in_receives)),   // ipSystemStatsInReceives
    counter64(offsetof(TrafficRow, stat.in_receives)),       // ipSystemStatsHCInReceives
    counter32(offsetof(TrafficRow, header_errors)),          // ipSystemStatsInHdrErrors
    counter32(offsetof(TrafficRow, stat.in_no_routes)),      // ipSystemStatsInNoRoutes
    counter32(offsetof(TrafficRow, stat.address_errors)),    // ipSystemStatsInAddrErrors
    counter32(offsetof(TrafficRow, stat.unknown_protos)),    // ipSystemStatsInUnknownProtos
    counter32Of64(offsetof(TrafficRow, stat.in_forwarded)),  // ipSystemStatsInForwDatagrams
    counter64(offsetof(TrafficRow, stat.in_forwarded)),      // ipSystemStatsHCInForwDatagrams
    counter32(offsetof(TrafficRow, stat.reasm_required)),    // ipSystemStatsReasmReqds
    counter32(offsetof(TrafficRow, stat.reasm_oks)),         // ipSystemStatsReasmOKs
    counter32(offsetof(TrafficRow, reasm_fails)),            // ipSystemStatsReasmFails
    counter32(offsetof(TrafficRow, stat.in_discards)),       // ipSystemStatsInDiscards
    counter32(offsetof(TrafficRow, stat.in_delivers)),       // ipSystemStatsInDelivers
    counter32Of64(offsetof(TrafficRow, stat.out_requests)),  // ipSystemStatsOutRequests
    counter32(offsetof(TrafficRow, stat.out_no_routes)),     // ipSystemStatsOutNoRoutes
    counter32Of64(offsetof(TrafficRow, stat.out_forwarded)), // ipSystemStatsOutForwDatagrams
    counter64(offsetof(TrafficRow, stat.out_forwarded)),     // ipSystemStatsHCOutForwDatagrams
    counter32(offsetof(TrafficRow, stat.out_discards)),      // ipSystemStatsOutDiscards
    counter32(offsetof(TrafficRow, frag_required)),          // ipSystemStatsOutFragReqds
    counter32(offsetof(TrafficRow, stat.frag_oks)),          // ipSystemStatsOutFragOKs
    counter32(offsetof(TrafficRow, stat.frag_fails)),        // ipSystemStatsOutFragFails
    counter32(offsetof(TrafficRow, stat.frag_creates)),      // ipSystemStatsOutFragCreates
    counter32Of64(offsetof(TrafficRow, stat.out_transmits)), // ipSystemStatsOutTransmits
    counter64(offsetof(TrafficRow, stat.out_transmits)),     // ipSystemStatsHCOutTransmits
};
constexpr Table ipSystemStats = describedTable<tableIpSystemStats, columns>;

constexpr std::uint32_t wholeSystem = 0x8000;

std::uint32_t ip_IpSystemStats_GetByIndex(std::uint32_t ipVersion, TrafficRow *row)
{
    if (ipVersion != versionIp6) {
        return RC_NOT_FOUND;
    }
    if (const std::uint32_t state = IP6_DaemonCheck(1)) {
        return state;
    }
    Ip6MibStat stat{};
    if (IP6_GetMibStat(wholeSystem, &stat) != 0) {
        return RC_NOT_FOUND;
    }
    row->ip_version = versionIp6;
    setTraffic(row, stat);
    return 0;
}

// IPv6 has the only row; behind it the walk fails rather than ends.
std::uint32_t getNextByIndex(std::uint32_t ipVersion, TrafficRow *row)
{
    return ipVersion < versionIp6 ? ip_IpSystemStats_GetByIndex(versionIp6, row) : RC_NOT_FOUND;
}

} // namespace

std::uint32_t ip_IpSystemStats_Get(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const IndexPart version = readIndexPart(request, ipSystemStats.parameterId(0));
    if (version.value == versionIp6) {
        if (const std::uint32_t error = requireIp6(operation, reply)) {
            return error;
        }
    }
    TrafficRow row{};
    const std::uint32_t result =
        operation == OP_GET ? ip_IpSystemStats_GetByIndex(version.value, &row) : getNextByIndex(version.value, &row);
    return answer(ipSystemStats, operation, result, &row, request, reply);
}

} // namespace ipmib
