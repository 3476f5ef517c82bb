// SPDX-License-Identifier: BSD-3-Clause
// IPv6 default routers. Not followed yet: there are none.
#include "services/service.h"

using namespace ipmib::platform;

uint32_t IP6Mib_GetFirstGatewayInVrf(uint32_t, uint32_t, GatewayRecord *)
{
    return noMore;
}

uint32_t IP6Mib_GetNextGatewayInVrf(uint32_t, uint32_t, const GatewayKey *, GatewayRecord *)
{
    return noMore;
}

uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *, GatewayRecord *)
{
    return notFound;
}

uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *, GatewayRecord *)
{
    return notFound;
}
