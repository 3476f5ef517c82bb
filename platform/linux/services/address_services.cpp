// SPDX-License-Identifier: BSD-3-Clause
// IPv6 addresses. Not followed yet: there are none.
#include "services/service.h"

using namespace ipmib::platform;

uint32_t IP6Addr_GetLinkLocalAddr(uint32_t, LinkLocalBuffer *)
{
    return notFound;
}

uint32_t IP6Mib_GetFirstAddrInVrf(uint32_t, uint32_t, FullAddressRecord *)
{
    return noMore;
}

uint32_t IP6Mib_GetNextAddrInVrf(uint32_t, uint32_t, FullAddressRecord *)
{
    return noMore;
}

uint32_t IP6Mib_GetAddrFullInfoInVrf(uint32_t, const uint8_t *, int32_t, FullAddressRecord *)
{
    return notFound;
}

uint32_t IP6Mib_GetLinkLocalFullAddr(uint32_t, FullAddressRecord *)
{
    return notFound;
}
