// SPDX-License-Identifier: BSD-3-Clause
// Whether the IP services run, the time since boot, and traffic counters: of the system from /proc, of a link from
// netlink, each read once for a packet of requests.
#include "core/uptime.h"
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

uint32_t IP6_GetMibStat(uint32_t, Ip6MibStat *stat)
{
    LinuxPlatform *platform = running();
    const auto *counters = platform == nullptr ? nullptr : platform->systemCounters().read();
    if (counters == nullptr) {
        return notFound;
    }
    fillIp6MibStat(counters->ip6, *stat);
    return success;
}

uint32_t IP6_GetIfStat(uint32_t if_index, uint32_t, Ip6MibStat *stat)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr || platform->links().find(if_index) == nullptr) {
        return noMore; // behind the last interface: a clean end of the walk
    }
    // A link on which the kernel runs no IPv6 has counted nothing, and must not end the walk.
    *stat = Ip6MibStat{};
    const Ip6Link *link = platform->ip6Links().read(if_index);
    if (link != nullptr && link->present) {
        fillIp6MibStat(link->counters, *stat);
    }
    return success;
}

uint32_t IP_GetMibIfStat(uint32_t if_index, IpMibIfStat *stat)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr || platform->links().find(if_index) == nullptr) {
        return noMore;
    }
    *stat = platform->ipv4Accounting().countersOf(if_index);
    return success;
}

uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat)
{
    LinuxPlatform *platform = running();
    const auto *counters = platform == nullptr ? nullptr : platform->systemCounters().read();
    if (counters == nullptr) {
        return notFound;
    }
    *stat = Icmp6MibStat{};
    stat->counter[ICMP6_STAT_IN_MSGS] = static_cast<uint32_t>(counters->icmp6.inMsgs);
    stat->counter[ICMP6_STAT_OUT_MSGS] = static_cast<uint32_t>(counters->icmp6.outMsgs);
    // The kernel's one count of errors covers bad checksums too.
    stat->counter[ICMP6_STAT_IN_ERROR_1] = static_cast<uint32_t>(counters->icmp6.inErrors);
    for (std::size_t type = 0; type < 256; ++type) {
        stat->counter[ICMP6_STAT_IN_TYPE + type] = static_cast<uint32_t>(counters->icmp6.inType[type]);
        stat->counter[ICMP6_STAT_OUT_TYPE + type] = static_cast<uint32_t>(counters->icmp6.outType[type]);
    }
    return success;
}
