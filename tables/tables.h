// SPDX-License-Identifier: BSD-3-Clause
// The product's own tables, each in a file of its own. None is there when the platform does not say what it is made of.
// Hooks and clock outlive them.
#pragma once

#include "host/source.h"
#include "host/sys_up_time.h"

#include <ipmib/platform_hooks.h>

#include <memory>
#include <vector>

namespace ipmib::tables
{

using SourcePointer = std::unique_ptr<host::Source>;

// IF-MIB
SourcePointer interfaceScalars(const IpmibInterfaceHooks &interfaces); // ifNumber
SourcePointer ifTable(const IpmibInterfaceHooks &interfaces, const host::SysUpTime &upTime);
// `notified`: whether links that go up and down are told of.
SourcePointer ifXTable(const IpmibInterfaceHooks &interfaces, const host::SysUpTime &upTime, const bool &notified);
SourcePointer ifTableLastChange(const IpmibInterfaceHooks &interfaces, const host::SysUpTime &upTime);
SourcePointer ifStackTable(const IpmibIpHooks &ip);
SourcePointer ifStackLastChange(const IpmibIpHooks &ip);
SourcePointer ifRcvAddressTable(const IpmibIpHooks &ip);

// IP-MIB: tables of their own, and rows and columns of those that modules have
SourcePointer ipAddrTable(const IpmibIpv4Hooks &ipv4);
SourcePointer ipNetToMediaTable(const IpmibIpv4Hooks &ipv4);
std::vector<SourcePointer> ipInterfaceTables(const IpmibIpHooks &ip); // ipv4InterfaceTable, ipv6ScopeZoneIndexTable
std::vector<SourcePointer> ipSystemStatsTable(const IpmibIpHooks &ip);
std::vector<SourcePointer> ipIfStatsTable(const IpmibIpHooks &ip, const IpmibInterfaceHooks &interfaces);
SourcePointer ipAddressPrefixTable(const IpmibIpHooks &ip);
SourcePointer ipAddressTable(const IpmibIpHooks &ip);
SourcePointer ipNetToPhysicalTable(const IpmibIpHooks &ip);
SourcePointer ipDefaultRouterTable(const IpmibIpHooks &ip);
std::vector<SourcePointer> icmpTables(const IpmibIpHooks &ip); // icmpStatsTable, icmpMsgStatsTable

// IP-FORWARD-MIB
SourcePointer forwardingScalars(const IpmibRouteHooks &routes); // ipCidrRouteNumber, inetCidrRouteNumber and -Discards
SourcePointer inetCidrRouteTable(const IpmibRouteHooks &routes);
SourcePointer ipCidrRouteTable(const IpmibRouteHooks &routes);
SourcePointer ipRouteTable(const IpmibRouteHooks &routes);

// TCP-MIB, UDP-MIB
std::vector<SourcePointer> connectionTables(const IpmibConnectionHooks &connections); // for both versions of IP
SourcePointer tcpConnTable(const IpmibConnectionHooks &connections);
SourcePointer udpTable(const IpmibConnectionHooks &connections);

// Groups of scalars
SourcePointer systemGroup(const IpmibPlatformHooks &platform, const host::SysUpTime &upTime);
std::vector<SourcePointer> ipScalars(const IpmibIpHooks &ip);
SourcePointer icmpScalars(const IpmibIpHooks &ip);
SourcePointer tcpScalars(const IpmibIpHooks &ip);
SourcePointer udpScalars(const IpmibIpHooks &ip);

} // namespace ipmib::tables
