// SPDX-License-Identifier: BSD-3-Clause
// IPv6 on one interface: its identifier, its main link-local address, the kernel's timers and MTU, what routers are
// told, and the hop limit.
#include "advertisements/config_info.h"
#include "links/ip6_link.h"
#include "services/service.h"

#include <algorithm>

using namespace ipmib::platform;

uint32_t IP6Mib_GetIFID(uint32_t if_index, uint8_t *identifier)
{
    LinuxPlatform *platform = running();
    const Ip6Link *ip6 = platform == nullptr ? nullptr : platform->ip6Link(if_index);
    if (ip6 == nullptr) {
        return notFound;
    }
    std::uint8_t bytes[16];
    const Ip6Address *onLink = platform->addressing().addresses().usableOnLink(if_index);
    if (onLink != nullptr) {
        onLink->address.copyTo(bytes);
    }
    const InterfaceIdentifier found =
        interfaceIdentifier(*platform->links().find(if_index), *ip6, onLink != nullptr ? bytes : nullptr);
    std::copy(found.begin(), found.end(), identifier);
    return success;
}

uint32_t IP6ADDR_DRVK_GetMainLLA(uint32_t if_index, FullAddressRecord *address)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr) {
        return notFound;
    }
    platform->rowHopLimit().mainLinkLocalAsked(if_index);
    const Ip6Address *onLink = platform->addressing().addresses().usableOnLink(if_index);
    if (onLink == nullptr) {
        return notFound;
    }
    *address = FullAddressRecord{};
    address->if_index = if_index;
    onLink->address.copyTo(address->address);
    return success;
}

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
