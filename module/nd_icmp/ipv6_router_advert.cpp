// SPDX-License-Identifier: BSD-3-Clause
// ipv6RouterAdvertTable: the router advertisement settings of each interface.
#include "frame/described_table.h"
#include "frame/gate.h"
#include "frame/tables.h"
#include "stats/interface_walk.h"

#include <ipmib/module.h>
#include <ipmib/platform.h>

#include <cstddef>

using namespace ipmib;

namespace
{

constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(Ipv6RouterAdvertRow, if_index)),            // ipv6RouterAdvertIfIndex
    number(VT_INTEGER, offsetof(Ipv6RouterAdvertRow, send_adverts)),        // ipv6RouterAdvertSendAdverts
    number(VT_UNSIGNED32, offsetof(Ipv6RouterAdvertRow, max_interval)),     // ipv6RouterAdvertMaxInterval
    number(VT_UNSIGNED32, offsetof(Ipv6RouterAdvertRow, min_interval)),     // ipv6RouterAdvertMinInterval
    number(VT_INTEGER, offsetof(Ipv6RouterAdvertRow, managed_flag)),        // ipv6RouterAdvertManagedFlag
    number(VT_INTEGER, offsetof(Ipv6RouterAdvertRow, other_config_flag)),   // ipv6RouterAdvertOtherConfigFlag
    number(VT_UNSIGNED32, offsetof(Ipv6RouterAdvertRow, link_mtu)),         // ipv6RouterAdvertLinkMTU
    number(VT_UNSIGNED32, offsetof(Ipv6RouterAdvertRow, reachable_time)),   // ipv6RouterAdvertReachableTime
    number(VT_UNSIGNED32, offsetof(Ipv6RouterAdvertRow, retransmit_time)),  // ipv6RouterAdvertRetransmitTime
    number(VT_UNSIGNED32, offsetof(Ipv6RouterAdvertRow, cur_hop_limit)),    // ipv6RouterAdvertCurHopLimit
    number(VT_UNSIGNED32, offsetof(Ipv6RouterAdvertRow, default_lifetime)), // ipv6RouterAdvertDefaultLifetime
    number(VT_INTEGER, offsetof(Ipv6RouterAdvertRow, row_status)),          // ipv6RouterAdvertRowStatus
};
constexpr Table ipv6RouterAdvert = describedTable<tableIpv6RouterAdvert, columns>;

constexpr std::uint32_t active = 1;

std::uint32_t linkMtu(std::uint32_t ifIndex)
{
    std::uint32_t mtu = 0;
    return IP6_GetIfMTU(ifIndex, &mtu) == 0 ? mtu : 0;
}

} // namespace

std::uint32_t ip_Ipv6RouterAdvert_Proc(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    return serveIp6(operation, request, reply, ip_Ipv6RouterAdvert_Get);
}

std::uint32_t ip_Ipv6RouterAdvert_Get(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const IndexPart ifIndex = readIndexPart(request, ipv6RouterAdvert.parameterId(0));
    Ipv6RouterAdvertRow row{};
    const std::uint32_t result = operation == OP_GET ? ip_Ipv6RouterAdvert_GetByIndex(ifIndex.value, &row)
                                                     : ip_Ipv6RouterAdvert_GetNextByIndex(ifIndex.value, &row);
    return answer(ipv6RouterAdvert, operation, result, &row, request, reply);
}

std::uint32_t ip_Ipv6RouterAdvert_GetByIndex(std::uint32_t if_index, Ipv6RouterAdvertRow *row)
{
    NdIfConfigInfo info{};
    if (ND_GetIfConfigInfo(if_index, &info) != 0) {
        return RC_NOT_FOUND;
    }
    const auto has = [&info](std::uint32_t flag) { return (info.flags & flag) != 0; };
    const auto truth = [&has](std::uint32_t flag) -> std::uint32_t { return has(flag) ? 1 : 2; };

    row->if_index = if_index;
    row->send_adverts = truth(ND_FLAG_SEND_ADVERTS);
    row->max_interval = info.max_interval_s;
    row->min_interval = info.min_interval_s;
    row->managed_flag = truth(ND_FLAG_MANAGED);
    row->other_config_flag = truth(ND_FLAG_OTHER_CONFIG);
    row->link_mtu = has(ND_FLAG_NO_MTU_OPTION) ? 0 : linkMtu(if_index);
    row->reachable_time = has(ND_FLAG_REACHABLE_VALID) ? info.reachable_ms : 0;
    row->retransmit_time = has(ND_FLAG_RETRANSMIT_VALID) ? info.retransmit_ms : 0;
    row->cur_hop_limit = has(ND_FLAG_NO_HOP_LIMIT) ? 0 : ND_GetHopLimit();
    row->default_lifetime = has(ND_FLAG_LIFETIME_VALID) ? info.default_lifetime_s : 3 * info.max_interval_s;
    row->row_status = active;
    return 0;
}

std::uint32_t ip_Ipv6RouterAdvert_GetNextByIndex(std::uint32_t if_index, Ipv6RouterAdvertRow *row)
{
    return nextInterfaceRow(if_index, ip_Ipv6RouterAdvert_GetByIndex, row);
}
