// SPDX-License-Identifier: BSD-3-Clause
// IPv6 addresses: the global ones by address, and the main link-local one of each interface.
#include "addresses/address_message.h"
#include "services/service.h"

#include <linux/if_addr.h>
#include <linux/if_ether.h>

using namespace ipmib::platform;

namespace
{

// Before 5.18 the kernel did not mark the link-local addresses that it made: one with the interface's identifier is
// taken for such a one.
bool isOfTheLink(const LinuxPlatform &platform, const Ip6Address &address)
{
    const Link *link = platform.links().find(address.ifIndex);
    return link != nullptr && link->addressSize == ETH_ALEN && hasIdentifierOf(address.address, link->address);
}

uint32_t originCode(LinuxPlatform &platform, const Ip6Address &address)
{
    switch (originOf(address)) {
    case AddressOrigin::manual:
        return address.address.isLinkLocal() && isOfTheLink(platform, address) ? addressOriginLinkLayer
                                                                               : addressOriginManual;
    case AddressOrigin::leased:
        return platform.addressing().programFormed(address) ? addressOriginLinkLayer : addressOriginDhcp;
    case AddressOrigin::autoconfigured:
        return addressOriginLinkLayer;
    case AddressOrigin::temporary:
        return addressOriginRandom;
    case AddressOrigin::unknown:
        break;
    }
    return addressOriginOther;
}

// A duplicate is tentative too, for as long as it is there.
uint32_t stateCode(uint32_t flags)
{
    return (flags & IFA_F_DADFAILED) != 0    ? addressStateDuplicate
           : (flags & IFA_F_TENTATIVE) != 0  ? addressStateTentative
           : (flags & IFA_F_DEPRECATED) != 0 ? addressStateDeprecated
                                             : addressStatePreferred;
}

void fillTimes(const Uptime &uptime, uint32_t created, uint32_t changed, FullAddressRecord *record)
{
    record->created_s = uptime.at(created) / Uptime::ticksPerSecond;
    record->last_changed_s = uptime.at(changed) / Uptime::ticksPerSecond;
}

void fillUnicast(LinuxPlatform &platform, const Ip6Address &address, FullAddressRecord *record)
{
    *record = FullAddressRecord{};
    record->if_index = address.ifIndex;
    address.address.copyTo(record->address);
    record->prefix_length = address.address.isLinkLocal() ? linkLocalPrefixLength : address.length;
    record->origin = originCode(platform, address);
    record->state = stateCode(address.flags);
    fillTimes(platform.uptime(), address.created, address.changed, record);
}

void fillAnycast(LinuxPlatform &platform, const Anycast &anycast, FullAddressRecord *record)
{
    *record = FullAddressRecord{};
    record->if_index = anycast.ifIndex;
    anycast.address.copyTo(record->address);
    record->prefix_length = platform.addressing().prefixes().anycastLength(anycast.address, anycast.ifIndex);
    record->origin = addressOriginOther;
    record->flags = addressFlagAnycast;
    record->state = addressStatePreferred;
    fillTimes(platform.uptime(), anycast.created, anycast.changed, record);
}

// The next one that is shown, as long as it is in front of the limit.
const Anycast *shown(LinuxPlatform &platform, const Anycast *anycast, const Ip6Address *limit)
{
    const AnycastTable &anycasts = platform.addressing().anycasts();
    while (anycast != nullptr && (limit == nullptr || anycast->address < limit->address) && !platform.shows(*anycast)) {
        anycast = anycasts.after(anycast->address);
    }
    return anycast;
}

// One row for each address, so that of an address that is both, the unicast one counts.
uint32_t fillLower(LinuxPlatform &platform, const Ip6Address *address, const Anycast *anycast,
                   FullAddressRecord *record)
{
    if (address != nullptr && (anycast == nullptr || address->address <= anycast->address)) {
        fillUnicast(platform, *address, record);
        return success;
    }
    if (anycast != nullptr) {
        fillAnycast(platform, *anycast, record);
        return success;
    }
    return noMore;
}

// Nothing but what the version counts takes part, unless the routes say how the address was formed or the clock of its
// time stamps is ahead.
InterfaceList::Answer askLinkLocal(LinuxPlatform &platform, uint32_t ifIndex, FullAddressRecord *record)
{
    const Ip6Address *found = platform.addressing().addresses().linkLocal(ifIndex);
    if (found == nullptr) {
        return {false, true};
    }
    fillUnicast(platform, *found, record);
    return {true, originOf(*found) != AddressOrigin::leased && platform.uptime().isSettled(found->changed)};
}

} // namespace

uint32_t IP6Addr_GetLinkLocalAddr(uint32_t if_index, LinkLocalBuffer *buffer)
{
    LinuxPlatform *platform = running();
    const Ip6Address *found = platform == nullptr ? nullptr : platform->addressing().addresses().linkLocal(if_index);
    if (found == nullptr) {
        return notFound;
    }
    found->address.copyTo(buffer->bytes);
    return success;
}

uint32_t IP6Mib_GetFirstAddrInVrf(uint32_t vrf, uint32_t kind, FullAddressRecord *record)
{
    *record = FullAddressRecord{}; // :: is nobody's address
    return IP6Mib_GetNextAddrInVrf(vrf, kind, record);
}

uint32_t IP6Mib_GetNextAddrInVrf(uint32_t, uint32_t, FullAddressRecord *record)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr) {
        return noMore;
    }
    Addressing &addressing = platform->addressing();
    const PackedAddress key = PackedAddress::of(record->address);
    const Ip6Address *address = addressing.addresses().after(key);
    return fillLower(*platform, address, shown(*platform, addressing.anycasts().after(key), address), record);
}

uint32_t IP6Mib_GetAddrFullInfoInVrf(uint32_t, const uint8_t *address, int32_t, FullAddressRecord *record)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr) {
        return notFound;
    }
    Addressing &addressing = platform->addressing();
    const PackedAddress key = PackedAddress::of(address);
    const Anycast *anycast = addressing.anycasts().find(key);
    const Anycast *own = anycast != nullptr && platform->shows(*anycast) ? anycast : nullptr;
    return fillLower(*platform, addressing.addresses().find(key), own, record) == success ? success : notFound;
}

uint32_t IP6Mib_GetLinkLocalFullAddr(uint32_t if_index, FullAddressRecord *record)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr) {
        return notFound;
    }
    const auto ask = [=](FullAddressRecord *answer) { return askLinkLocal(*platform, if_index, answer); };
    const bool found = platform->links().list().linkLocal(if_index, platform->linkLocalVersion(), ask, record);
    return found ? success : notFound;
}
