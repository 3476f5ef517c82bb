// SPDX-License-Identifier: BSD-3-Clause
// Neighbour discovery of one interface: the kernel's timers, what routers are told, and the hop limit.
#include "advertisements/config_info.h"
#include "services/service.h"

using namespace ipmib::platform;

uint32_t ND_GetIfConfigInfo(uint32_t if_index, NdIfConfigInfo *info)
{
    LinuxPlatform *platform = running();
    const Ip6Link *ip6 = platform == nullptr ? nullptr : platform->ip6Link(if_index);
    if (ip6 == nullptr) {
        return notFound;
    }
    const Link &link = *platform->links().find(if_index);
    const RadvdInterface *radvd = platform->radvd().find(link.name);
    *info = configInfo(link, *ip6, radvd);
    const bool advertised = radvd != nullptr && radvd->hopLimit != 0;
    platform->rowHopLimit().configAsked(if_index, advertised ? std::optional(radvd->hopLimit) : std::nullopt);
    return success;
}

// What a row of router advertisements shows as the link's MTU: the one of the MTU option.
uint32_t IP6_GetIfMTU(uint32_t if_index, uint32_t *mtu)
{
    LinuxPlatform *platform = running();
    const Ip6Link *ip6 = platform == nullptr ? nullptr : platform->ip6Link(if_index);
    if (ip6 == nullptr) {
        return notFound;
    }
    const RadvdInterface *radvd = platform->radvd().find(platform->links().find(if_index)->name);
    *mtu = radvd != nullptr && radvd->linkMtu != 0 ? radvd->linkMtu : ip6->mtu;
    return success;
}

uint32_t ND_GetHopLimit(void)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr) {
        return 0;
    }
    const auto advertised = platform->rowHopLimit().take();
    return advertised ? *advertised : platform->hopLimit();
}
