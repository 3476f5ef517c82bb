// SPDX-License-Identifier: BSD-3-Clause
// Wide columns show the same counter as the narrow ones before them.
#include "tables/ip/ip_counter_columns.h"

#include <algorithm>

namespace ipmib::tables
{
namespace
{

template <unsigned counter>
bool isCounted(const CounterRow &row)
{
    return (row.counters.counted >> counter & 1) != 0;
}

template <unsigned counter>
Cell narrow(const CounterRow &row)
{
    return isCounted<counter>(row) ? counter32(row.counters.value[counter]) : Cell();
}

template <unsigned counter>
Cell wide(const CounterRow &row)
{
    return isCounted<counter>(row) ? counter64(row.counters.value[counter]) : Cell();
}

constexpr CounterColumn columns[] = {
    {3, narrow<IPMIB_IP_IN_RECEIVES>},                 // InReceives
    {4, wide<IPMIB_IP_IN_RECEIVES>},                   // HCInReceives
    {5, narrow<IPMIB_IP_IN_OCTETS>},                   // InOctets
    {6, wide<IPMIB_IP_IN_OCTETS>},                     // HCInOctets
    {7, narrow<IPMIB_IP_IN_HDR_ERRORS>},               // InHdrErrors
    {8, narrow<IPMIB_IP_IN_NO_ROUTES>},                // InNoRoutes
    {9, narrow<IPMIB_IP_IN_ADDR_ERRORS>},              // InAddrErrors
    {10, narrow<IPMIB_IP_IN_UNKNOWN_PROTOS>},          // InUnknownProtos
    {11, narrow<IPMIB_IP_IN_TRUNCATED_PKTS>},          // InTruncatedPkts
    {12, narrow<IPMIB_IP_IN_FORW_DATAGRAMS>},          // InForwDatagrams
    {13, wide<IPMIB_IP_IN_FORW_DATAGRAMS>},            // HCInForwDatagrams
    {14, narrow<IPMIB_IP_REASM_REQDS>},                // ReasmReqds
    {15, narrow<IPMIB_IP_REASM_OKS>},                  // ReasmOKs
    {16, narrow<IPMIB_IP_REASM_FAILS>},                // ReasmFails
    {17, narrow<IPMIB_IP_IN_DISCARDS>},                // InDiscards
    {18, narrow<IPMIB_IP_IN_DELIVERS>},                // InDelivers
    {19, wide<IPMIB_IP_IN_DELIVERS>},                  // HCInDelivers
    {20, narrow<IPMIB_IP_OUT_REQUESTS>},               // OutRequests
    {21, wide<IPMIB_IP_OUT_REQUESTS>},                 // HCOutRequests
    {22, narrow<IPMIB_IP_OUT_NO_ROUTES>},              // OutNoRoutes
    {23, narrow<IPMIB_IP_OUT_FORW_DATAGRAMS>},         // OutForwDatagrams
    {24, wide<IPMIB_IP_OUT_FORW_DATAGRAMS>},           // HCOutForwDatagrams
    {25, narrow<IPMIB_IP_OUT_DISCARDS>},               // OutDiscards
    {26, narrow<IPMIB_IP_OUT_FRAG_REQDS>},             // OutFragReqds
    {27, narrow<IPMIB_IP_OUT_FRAG_OKS>},               // OutFragOKs
    {28, narrow<IPMIB_IP_OUT_FRAG_FAILS>},             // OutFragFails
    {29, narrow<IPMIB_IP_OUT_FRAG_CREATES>},           // OutFragCreates
    {30, narrow<IPMIB_IP_OUT_TRANSMITS>},              // OutTransmits
    {31, wide<IPMIB_IP_OUT_TRANSMITS>},                // HCOutTransmits
    {32, narrow<IPMIB_IP_OUT_OCTETS>},                 // OutOctets
    {33, wide<IPMIB_IP_OUT_OCTETS>},                   // HCOutOctets
    {34, narrow<IPMIB_IP_IN_MCAST_PKTS>},              // InMcastPkts
    {35, wide<IPMIB_IP_IN_MCAST_PKTS>},                // HCInMcastPkts
    {36, narrow<IPMIB_IP_IN_MCAST_OCTETS>},            // InMcastOctets
    {37, wide<IPMIB_IP_IN_MCAST_OCTETS>},              // HCInMcastOctets
    {38, narrow<IPMIB_IP_OUT_MCAST_PKTS>},             // OutMcastPkts
    {39, wide<IPMIB_IP_OUT_MCAST_PKTS>},               // HCOutMcastPkts
    {40, narrow<IPMIB_IP_OUT_MCAST_OCTETS>},           // OutMcastOctets
    {41, wide<IPMIB_IP_OUT_MCAST_OCTETS>},             // HCOutMcastOctets
    {42, narrow<IPMIB_IP_IN_BCAST_PKTS>},              // InBcastPkts
    {43, wide<IPMIB_IP_IN_BCAST_PKTS>},                // HCInBcastPkts
    {44, narrow<IPMIB_IP_OUT_BCAST_PKTS>},             // OutBcastPkts
    {45, wide<IPMIB_IP_OUT_BCAST_PKTS>},               // HCOutBcastPkts
    {46, [](const CounterRow &) { return ticks(0); }}, // DiscontinuityTime: they count from the start on
    {47, [](const CounterRow &) { return gauge(0); }}, // RefreshRate: each packet sees them as they are
};

} // namespace

std::span<const CounterColumn> counterColumns()
{
    return columns;
}

std::vector<CounterColumn> counterColumns(std::span<const host::SubId> numbers)
{
    std::vector<CounterColumn> some;
    std::ranges::copy_if(columns, std::back_inserter(some), [numbers](const CounterColumn &column) {
        return std::ranges::find(numbers, column.number) != numbers.end();
    });
    return some;
}

} // namespace ipmib::tables
