// SPDX-License-Identifier: BSD-3-Clause
// Statistics records for tests, in which each counter tells its number, and the values expected of it.
#pragma once

#include <scripted/request.h>

#include <ipmib/records.h>

namespace ipmib::scripted
{

// The value of counter number n in a record: 64-bit ones differ from their low halves.
constexpr std::uint32_t low(std::uint32_t n)
{
    return 100 + n;
}
constexpr std::uint64_t wide(std::uint32_t n)
{
    return (std::uint64_t{n} << 32) + low(n);
}

inline Ip6MibStat numberedIp6Stat()
{
    Ip6MibStat stat = {};
    std::uint64_t *const first[] = {&stat.in_receives, &stat.in_forwarded, &stat.out_forwarded, &stat.out_transmits};
    for (std::uint32_t n = 1; n <= 4; ++n) {
        *first[n - 1] = wide(n);
    }
    std::uint32_t *const narrow[] = {
        &stat.header_errors_1, &stat.in_truncated, &stat.header_errors_2, &stat.header_errors_3, &stat.header_errors_4,
        &stat.reasm_required,  &stat.reasm_oks,    &stat.reasm_fails_1,   &stat.reasm_fails_2,   &stat.unknown_protos,
        &stat.in_delivers,     &stat.in_no_routes, &stat.address_errors,  &stat.frag_fails,      &stat.unread_19,
        &stat.unread_20,       &stat.frag_oks,     &stat.frag_creates,    &stat.unread_23,       &stat.in_mcast_pkts,
        &stat.out_mcast_pkts,  &stat.in_discards,  &stat.out_discards,    &stat.out_no_routes,   &stat.unread_29,
        &stat.unread_30};
    for (std::uint32_t n = 5; n <= 30; ++n) {
        *narrow[n - 5] = low(n);
    }
    std::uint64_t *const last[] = {&stat.out_requests, &stat.in_octets, &stat.out_octets};
    for (std::uint32_t n = 31; n <= 33; ++n) {
        *last[n - 31] = wide(n);
    }
    return stat;
}

inline IpMibIfStat numberedIpv4Stat()
{
    IpMibIfStat stat = {};
    std::uint64_t *const counters[] = {
        &stat.in_receives,   &stat.out_transmits,  &stat.in_octets,   &stat.out_octets,    &stat.out_requests,
        &stat.in_mcast_pkts, &stat.out_mcast_pkts, &stat.unread_8,    &stat.out_forwarded, &stat.unread_10,
        &stat.unread_11,     &stat.in_discards,    &stat.out_discards};
    for (std::uint32_t n = 1; n <= 13; ++n) {
        *counters[n - 1] = wide(n);
    }
    return stat;
}

} // namespace ipmib::scripted
