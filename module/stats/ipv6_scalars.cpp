// SPDX-License-Identifier: BSD-3-Clause
// The two IPv6 scalars, ipv6IpForwarding and ipv6IpDefaultHopLimit.
#include "frame/gate.h"
#include "frame/tables.h"
#include "frame/walk.h"

#include <ipmib/platform.h>

namespace ipmib
{

// Each occurrence is read afresh: there is no row that one request would answer from.
std::uint32_t ip_Ipv6Scalars_Get(std::uint32_t, MorRequest *request, MorReply *reply)
{
    constexpr std::uint32_t forwarding = 1; // the device is a router
    for (Parameters parameters(request); parameters; parameters.next()) {
        std::uint32_t value;
        if (parameters.id() == ip_ParamId(tableIpv6Scalars, 1)) {
            value = forwarding; // ipv6IpForwarding
        } else if (parameters.id() == ip_ParamId(tableIpv6Scalars, 2)) {
            value = ND_GetHopLimit(); // ipv6IpDefaultHopLimit
        } else {
            return refuse(reply, ERR_BAD_PARAM, parameters.position());
        }
        MOR_AppendPara2Msg(reply, 0, parameters.id(), VT_INTEGER, value, sizeof value);
    }
    return 0;
}

} // namespace ipmib
