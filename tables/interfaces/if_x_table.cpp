// SPDX-License-Identifier: BSD-3-Clause
// ifXTable.

#include "tables/interfaces/interface_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

using Row = InterfaceRow;

constexpr host::SubId ifXEntry[] = {1, 3, 6, 1, 2, 1, 31, 1, 1, 1};

constexpr std::uint64_t trapsEnabled = 1;
constexpr std::uint64_t trapsDisabled = 2;

// As near as millions come.
std::uint64_t megabitsOf(std::uint64_t bits)
{
    constexpr std::uint64_t perMegabit = 1'000'000;
    return (bits + perMegabit / 2) / perMegabit;
}

constexpr InterfaceColumn ifXTableColumns[] = {
    {1, [](const Row &row) { return text(row.interface.name); }},                              // ifName
    {2, [](const Row &row) { return counter32(row.traffic.in.multicast); }, traffic},          // ifInMulticastPkts
    {3, [](const Row &row) { return counter32(row.traffic.in.broadcast); }, traffic},          // ifInBroadcastPkts
    {4, [](const Row &row) { return counter32(row.traffic.out.multicast); }, traffic},         // ifOutMulticastPkts
    {5, [](const Row &row) { return counter32(row.traffic.out.broadcast); }, traffic},         // ifOutBroadcastPkts
    {6, [](const Row &row) { return counter64(row.traffic.in.octets); }, traffic},             // ifHCInOctets
    {7, [](const Row &row) { return counter64(row.traffic.in.unicast); }, traffic},            // ifHCInUcastPkts
    {8, [](const Row &row) { return counter64(row.traffic.in.multicast); }, traffic},          // ifHCInMulticastPkts
    {9, [](const Row &row) { return counter64(row.traffic.in.broadcast); }, traffic},          // ifHCInBroadcastPkts
    {10, [](const Row &row) { return counter64(row.traffic.out.octets); }, traffic},           // ifHCOutOctets
    {11, [](const Row &row) { return counter64(row.traffic.out.unicast); }, traffic},          // ifHCOutUcastPkts
    {12, [](const Row &row) { return counter64(row.traffic.out.multicast); }, traffic},        // ifHCOutMulticastPkts
    {13, [](const Row &row) { return counter64(row.traffic.out.broadcast); }, traffic},        // ifHCOutBroadcastPkts
    {14, [](const Row &row) { return integer(row.notified ? trapsEnabled : trapsDisabled); }}, // ifLinkUpDownTrapEnable
    {15, [](const Row &row) { return gauge(megabitsOf(row.interface.speed)); }},               // ifHighSpeed
    {16, [](const Row &row) { return truth(row.interface.promiscuous != 0); }},                // ifPromiscuousMode
    {17, [](const Row &row) { return truth(row.interface.connector != 0); }},                  // ifConnectorPresent
    {18, [](const Row &row) { return text(row.interface.alias); }},                            // ifAlias
    {19, [](const Row &row) { return Cell(row.upTime->at(0)); }}, // ifCounterDiscontinuityTime: a new one, a new index
};

} // namespace

SourcePointer ifXTable(const IpmibInterfaceHooks &interfaces, const host::SysUpTime &upTime, const bool &notified)
{
    return std::make_unique<host::RowSource<InterfaceRows>>(
        ifXEntry, InterfaceRows(interfaces, upTime, ifXTableColumns, &notified));
}

} // namespace ipmib::tables
