// SPDX-License-Identifier: BSD-3-Clause
// The scalars of the tcp group, over both versions of IP. Segments are counted in 64 bits, too.

#include "tables/ip/hook_scalars.h"

namespace ipmib::tables
{
namespace
{

using Row = IpmibTcpCounters;

constexpr host::SubId tcpGroup[] = {1, 3, 6, 1, 2, 1, 6};

constexpr host::RowColumn<Row> columns[] = {
    {1, [](const Row &row) { return integer(row.rto_algorithm); }},                               // tcpRtoAlgorithm
    {2, [](const Row &row) { return integer(row.rto_min_ms); }},                                  // tcpRtoMin
    {3, [](const Row &row) { return integer(row.rto_max_ms); }},                                  // tcpRtoMax
    {4, [](const Row &row) { return integer(static_cast<std::uint32_t>(row.max_connections)); }}, // tcpMaxConn
    {5, [](const Row &row) { return counter32(row.active_opens); }},                              // tcpActiveOpens
    {6, [](const Row &row) { return counter32(row.passive_opens); }},                             // tcpPassiveOpens
    {7, [](const Row &row) { return counter32(row.attempt_fails); }},                             // tcpAttemptFails
    {8, [](const Row &row) { return counter32(row.established_resets); }},                        // tcpEstabResets
    {9, [](const Row &row) { return gauge(row.established); }},                                   // tcpCurrEstab
    {10, [](const Row &row) { return counter32(row.in_segments); }},                              // tcpInSegs
    {11, [](const Row &row) { return counter32(row.out_segments); }},                             // tcpOutSegs
    {12, [](const Row &row) { return counter32(row.retransmitted_segments); }},                   // tcpRetransSegs
    {14, [](const Row &row) { return counter32(row.in_errors); }},                                // tcpInErrs
    {15, [](const Row &row) { return counter32(row.out_resets); }},                               // tcpOutRsts
    {17, [](const Row &row) { return counter64(row.in_segments); }},                              // tcpHCInSegs
    {18, [](const Row &row) { return counter64(row.out_segments); }},                             // tcpHCOutSegs
};

bool read(const IpmibIpHooks &ip, Row &row)
{
    return ip.tcp_counters(&row) == 0;
}

} // namespace

SourcePointer tcpScalars(const IpmibIpHooks &ip)
{
    return ip.tcp_counters == nullptr ? nullptr : scalarsOf<Row>(tcpGroup, ip, read, columns);
}

} // namespace ipmib::tables
