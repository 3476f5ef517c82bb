// SPDX-License-Identifier: BSD-3-Clause
// icmpMsgStatsTable: messages of each served ICMPv6 type, one row a type.
#include "frame/described_table.h"
#include "frame/gate.h"
#include "frame/tables.h"

#include <ipmib/module.h>
#include <ipmib/platform.h>

#include <cstddef>

using namespace ipmib;

std::uint16_t g_ausIcmp6Type[256];

namespace
{

constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(IcmpMsgStatsRow, ip_version)), // icmpMsgStatsIPVersion
    number(VT_INTEGER, offsetof(IcmpMsgStatsRow, type)),       // icmpMsgStatsType
    number(VT_COUNTER32, offsetof(IcmpMsgStatsRow, in_pkts)),  // icmpMsgStatsInPkts
    number(VT_COUNTER32, offsetof(IcmpMsgStatsRow, out_pkts)), // icmpMsgStatsOutPkts
};
constexpr Table icmpMsgStats = describedTable<tableIcmpMsgStats, columns>;

constexpr std::uint16_t notServed = 255;
constexpr std::uint16_t servedTypes = 21; // also the mark behind the last type that is looked at
constexpr std::uint32_t typesLookedAt = 201;
constexpr std::uint32_t firstType = 1;

// Runs of served types; the served-type numbers count through them.
struct TypeRun {
    std::uint8_t first;
    std::uint8_t last;
};
constexpr TypeRun servedRuns[] = {
    {1, 4},     // destination unreachable, packet too big, time exceeded, parameter problem
    {128, 140}, // echo, multicast listener, router and neighbour discovery, redirect, renumbering, node information
    {143, 145}, // multicast listener report version 2, home agent address discovery
    {200, 200}, // private experimentation
};

} // namespace

std::uint32_t ip_IcmpMsgStats_Init()
{
    for (std::uint32_t type = 0; type < typesLookedAt; ++type) {
        g_ausIcmp6Type[type] = notServed;
    }
    g_ausIcmp6Type[typesLookedAt] = servedTypes;
    std::uint16_t suffix = 0;
    for (const TypeRun &run : servedRuns) {
        for (std::uint32_t type = run.first; type <= run.last; ++type) {
            g_ausIcmp6Type[type] = suffix++;
        }
    }
    return 0;
}

std::uint32_t ip_IcmpMsgStats_TypeToSuffix(std::uint32_t type, std::uint16_t *suffix)
{
    if (type >= typesLookedAt || suffix == nullptr || g_ausIcmp6Type[type] >= servedTypes) {
        return RC_NOT_FOUND;
    }
    *suffix = g_ausIcmp6Type[type];
    return 0;
}

std::uint32_t ip_IcmpMsgStats_IsExistIndex(std::uint32_t ip_version, std::uint32_t type)
{
    std::uint16_t suffix;
    const std::uint32_t result = ip_IcmpMsgStats_TypeToSuffix(type, &suffix);
    return ip_version != versionIp6 || result != 0 ? RC_NOT_FOUND : 0;
}

std::uint32_t ip_IcmpMsgStats_Proc(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    return serve(operation, request, reply, ip_IcmpMsgStats_Get);
}

std::uint32_t ip_IcmpMsgStats_Get(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const IndexPart version = readIndexPart(request, icmpMsgStats.parameterId(0));
    if (version.value > versionIp6) {
        return ERR_NO_INSTANCE; // on purpose the one error that is not set on the reply
    }
    const IndexPart type = readIndexPart(request, icmpMsgStats.parameterId(1));
    if (version.value == versionIp6) {
        if (const std::uint32_t error = requireIp6(operation, reply)) {
            return error;
        }
    }
    const bool complete = version.present && type.present;
    IcmpMsgStatsRow row{};
    const std::uint32_t result = operation == OP_GET ? ip_IcmpMsgStats_GetByIndex(version.value, type.value, &row)
                                 : complete          ? ip_IcmpMsgStats_GetNextByIndex(version.value, type.value, &row)
                                                     : ip_IcmpMsgStats_GetFirstByIndex(&row);
    return answer(icmpMsgStats, operation, result, &row, request, reply);
}

std::uint32_t ip_IcmpMsgStats_GetByIndex(std::uint32_t ip_version, std::uint32_t type, IcmpMsgStatsRow *row)
{
    if (ip_IcmpMsgStats_IsExistIndex(ip_version, type) != 0) {
        return RC_NOT_FOUND;
    }
    Icmp6MibStat stat{};
    ICMP6_GetMibStat(&stat);
    row->ip_version = versionIp6;
    row->type = type;
    row->in_pkts = stat.counter[ICMP6_STAT_IN_TYPE + type];
    row->out_pkts = stat.counter[ICMP6_STAT_OUT_TYPE + type];
    return 0;
}

std::uint32_t ip_IcmpMsgStats_GetNextByIndex(std::uint32_t ip_version, std::uint32_t type, IcmpMsgStatsRow *row)
{
    if (ip_version < versionIp6) {
        return ip_IcmpMsgStats_GetFirstByIndex(row);
    }
    if (ip_version > versionIp6 || type >= typesLookedAt) {
        return RC_NOT_FOUND;
    }
    for (std::uint32_t candidate = type + 1; candidate < typesLookedAt; ++candidate) {
        if (ip_IcmpMsgStats_IsExistIndex(versionIp6, candidate) == 0) {
            return ip_IcmpMsgStats_GetByIndex(versionIp6, candidate, row);
        }
    }
    return RC_NOT_FOUND;
}

std::uint32_t ip_IcmpMsgStats_GetFirstByIndex(IcmpMsgStatsRow *row)
{
    return ip_IcmpMsgStats_GetByIndex(versionIp6, firstType, row);
}
