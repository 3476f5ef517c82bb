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
constexpr CounterColumn narrow(host::SubId number)
{
    return {
        number,
        [](const CounterRow &row) { return isCounted<counter>(row) ? counter32(row.counters.value[counter]) : Cell(); },
        1U << counter};
}

template <unsigned counter>
constexpr CounterColumn wide(host::SubId number)
{
    return {
        number,
        [](const CounterRow &row) { return isCounted<counter>(row) ? counter64(row.counters.value[counter]) : Cell(); },
        1U << counter};
}

constexpr CounterColumn ipCounterColumns[] = {
    narrow<IPMIB_IP_IN_RECEIVES>(3),                   // InReceives
    wide<IPMIB_IP_IN_RECEIVES>(4),                     // HCInReceives
    narrow<IPMIB_IP_IN_OCTETS>(5),                     // InOctets
    wide<IPMIB_IP_IN_OCTETS>(6),                       // HCInOctets
    narrow<IPMIB_IP_IN_HDR_ERRORS>(7),                 // InHdrErrors
    narrow<IPMIB_IP_IN_NO_ROUTES>(8),                  // InNoRoutes
    narrow<IPMIB_IP_IN_ADDR_ERRORS>(9),                // InAddrErrors
    narrow<IPMIB_IP_IN_UNKNOWN_PROTOS>(10),            // InUnknownProtos
    narrow<IPMIB_IP_IN_TRUNCATED_PKTS>(11),            // InTruncatedPkts
    narrow<IPMIB_IP_IN_FORW_DATAGRAMS>(12),            // InForwDatagrams
    wide<IPMIB_IP_IN_FORW_DATAGRAMS>(13),              // HCInForwDatagrams
    narrow<IPMIB_IP_REASM_REQDS>(14),                  // ReasmReqds
    narrow<IPMIB_IP_REASM_OKS>(15),                    // ReasmOKs
    narrow<IPMIB_IP_REASM_FAILS>(16),                  // ReasmFails
    narrow<IPMIB_IP_IN_DISCARDS>(17),                  // InDiscards
    narrow<IPMIB_IP_IN_DELIVERS>(18),                  // InDelivers
    wide<IPMIB_IP_IN_DELIVERS>(19),                    // HCInDelivers
    narrow<IPMIB_IP_OUT_REQUESTS>(20),                 // OutRequests
    wide<IPMIB_IP_OUT_REQUESTS>(21),                   // HCOutRequests
    narrow<IPMIB_IP_OUT_NO_ROUTES>(22),                // OutNoRoutes
    narrow<IPMIB_IP_OUT_FORW_DATAGRAMS>(23),           // OutForwDatagrams
    wide<IPMIB_IP_OUT_FORW_DATAGRAMS>(24),             // HCOutForwDatagrams
    narrow<IPMIB_IP_OUT_DISCARDS>(25),                 // OutDiscards
    narrow<IPMIB_IP_OUT_FRAG_REQDS>(26),               // OutFragReqds
    narrow<IPMIB_IP_OUT_FRAG_OKS>(27),                 // OutFragOKs
    narrow<IPMIB_IP_OUT_FRAG_FAILS>(28),               // OutFragFails
    narrow<IPMIB_IP_OUT_FRAG_CREATES>(29),             // OutFragCreates
    narrow<IPMIB_IP_OUT_TRANSMITS>(30),                // OutTransmits
    wide<IPMIB_IP_OUT_TRANSMITS>(31),                  // HCOutTransmits
    narrow<IPMIB_IP_OUT_OCTETS>(32),                   // OutOctets
    wide<IPMIB_IP_OUT_OCTETS>(33),                     // HCOutOctets
    narrow<IPMIB_IP_IN_MCAST_PKTS>(34),                // InMcastPkts
    wide<IPMIB_IP_IN_MCAST_PKTS>(35),                  // HCInMcastPkts
    narrow<IPMIB_IP_IN_MCAST_OCTETS>(36),              // InMcastOctets
    wide<IPMIB_IP_IN_MCAST_OCTETS>(37),                // HCInMcastOctets
    narrow<IPMIB_IP_OUT_MCAST_PKTS>(38),               // OutMcastPkts
    wide<IPMIB_IP_OUT_MCAST_PKTS>(39),                 // HCOutMcastPkts
    narrow<IPMIB_IP_OUT_MCAST_OCTETS>(40),             // OutMcastOctets
    wide<IPMIB_IP_OUT_MCAST_OCTETS>(41),               // HCOutMcastOctets
    narrow<IPMIB_IP_IN_BCAST_PKTS>(42),                // InBcastPkts
    wide<IPMIB_IP_IN_BCAST_PKTS>(43),                  // HCInBcastPkts
    narrow<IPMIB_IP_OUT_BCAST_PKTS>(44),               // OutBcastPkts
    wide<IPMIB_IP_OUT_BCAST_PKTS>(45),                 // HCOutBcastPkts
    {46, [](const CounterRow &) { return ticks(0); }}, // DiscontinuityTime: they count from the start on
    {47, [](const CounterRow &) { return gauge(0); }}, // RefreshRate: each packet sees them as they are
};

} // namespace

std::span<const CounterColumn> counterColumns()
{
    return ipCounterColumns;
}

std::vector<CounterColumn> counterColumns(std::span<const host::SubId> numbers)
{
    std::vector<CounterColumn> some;
    std::ranges::copy_if(ipCounterColumns, std::back_inserter(some), [numbers](const CounterColumn &column) {
        return std::ranges::find(numbers, column.number) != numbers.end();
    });
    return some;
}

} // namespace ipmib::tables
