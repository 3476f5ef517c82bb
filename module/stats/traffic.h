// SPDX-License-Identifier: BSD-3-Clause
// The traffic counters that the system and the interface statistics tables have in common.
#pragma once

#include "frame/walk.h"

#include <ipmib/records.h>

#include <cstdint>

namespace ipmib
{

// The row of either table: the platform's counters with the sums that some columns report. An IPv4 row has zero in
// every counter that the platform does not keep for IPv4; the system's row has no interface.
struct TrafficRow {
    std::uint32_t if_index;
    std::uint32_t ip_version;
    Ip6MibStat stat;
    std::uint32_t header_errors;
    std::uint32_t reasm_fails;
    std::uint32_t frag_required;
};

// Sums wrap at 32 bits.
inline void setTraffic(TrafficRow *row, const Ip6MibStat &stat)
{
    row->stat = stat;
    row->header_errors = stat.header_errors_1 + stat.header_errors_2 + stat.header_errors_3 + stat.header_errors_4;
    row->reasm_fails = stat.reasm_fails_1 + stat.reasm_fails_2;
    row->frag_required = stat.frag_fails + stat.frag_oks;
}

// A Counter32 column of a 32-bit counter, and one that reports the low 32 bits of a 64-bit counter.
constexpr Column counter32(std::size_t offset)
{
    return number(VT_COUNTER32, offset);
}
constexpr Column counter32Of64(std::size_t offset)
{
    constexpr std::size_t lowWord = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? 4 : 0;
    return counter32(offset + lowWord);
}

} // namespace ipmib
