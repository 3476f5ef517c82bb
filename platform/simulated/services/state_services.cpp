// SPDX-License-Identifier: BSD-3-Clause
// Whether the IP services run, and the time since boot.
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
