// SPDX-License-Identifier: BSD-3-Clause
// The scalars of the udp group, over both versions of IP. Datagrams are counted in 64 bits, too.

#include "tables/ip/hook_scalars.h"

namespace ipmib::tables
{
namespace
{

using Row = IpmibUdpCounters;

constexpr host::SubId udpGroup[] = {1, 3, 6, 1, 2, 1, 7};

constexpr host::RowColumn<Row> columns[] = {
    {1, [](const Row &row) { return counter32(row.in_datagrams); }},  // udpInDatagrams
    {2, [](const Row &row) { return counter32(row.no_ports); }},      // udpNoPorts
    {3, [](const Row &row) { return counter32(row.in_errors); }},     // udpInErrors
    {4, [](const Row &row) { return counter32(row.out_datagrams); }}, // udpOutDatagrams
    {8, [](const Row &row) { return counter64(row.in_datagrams); }},  // udpHCInDatagrams
    {9, [](const Row &row) { return counter64(row.out_datagrams); }}, // udpHCOutDatagrams
};

bool read(const IpmibIpHooks &ip, Row &row)
{
    return ip.udp_counters(&row) == 0;
}

} // namespace

SourcePointer udpScalars(const IpmibIpHooks &ip)
{
    return ip.udp_counters == nullptr ? nullptr : scalarsOf<Row>(udpGroup, ip, read, columns);
}

} // namespace ipmib::tables
