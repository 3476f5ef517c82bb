// SPDX-License-Identifier: BSD-3-Clause
// Whether the IP services run, the time since boot, and traffic counters, of the system and of an interface.
#include "services/call.h"

using namespace ipmib::simulated;

uint32_t IP6_DaemonCheck(uint32_t)
{
    const Call call(Service::IP6_DaemonCheck);
    return call ? success : call.result();
}

uint32_t IP_DaemonCheck(uint32_t)
{
    const Call call(Service::IP_DaemonCheck);
    return call ? success : call.result();
}

uint32_t TIME_GetSystemBootTime(uint32_t *seconds, uint32_t *other)
{
    const Call call(Service::TIME_GetSystemBootTime);
    if (!call) {
        return call.result();
    }
    *seconds = call.device().secondsSinceBoot();
    *other = 0;
    return success;
}

uint32_t IP6_GetMibStat(uint32_t, Ip6MibStat *stat)
{
    const Call call(Service::IP6_GetMibStat);
    if (!call) {
        return call.result();
    }
    *stat = ip6MibStatOf(call.device().systemTraffic(IPMIB_IPV6));
    return success;
}

// An interface without IPv6 has counted nothing, and must not end the walk.
uint32_t IP6_GetIfStat(uint32_t if_index, uint32_t, Ip6MibStat *stat)
{
    const Call call(Service::IP6_GetIfStat, if_index);
    const Interface *interface = call ? call.device().find(if_index) : nullptr;
    if (interface == nullptr) {
        return call ? noMore : call.result();
    }
    *stat = ip6MibStatOf(interface->ipTraffic(IPMIB_IPV6, call.device().time()));
    return success;
}

uint32_t IP_GetMibIfStat(uint32_t if_index, IpMibIfStat *stat)
{
    const Call call(Service::IP_GetMibIfStat, if_index);
    const Interface *interface = call ? call.device().find(if_index) : nullptr;
    if (interface == nullptr) {
        return call ? noMore : call.result();
    }
    *stat = ipMibIfStatOf(interface->ipTraffic(IPMIB_IPV4, call.device().time()));
    return success;
}

uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat)
{
    const Call call(Service::ICMP6_GetMibStat);
    if (!call) {
        return call.result();
    }
    *stat = icmp6MibStatOf(call.device().icmp6.after(call.device().time()));
    return success;
}
