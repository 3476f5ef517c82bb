// SPDX-License-Identifier: BSD-3-Clause
// The module's one entry for requests: finds the table, and which gate and service check stand before it.
#include "frame/gate.h"
#include "frame/tables.h"

#include <ipmib/module.h>

using namespace ipmib;

std::uint32_t IP_ConfigCallBack(MorRequest *request, MorReply *reply)
{
    const std::uint32_t table = MOR_GetTableId(request);
    const std::uint32_t operation = MOR_GetMsgOpType(request);
    switch (table) {
    case tableIpv6Scalars:
        return serveScalars(operation, request, reply, ip_Ipv6Scalars_Get);
    case tableIpv6Interface:
        return serveIp6(operation, request, reply, ip_Ipv6Interface_Get);
    case tableIpSystemStats:
        return serve(operation, request, reply, ip_IpSystemStats_Get);
    case tableIpIfStats:
        return serve(operation, request, reply, ip_IpIfStats_Get);
    case tableIpAddressPrefix:
        return serveIp6(operation, request, reply, ip_AddressPrefix_Proc);
    case tableIpAddress:
        return serveIp6(operation, request, reply, ip_Address_Proc);
    case tableIpNetToPhysical:
        return ip_IpNetToPhysical_Proc(operation, request, reply);
    case tableIpDefaultRouter:
        return serveIp6(operation, request, reply, ip_DefaultRouter_Get);
    case tableIpv6RouterAdvert:
        return ip_Ipv6RouterAdvert_Proc(operation, request, reply);
    case tableIcmpStats:
        return ip_IcmpStats_Proc(operation, request, reply);
    case tableIcmpMsgStats:
        return ip_IcmpMsgStats_Proc(operation, request, reply);
    default:
        return refuse(reply, ERR_TABLE_UNKNOWN);
    }
}
