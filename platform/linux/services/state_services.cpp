// SPDX-License-Identifier: BSD-3-Clause
// Whether the IP services run, and the time since boot.
#include "core/boot_time.h"
#include "services/service.h"

using namespace ipmib::platform;

uint32_t IP6_DaemonCheck(uint32_t)
{
    LinuxPlatform *platform = running();
    return platform != nullptr && platform->systemCounters().available() ? success : notFound;
}

// No Linux with network namespaces is without IPv4.
uint32_t IP_DaemonCheck(uint32_t)
{
    return running() != nullptr ? success : notFound;
}

uint32_t TIME_GetSystemBootTime(uint32_t *seconds, uint32_t *other)
{
    const LinuxPlatform *platform = running();
    *seconds = platform != nullptr ? platform->now() : secondsSinceBoot();
    *other = 0;
    return success;
}
