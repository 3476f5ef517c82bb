// SPDX-License-Identifier: BSD-3-Clause
// Scripted services: traffic counters, IPv6 interface settings and time.
#include "state.h"

using namespace ipmib::scripted;

uint32_t IP6_GetMibStat(uint32_t what, Ip6MibStat *stat)
{
    note([&] { return "IP6_GetMibStat(" + number(what) + ")"; });
    expectCleared("IP6_GetMibStat", stat, sizeof *stat);
    return answer("IP6_GetMibStat", world().systemStat ? &*world().systemStat : nullptr, stat);
}

uint32_t IP6_GetIfStat(uint32_t if_index, uint32_t family, Ip6MibStat *stat)
{
    note([&] { return "IP6_GetIfStat(" + number(if_index) + ", " + number(family) + ")"; });
    expectCleared("IP6_GetIfStat", stat, sizeof *stat);
    return answer("IP6_GetIfStat", find(world().ipv6Stat, if_index), stat);
}

uint32_t IP_GetMibIfStat(uint32_t if_index, IpMibIfStat *stat)
{
    note([&] { return "IP_GetMibIfStat(" + number(if_index) + ")"; });
    expectCleared("IP_GetMibIfStat", stat, sizeof *stat);
    return answer("IP_GetMibIfStat", find(world().ipv4Stat, if_index), stat);
}

uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat)
{
    note([] { return "ICMP6_GetMibStat()"; });
    expectCleared("ICMP6_GetMibStat", stat, sizeof *stat);
    if (scriptedFailure("ICMP6_GetMibStat") == 0) {
        *stat = world().icmpStat;
    }
    return notExamined;
}

uint32_t ND_GetHopLimit(void)
{
    note([] { return "ND_GetHopLimit()"; });
    return world().hopLimit;
}

uint32_t ND_GetIfConfigInfo(uint32_t if_index, NdIfConfigInfo *info)
{
    note([&] { return "ND_GetIfConfigInfo(" + number(if_index) + ")"; });
    expectCleared("ND_GetIfConfigInfo", info, sizeof *info);
    return answer("ND_GetIfConfigInfo", find(world().ndConfig, if_index), info);
}

uint32_t IP6Mib_GetIFID(uint32_t if_index, uint8_t *identifier)
{
    note([&] { return "IP6Mib_GetIFID(" + number(if_index) + ")"; });
    using Identifier = std::array<std::uint8_t, 8>;
    expectCleared("IP6Mib_GetIFID", identifier, sizeof(Identifier));
    Identifier filled;
    const std::uint32_t result = answer("IP6Mib_GetIFID", find(world().identifiers, if_index), &filled);
    std::memcpy(identifier, filled.data(), filled.size());
    return result;
}

uint32_t IP6ADDR_DRVK_GetMainLLA(uint32_t if_index, FullAddressRecord *address)
{
    note([&] { return "IP6ADDR_DRVK_GetMainLLA(" + number(if_index) + ")"; });
    expectCleared("IP6ADDR_DRVK_GetMainLLA", address, sizeof *address);
    scribble(address); // only the result counts
    return world().mainLinkLocal.count(if_index) != 0 ? 0 : World::nothingThere;
}

uint32_t IP6_GetIfMTU(uint32_t if_index, uint32_t *mtu)
{
    note([&] { return "IP6_GetIfMTU(" + number(if_index) + ")"; });
    expectCleared("IP6_GetIfMTU", mtu, sizeof *mtu);
    return answer("IP6_GetIfMTU", find(world().mtu, if_index), mtu);
}

uint32_t TIME_GetSystemBootTime(uint32_t *seconds, uint32_t *other)
{
    note([] { return "TIME_GetSystemBootTime()"; });
    expectCleared("TIME_GetSystemBootTime", seconds, sizeof *seconds);
    expectCleared("TIME_GetSystemBootTime", other, sizeof *other);
    *seconds = world().secondsSinceBoot;
    *other = 0x07E57;
    return notExamined;
}
