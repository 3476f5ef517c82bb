// SPDX-License-Identifier: BSD-3-Clause
// IPv6 on one interface: identifier and link-local state.
#include "links/interface_identifier.h"
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
