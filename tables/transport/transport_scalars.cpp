// SPDX-License-Identifier: BSD-3-Clause
// The scalars of the tcp and udp groups, over both versions of IP. What TCP and UDP carry is counted in 64 bits, too.

#include "tables/ip/hook_scalars.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId tcpGroup[] = {1, 3, 6, 1, 2, 1, 6};

constexpr host::RowColumn<IpmibTcpCounters> tcpColumns[] = {
    {1, [](const IpmibTcpCounters &row) { return integer(row.rto_algorithm); }}, // tcpRtoAlgorithm
    {2, [](const IpmibTcpCounters &row) { return integer(row.rto_min_ms); }},    // tcpRtoMin
    {3, [](const IpmibTcpCounters &row) { return integer(row.rto_max_ms); }},    // tcpRtoMax
    {4,
     [](const IpmibTcpCounters &row) {
         return integer(static_cast<std::uint32_t>(row.max_connections));
     }},                                                                                     // tcpMaxConn
    {5, [](const IpmibTcpCounters &row) { return counter32(row.active_opens); }},            // tcpActiveOpens
    {6, [](const IpmibTcpCounters &row) { return counter32(row.passive_opens); }},           // tcpPassiveOpens
    {7, [](const IpmibTcpCounters &row) { return counter32(row.attempt_fails); }},           // tcpAttemptFails
    {8, [](const IpmibTcpCounters &row) { return counter32(row.established_resets); }},      // tcpEstabResets
    {9, [](const IpmibTcpCounters &row) { return gauge(row.established); }},                 // tcpCurrEstab
    {10, [](const IpmibTcpCounters &row) { return counter32(row.in_segments); }},            // tcpInSegs
    {11, [](const IpmibTcpCounters &row) { return counter32(row.out_segments); }},           // tcpOutSegs
    {12, [](const IpmibTcpCounters &row) { return counter32(row.retransmitted_segments); }}, // tcpRetransSegs
    {14, [](const IpmibTcpCounters &row) { return counter32(row.in_errors); }},              // tcpInErrs
    {15, [](const IpmibTcpCounters &row) { return counter32(row.out_resets); }},             // tcpOutRsts
    {17, [](const IpmibTcpCounters &row) { return counter64(row.in_segments); }},            // tcpHCInSegs
    {18, [](const IpmibTcpCounters &row) { return counter64(row.out_segments); }},           // tcpHCOutSegs
};

bool readTcp(const IpmibIpHooks &ip, IpmibTcpCounters &row)
{
    return ip.tcp_counters(&row) == 0;
}

constexpr host::SubId udpGroup[] = {1, 3, 6, 1, 2, 1, 7};

constexpr host::RowColumn<IpmibUdpCounters> udpColumns[] = {
    {1, [](const IpmibUdpCounters &row) { return counter32(row.in_datagrams); }},  // udpInDatagrams
    {2, [](const IpmibUdpCounters &row) { return counter32(row.no_ports); }},      // udpNoPorts
    {3, [](const IpmibUdpCounters &row) { return counter32(row.in_errors); }},     // udpInErrors
    {4, [](const IpmibUdpCounters &row) { return counter32(row.out_datagrams); }}, // udpOutDatagrams
    {8, [](const IpmibUdpCounters &row) { return counter64(row.in_datagrams); }},  // udpHCInDatagrams
    {9, [](const IpmibUdpCounters &row) { return counter64(row.out_datagrams); }}, // udpHCOutDatagrams
};

bool readUdp(const IpmibIpHooks &ip, IpmibUdpCounters &row)
{
    return ip.udp_counters(&row) == 0;
}

} // namespace

SourcePointer tcpScalars(const IpmibIpHooks &ip)
{
    return ip.tcp_counters == nullptr ? nullptr : scalarsOf<IpmibTcpCounters>(tcpGroup, ip, readTcp, tcpColumns);
}

SourcePointer udpScalars(const IpmibIpHooks &ip)
{
    return ip.udp_counters == nullptr ? nullptr : scalarsOf<IpmibUdpCounters>(udpGroup, ip, readUdp, udpColumns);
}

} // namespace ipmib::tables
