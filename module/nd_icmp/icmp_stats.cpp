// SPDX-License-Identifier: BSD-3-Clause
// icmpStatsTable: the totals of ICMPv6 messages and errors, one row for IPv6.
#include "frame/described_table.h"
#include "frame/gate.h"
#include "frame/tables.h"

#include <ipmib/module.h>
#include <ipmib/platform.h>

#include <cstddef>

using namespace ipmib;

namespace
{

constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(IcmpStatsRow, ip_version)),   // icmpStatsIPVersion
    number(VT_COUNTER32, offsetof(IcmpStatsRow, in_msgs)),    // icmpStatsInMsgs
    number(VT_COUNTER32, offsetof(IcmpStatsRow, in_errors)),  // icmpStatsInErrors
    number(VT_COUNTER32, offsetof(IcmpStatsRow, out_msgs)),   // icmpStatsOutMsgs
    number(VT_COUNTER32, offsetof(IcmpStatsRow, out_errors)), // icmpStatsOutErrors
};
constexpr Table icmpStats = describedTable<tableIcmpStats, columns>;

} // namespace

std::uint32_t ip_IcmpStats_Proc(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    return serve(operation, request, reply, ip_IcmpStats_Get);
}

std::uint32_t ip_IcmpStats_Get(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const IndexPart version = readIndexPart(request, icmpStats.parameterId(0));
    if (version.value == versionIp6) {
        if (const std::uint32_t error = requireIp6(operation, reply)) {
            return error;
        }
    }
    IcmpStatsRow row{};
    const std::uint32_t result = operation == OP_GET ? ip_IcmpStats_GetByIndex(version.value, &row)
                                 : version.present   ? ip_IcmpStats_GetNextByIndex(version.value, &row)
                                                     : ip_IcmpStats_GetFirstByIndex(&row);
    return answer(icmpStats, operation, result, &row, request, reply);
}

std::uint32_t ip_IcmpStats_GetByIndex(std::uint32_t ip_version, IcmpStatsRow *row)
{
    if (ip_version != versionIp6) {
        return RC_NOT_FOUND;
    }
    Icmp6MibStat stat{};
    ICMP6_GetMibStat(&stat);
    row->ip_version = versionIp6;
    row->in_msgs = stat.counter[ICMP6_STAT_IN_MSGS];
    row->in_errors = 0;
    for (std::uint32_t error = ICMP6_STAT_IN_ERROR_1; error <= ICMP6_STAT_IN_ERROR_4; ++error) {
        row->in_errors += stat.counter[error];
    }
    row->out_msgs = stat.counter[ICMP6_STAT_OUT_MSGS];
    row->out_errors = 0; // the device keeps no such counter
    return 0;
}

std::uint32_t ip_IcmpStats_GetNextByIndex(std::uint32_t ip_version, IcmpStatsRow *row)
{
    return ip_version < versionIp6 ? ip_IcmpStats_GetByIndex(versionIp6, row) : RC_NOT_FOUND;
}

std::uint32_t ip_IcmpStats_GetFirstByIndex(IcmpStatsRow *row)
{
    return ip_IcmpStats_GetByIndex(versionIp6, row);
}
