// SPDX-License-Identifier: BSD-3-Clause
// IPv6 on one interface: timers, MTU, identifier, link-local state; and the hop limit of the node.
#include "services/service.h"

using namespace ipmib::platform;

namespace
{

// The kernel's IPv6 settings of a link; null when it runs no IPv6 there.
const Ip6Link *ip6Link(uint32_t ifIndex)
{
    Platform *platform = running();
    if (platform == nullptr || platform->links().find(ifIndex) == nullptr) {
        return nullptr;
    }
    const Ip6Link *link = platform->ip6Links().read(ifIndex);
    return link != nullptr && link->present ? link : nullptr;
}

} // namespace

uint32_t ND_GetHopLimit(void)
{
    Platform *platform = running();
    return platform == nullptr ? 0 : platform->hopLimit();
}

uint32_t ND_GetIfConfigInfo(uint32_t if_index, NdIfConfigInfo *info)
{
    const Ip6Link *link = ip6Link(if_index);
    if (link == nullptr) {
        return notFound;
    }
    *info = NdIfConfigInfo{};
    info->reachable_ms = link->reachableMs;
    info->retransmit_ms = link->retransmitMs;
    return success;
}

uint32_t IP6_GetIfMTU(uint32_t if_index, uint32_t *mtu)
{
    const Ip6Link *link = ip6Link(if_index);
    if (link == nullptr) {
        return notFound;
    }
    *mtu = link->mtu;
    return success;
}

uint32_t IP6Mib_GetIFID(uint32_t, uint8_t *)
{
    return notFound;
}

uint32_t IP6ADDR_DRVK_GetMainLLA(uint32_t, FullAddressRecord *)
{
    return notFound;
}
