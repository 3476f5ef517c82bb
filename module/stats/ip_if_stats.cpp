// SPDX-License-Identifier: BSD-3-Clause
// ipIfStatsTable: IP traffic counters by IP version and interface; all IPv4 rows, then all IPv6 rows.
#include "frame/described_table.h"
#include "frame/gate.h"
#include "frame/tables.h"
#include "stats/interface_walk.h"
#include "stats/traffic.h"

#include <ipmib/platform.h>

#include <cstddef>

namespace ipmib
{

namespace
{

// The last eight were added later, out of the order of the sub-identifiers.
constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(TrafficRow, ip_version)),    // ipIfStatsIPVersion
    number(VT_INTEGER, offsetof(TrafficRow, if_index)),      // ipIfStatsIfIndex
    counter32Of64(offsetof(TrafficRow, stat.in_receives)),   // ipIfStatsInReceives
    counter32(offsetof(TrafficRow, header_errors)),          // ipIfStatsInHdrErrors
    counter32(offsetof(TrafficRow, stat.in_no_routes)),      // ipIfStatsInNoRoutes
    counter32(offsetof(TrafficRow, stat.address_errors)),    // ipIfStatsInAddrErrors
    counter32(offsetof(TrafficRow, stat.unknown_protos)),    // ipIfStatsInUnknownProtos
    counter32(offsetof(TrafficRow, stat.in_truncated)),      // ipIfStatsInTruncatedPkts
    counter32Of64(offsetof(TrafficRow, stat.in_forwarded)),  // ipIfStatsInForwDatagrams
    counter32(offsetof(TrafficRow, stat.reasm_required)),    // ipIfStatsReasmReqds
    counter32(offsetof(TrafficRow, stat.reasm_oks)),         // ipIfStatsReasmOKs
    counter32(offsetof(TrafficRow, reasm_fails)),            // ipIfStatsReasmFails
    counter32(offsetof(TrafficRow, stat.in_discards)),       // ipIfStatsInDiscards
    counter32(offsetof(TrafficRow, stat.in_delivers)),       // ipIfStatsInDelivers
    counter32Of64(offsetof(TrafficRow, stat.out_requests)),  // ipIfStatsOutRequests
    counter32Of64(offsetof(TrafficRow, stat.out_forwarded)), // ipIfStatsOutForwDatagrams
    counter32(offsetof(TrafficRow, stat.out_discards)),      // ipIfStatsOutDiscards
    counter32(offsetof(TrafficRow, frag_required)),          // ipIfStatsOutFragReqds
    counter32(offsetof(TrafficRow, stat.frag_oks)),          // ipIfStatsOutFragOKs
    counter32(offsetof(TrafficRow, stat.frag_fails)),        // ipIfStatsOutFragFails
    counter32(offsetof(TrafficRow, stat.frag_creates)),      // ipIfStatsOutFragCreates
    counter32Of64(offsetof(TrafficRow, stat.out_transmits)), // ipIfStatsOutTransmits
    counter32(offsetof(TrafficRow, stat.in_mcast_pkts)),     // ipIfStatsInMcastPkts
    counter32(offsetof(TrafficRow, stat.out_mcast_pkts)),    // ipIfStatsOutMcastPkts
    counter64(offsetof(TrafficRow, stat.in_receives)),       // ipIfStatsHCInReceives
    counter32Of64(offsetof(TrafficRow, stat.in_octets)),     // ipIfStatsInOctets
    counter64(offsetof(TrafficRow, stat.in_octets)),         // ipIfStatsHCInOctets
    counter64(offsetof(TrafficRow, stat.out_requests)),      // ipIfStatsHCOutRequests
    counter64(offsetof(TrafficRow, stat.out_forwarded)),     // ipIfStatsHCOutForwDatagrams
    counter32Of64(offsetof(TrafficRow, stat.out_octets)),    // ipIfStatsOutOctets
    counter64(offsetof(TrafficRow, stat.out_octets)),        // ipIfStatsHCOutOctets
    counter64(offsetof(TrafficRow, stat.out_transmits)),     // ipIfStatsHCOutTransmits
};
constexpr Table ipIfStats = describedTable<tableIpIfStats, columns>;

constexpr std::uint32_t familyIp6 = 10;

void ip_IpIfStats_FillIpv4(std::uint32_t ifIndex, const IpMibIfStat &record, TrafficRow *row)
{
    Ip6MibStat stat{};
    stat.in_receives = record.in_receives;
    stat.out_transmits = record.out_transmits;
    stat.in_octets = record.in_octets;
    stat.out_octets = record.out_octets;
    stat.out_requests = record.out_requests;
    stat.in_mcast_pkts = static_cast<std::uint32_t>(record.in_mcast_pkts);
    stat.out_mcast_pkts = static_cast<std::uint32_t>(record.out_mcast_pkts);
    stat.out_forwarded = record.out_forwarded;
    stat.in_discards = static_cast<std::uint32_t>(record.in_discards);
    stat.out_discards = static_cast<std::uint32_t>(record.out_discards);
    row->if_index = ifIndex;
    row->ip_version = versionIp4;
    setTraffic(row, stat);
}

void ip_IpIfStats_FillIpv6(std::uint32_t ifIndex, const Ip6MibStat &record, TrafficRow *row)
{
    row->if_index = ifIndex;
    row->ip_version = versionIp6;
    setTraffic(row, record);
}

// The row of one interface in one version's block; a failure is the platform's own code.
std::uint32_t readIpv4(std::uint32_t ifIndex, TrafficRow *row)
{
    IpMibIfStat record{};
    const std::uint32_t result = IP_GetMibIfStat(ifIndex, &record);
    if (result == 0) {
        ip_IpIfStats_FillIpv4(ifIndex, record, row);
    }
    return result;
}

std::uint32_t readIpv6(std::uint32_t ifIndex, TrafficRow *row)
{
    Ip6MibStat record{};
    const std::uint32_t result = IP6_GetIfStat(ifIndex, familyIp6, &record);
    if (result == 0) {
        ip_IpIfStats_FillIpv6(ifIndex, record, row);
    }
    return result;
}

// The first row of the block behind a version's: IPv4 follows 0, IPv6 follows IPv4.
std::uint32_t ip_IpIfStats_GetFirstAfterVersion(std::uint32_t version, TrafficRow *row)
{
    const std::uint32_t first = InterfaceWalk().first();
    return version == 0 ? readIpv4(first, row) : readIpv6(first, row);
}

std::uint32_t getByIndex(const IndexPart &version, const IndexPart &ifIndex, TrafficRow *row)
{
    if (!version.present || !ifIndex.present || IF_IsValidIfIndex(ifIndex.value) != 1) {
        return RC_NOT_FOUND;
    }
    switch (version.value) {
    case versionIp4:
        return readIpv4(ifIndex.value, row);
    case versionIp6:
        return readIpv6(ifIndex.value, row);
    default:
        return RC_NOT_FOUND;
    }
}

std::uint32_t getNextByIndex(std::uint32_t version, std::uint32_t ifIndex, TrafficRow *row)
{
    const std::uint32_t next = InterfaceWalk().next(ifIndex); // also after 0: the first of the version's block
    switch (version) {
    case versionIp4:
        // The first interface without IPv4 counters ends the IPv4 block; behind the last one there are none either.
        return readIpv4(next, row) == 0 ? 0 : ip_IpIfStats_GetFirstAfterVersion(versionIp4, row);
    case versionIp6:
        return readIpv6(next, row);
    default:
        return RC_NOT_FOUND;
    }
}

} // namespace

std::uint32_t ip_IpIfStats_Get(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const IndexPart version = readIndexPart(request, ipIfStats.parameterId(0));
    const IndexPart ifIndex = readIndexPart(request, ipIfStats.parameterId(1));
    if (version.value == versionIp6 || version.value == versionIp4) {
        const auto require = version.value == versionIp6 ? requireIp6 : requireIp4;
        if (const std::uint32_t error = require(operation, reply)) {
            return error;
        }
    }
    TrafficRow row{};
    const bool anyIndex = version.present || ifIndex.present;
    const std::uint32_t result = operation == OP_GET ? getByIndex(version, ifIndex, &row)
                                 : anyIndex          ? getNextByIndex(version.value, ifIndex.value, &row)
                                                     : ip_IpIfStats_GetFirstAfterVersion(0, &row);
    return answer(ipIfStats, operation, result, &row, request, reply);
}

} // namespace ipmib
