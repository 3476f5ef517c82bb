// SPDX-License-Identifier: BSD-3-Clause
// The columns of the interface tables. Those that the standard has deprecated and nobody counts are left out.

#include "interfaces/columns.h"

#include "values.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <string_view>

namespace ipmib::agent
{

namespace
{

using host::Value;
using host::ValueType;
using Row = InterfaceRow;

Value gauge(std::uint64_t number)
{
    return {ValueType::unsigned32, std::min<std::uint64_t>(number, UINT32_MAX), {}, {}};
}

Value counter32(std::uint64_t number)
{
    return {ValueType::counter32, number & UINT32_MAX, {}, {}};
}

Value counter64(std::uint64_t number)
{
    return {ValueType::counter64, number, {}, {}};
}

Value text(const char *string)
{
    return octets(string, std::strlen(string));
}

Value truth(bool condition)
{
    constexpr std::uint64_t yes = 1;
    constexpr std::uint64_t no = 2;
    return integer(condition ? yes : no);
}

std::uint64_t nonUnicast(const IpmibTraffic &way)
{
    return way.multicast + way.broadcast;
}

// On the monotonic clock, by which the library measures sysUpTime. It tells the start by the wall clock alone.
std::uint64_t startOfUptime()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const std::uint64_t uptimeMs = netsnmp_get_agent_uptime() * 10;
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000 + static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000 -
           uptimeMs;
}

constexpr std::uint64_t perMegabit = 1'000'000;
constexpr std::uint64_t trapsDisabled = 2; // none are sent

constexpr InterfaceColumn ifColumns[] = {
    {1, false, [](const Row &row) { return integer(row.interface.if_index); }}, // ifIndex
    {2, false, [](const Row &row) { return text(row.interface.name); }},        // ifDescr
    {3, false, [](const Row &row) { return integer(row.interface.type); }},     // ifType
    {4, false, [](const Row &row) { return integer(row.interface.mtu); }},      // ifMtu
    {5, false, [](const Row &row) { return gauge(row.interface.speed); }},      // ifSpeed
    {6, false,                                                                  // ifPhysAddress
     [](const Row &row) { return octets(row.interface.address, row.interface.address_size); }},
    {7, false, [](const Row &row) { return integer(row.interface.admin_status); }},         // ifAdminStatus
    {8, false, [](const Row &row) { return integer(row.interface.oper_status); }},          // ifOperStatus
    {9, false, [](const Row &row) { return uptimeAt(row.interface.changed_ms); }},          // ifLastChange
    {10, true, [](const Row &row) { return counter32(row.traffic.in.octets); }},            // ifInOctets
    {11, true, [](const Row &row) { return counter32(row.traffic.in.unicast); }},           // ifInUcastPkts
    {12, true, [](const Row &row) { return counter32(nonUnicast(row.traffic.in)); }},       // ifInNUcastPkts
    {13, true, [](const Row &row) { return counter32(row.traffic.in.discards); }},          // ifInDiscards
    {14, true, [](const Row &row) { return counter32(row.traffic.in.errors); }},            // ifInErrors
    {15, true, [](const Row &row) { return counter32(row.traffic.in_unknown_protocols); }}, // ifInUnknownProtos
    {16, true, [](const Row &row) { return counter32(row.traffic.out.octets); }},           // ifOutOctets
    {17, true, [](const Row &row) { return counter32(row.traffic.out.unicast); }},          // ifOutUcastPkts
    {18, true, [](const Row &row) { return counter32(nonUnicast(row.traffic.out)); }},      // ifOutNUcastPkts
    {19, true, [](const Row &row) { return counter32(row.traffic.out.discards); }},         // ifOutDiscards
    {20, true, [](const Row &row) { return counter32(row.traffic.out.errors); }},           // ifOutErrors
};

constexpr InterfaceColumn ifXColumns[] = {
    {1, false, [](const Row &row) { return text(row.interface.name); }},                 // ifName
    {2, true, [](const Row &row) { return counter32(row.traffic.in.multicast); }},       // ifInMulticastPkts
    {3, true, [](const Row &row) { return counter32(row.traffic.in.broadcast); }},       // ifInBroadcastPkts
    {4, true, [](const Row &row) { return counter32(row.traffic.out.multicast); }},      // ifOutMulticastPkts
    {5, true, [](const Row &row) { return counter32(row.traffic.out.broadcast); }},      // ifOutBroadcastPkts
    {6, true, [](const Row &row) { return counter64(row.traffic.in.octets); }},          // ifHCInOctets
    {7, true, [](const Row &row) { return counter64(row.traffic.in.unicast); }},         // ifHCInUcastPkts
    {8, true, [](const Row &row) { return counter64(row.traffic.in.multicast); }},       // ifHCInMulticastPkts
    {9, true, [](const Row &row) { return counter64(row.traffic.in.broadcast); }},       // ifHCInBroadcastPkts
    {10, true, [](const Row &row) { return counter64(row.traffic.out.octets); }},        // ifHCOutOctets
    {11, true, [](const Row &row) { return counter64(row.traffic.out.unicast); }},       // ifHCOutUcastPkts
    {12, true, [](const Row &row) { return counter64(row.traffic.out.multicast); }},     // ifHCOutMulticastPkts
    {13, true, [](const Row &row) { return counter64(row.traffic.out.broadcast); }},     // ifHCOutBroadcastPkts
    {14, false, [](const Row &) { return integer(trapsDisabled); }},                     // ifLinkUpDownTrapEnable
    {15, false, [](const Row &row) { return gauge(row.interface.speed / perMegabit); }}, // ifHighSpeed
    {16, false, [](const Row &row) { return truth(row.interface.promiscuous != 0); }},   // ifPromiscuousMode
    {17, false, [](const Row &row) { return truth(row.interface.connector != 0); }},     // ifConnectorPresent
    {18, false, [](const Row &row) { return text(row.interface.alias); }},               // ifAlias
    {19, false, [](const Row &) { return uptimeAt(0); }}, // ifCounterDiscontinuityTime: a new interface has a new index
};

} // namespace

const std::span<const InterfaceColumn> ifTableColumns = ifColumns;
const std::span<const InterfaceColumn> ifXTableColumns = ifXColumns;

Value uptimeAt(std::uint64_t milliseconds)
{
    static const std::uint64_t startMs = startOfUptime();
    const std::uint64_t uptimeMs = milliseconds > startMs ? milliseconds - startMs : 0;
    return {ValueType::timeTicks, uptimeMs / 10 & UINT32_MAX, {}, {}};
}

} // namespace ipmib::agent
