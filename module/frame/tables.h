// SPDX-License-Identifier: BSD-3-Clause
// The tables by their ids, and the entries of those whose handlers the library does not export.
#pragma once

#include <ipmib/message.h>

#include <cstdint>

namespace ipmib
{

// Table ids, the TT of every parameter id 0x0372TTCC.
enum TableId : std::uint32_t {
    tableIpv6Scalars = 1,
    tableIpv6Interface = 2,
    tableIpSystemStats = 3,
    tableIpIfStats = 4,
    tableIpAddressPrefix = 5,
    tableIpAddress = 6,
    tableIpNetToPhysical = 7,
    tableIpDefaultRouter = 8,
    tableIpv6RouterAdvert = 9,
    tableIcmpStats = 10,
    tableIcmpMsgStats = 11
};

// IP versions, the first index of the statistics tables.
inline constexpr std::uint32_t versionIp4 = 1;
inline constexpr std::uint32_t versionIp6 = 2;

// Handlers of the tables that have no exported family; each is called behind its gate.
std::uint32_t ip_Ipv6Scalars_Get(std::uint32_t operation, MorRequest *request, MorReply *reply);
std::uint32_t ip_Ipv6Interface_Get(std::uint32_t operation, MorRequest *request, MorReply *reply);
std::uint32_t ip_IpSystemStats_Get(std::uint32_t operation, MorRequest *request, MorReply *reply);
std::uint32_t ip_IpIfStats_Get(std::uint32_t operation, MorRequest *request, MorReply *reply);
std::uint32_t ip_AddressPrefix_Proc(std::uint32_t operation, MorRequest *request, MorReply *reply);
std::uint32_t ip_Address_Proc(std::uint32_t operation, MorRequest *request, MorReply *reply);
std::uint32_t ip_DefaultRouter_Get(std::uint32_t operation, MorRequest *request, MorReply *reply);

} // namespace ipmib
