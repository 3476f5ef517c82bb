// SPDX-License-Identifier: BSD-3-Clause
// IPv6 on one interface: identifier and link-local state.
#include "services/service.h"

using namespace ipmib::platform;

uint32_t IP6Mib_GetIFID(uint32_t, uint8_t *)
{
    return notFound;
}

uint32_t IP6ADDR_DRVK_GetMainLLA(uint32_t if_index, FullAddressRecord *)
{
    Platform *platform = running();
    if (platform != nullptr) {
        platform->rowHopLimit().mainLinkLocalAsked(if_index);
    }
    return notFound;
}
