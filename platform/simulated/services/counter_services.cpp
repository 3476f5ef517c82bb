// SPDX-License-Identifier: BSD-3-Clause
// Traffic counters, of the system and of an interface.
#include "services/call.h"

using namespace ipmib::simulated;

uint32_t IP6_GetMibStat(uint32_t, Ip6MibStat *stat)
{
    const Call call(Service::IP6_GetMibStat);
    if (!call) {
        return call.result();
    }
    *stat = call.device().systemStat();
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
    *stat = Ip6MibStat{};
    interface->ip6Counters.setIn(*stat, interface->runningTime(call.device().time()));
    return success;
}

uint32_t IP_GetMibIfStat(uint32_t if_index, IpMibIfStat *stat)
{
    const Call call(Service::IP_GetMibIfStat, if_index);
    const Interface *interface = call ? call.device().find(if_index) : nullptr;
    if (interface == nullptr) {
        return call ? noMore : call.result();
    }
    *stat = IpMibIfStat{};
    interface->ip4Counters.setIn(*stat, interface->runningTime(call.device().time()));
    return success;
}

uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat)
{
    const Call call(Service::ICMP6_GetMibStat);
    if (!call) {
        return call.result();
    }
    *stat = Icmp6MibStat{};
    call.device().icmp.setIn(*stat, call.device().time());
    return success;
}
