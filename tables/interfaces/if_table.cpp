// SPDX-License-Identifier: BSD-3-Clause
// ifTable. Of deprecated columns that nobody has a value for the one is served that the standard names for that.

#include "tables/interfaces/interface_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

using Row = InterfaceRow;

constexpr host::SubId ifEntry[] = {1, 3, 6, 1, 2, 1, 2, 2, 1};

std::uint64_t nonUnicast(const IpmibTraffic &way)
{
    return way.multicast + way.broadcast;
}

constexpr std::uint64_t nothingQueued = 0;
constexpr host::SubId nothingSpecific[] = {0, 0}; // zeroDotZero: the medium has no MIB of its own

constexpr InterfaceColumn ifTableColumns[] = {
    {1, [](const Row &row) { return integer(row.interface.if_index); }},                           // ifIndex
    {2, [](const Row &row) { return text(row.interface.name); }},                                  // ifDescr
    {3, [](const Row &row) { return integer(row.interface.type); }},                               // ifType
    {4, [](const Row &row) { return integer(row.interface.mtu); }},                                // ifMtu
    {5, [](const Row &row) { return gauge(row.interface.speed); }},                                // ifSpeed
    {6, [](const Row &row) { return octets(row.interface.address, row.interface.address_size); }}, // ifPhysAddress
    {7, [](const Row &row) { return integer(row.interface.admin_status); }},                       // ifAdminStatus
    {8, [](const Row &row) { return integer(row.interface.oper_status); }},                        // ifOperStatus
    {9, [](const Row &row) { return Cell(row.upTime->at(row.interface.changed_ms)); }},            // ifLastChange
    {10, [](const Row &row) { return counter32(row.traffic.in.octets); }, traffic},                // ifInOctets
    {11, [](const Row &row) { return counter32(row.traffic.in.unicast); }, traffic},               // ifInUcastPkts
    {12, [](const Row &row) { return counter32(nonUnicast(row.traffic.in)); }, traffic},           // ifInNUcastPkts
    {13, [](const Row &row) { return counter32(row.traffic.in.discards); }, traffic},              // ifInDiscards
    {14, [](const Row &row) { return counter32(row.traffic.in.errors); }, traffic},                // ifInErrors
    {15, [](const Row &row) { return counter32(row.traffic.in_unknown_protocols); }, traffic},     // ifInUnknownProtos
    {16, [](const Row &row) { return counter32(row.traffic.out.octets); }, traffic},               // ifOutOctets
    {17, [](const Row &row) { return counter32(row.traffic.out.unicast); }, traffic},              // ifOutUcastPkts
    {18, [](const Row &row) { return counter32(nonUnicast(row.traffic.out)); }, traffic},          // ifOutNUcastPkts
    {19, [](const Row &row) { return counter32(row.traffic.out.discards); }, traffic},             // ifOutDiscards
    {20, [](const Row &row) { return counter32(row.traffic.out.errors); }, traffic},               // ifOutErrors
    {21, [](const Row &) { return gauge(nothingQueued); }},                                        // ifOutQLen
    {22, [](const Row &) { return objectId(nothingSpecific); }},                                   // ifSpecific
};

} // namespace

SourcePointer ifTable(const IpmibInterfaceHooks &interfaces, const host::SysUpTime &upTime)
{
    return std::make_unique<host::RowSource<InterfaceRows>>(ifEntry, InterfaceRows(interfaces, upTime, ifTableColumns));
}

} // namespace ipmib::tables
