// SPDX-License-Identifier: BSD-3-Clause
// IPv6 addresses: the global ones by address, and the link-local one of each interface.
#include "services/call.h"

using namespace ipmib::simulated;
using ipmib::platform::InterfaceList;

namespace
{

uint32_t fillAddress(const Device &device, const Address *address, uint32_t without, FullAddressRecord *record)
{
    if (address == nullptr) {
        return without;
    }
    *record = FullAddressRecord{};
    record->if_index = address->ifIndex;
    address->address.copyTo(record->address);
    record->prefix_length = address->length;
    record->origin = address->origin;
    record->flags = address->anycast ? ipmib::platform::addressFlagAnycast : 0;
    record->state = address->state;
    record->created_s = device.uptimeAtSecond(address->createdS) / ticksPerSecond;
    record->last_changed_s = device.uptimeAtSecond(address->changedS) / ticksPerSecond;
    return success;
}

} // namespace

uint32_t IP6Addr_GetLinkLocalAddr(uint32_t if_index, LinkLocalBuffer *buffer)
{
    const Call call(Service::IP6Addr_GetLinkLocalAddr, if_index);
    const Address *found = call ? call.device().linkLocal(if_index) : nullptr;
    if (found == nullptr) {
        return call ? notFound : call.result();
    }
    found->address.copyTo(buffer->bytes);
    return success;
}

uint32_t IP6Mib_GetFirstAddrInVrf(uint32_t, uint32_t, FullAddressRecord *record)
{
    const Call call(Service::IP6Mib_GetFirstAddrInVrf);
    // :: is nobody's address.
    return call ? fillAddress(call.device(), call.device().addressAfter(PackedAddress{}), noMore, record)
                : call.result();
}

uint32_t IP6Mib_GetNextAddrInVrf(uint32_t, uint32_t, FullAddressRecord *record)
{
    const Call call(Service::IP6Mib_GetNextAddrInVrf);
    return call ? fillAddress(call.device(), call.device().addressAfter(PackedAddress::of(record->address)), noMore,
                              record)
                : call.result();
}

uint32_t IP6Mib_GetAddrFullInfoInVrf(uint32_t, const uint8_t *address, int32_t, FullAddressRecord *record)
{
    const Call call(Service::IP6Mib_GetAddrFullInfoInVrf);
    return call ? fillAddress(call.device(), call.device().address(PackedAddress::of(address)), notFound, record)
                : call.result();
}

uint32_t IP6Mib_GetLinkLocalFullAddr(uint32_t if_index, FullAddressRecord *record)
{
    const Call call(Service::IP6Mib_GetLinkLocalFullAddr, if_index);
    if (!call) {
        return call.result();
    }
    const Device &device = call.device();
    const auto ask = [&device, if_index](FullAddressRecord *answer) {
        const Interface *interface = device.find(if_index);
        const Address *address = device.linkLocal(if_index);
        const bool isSteady = interface != nullptr && interface->outages.never();
        const bool isPast = address == nullptr || address->changedS <= device.secondsSinceBoot();
        return InterfaceList::Answer{fillAddress(device, address, notFound, answer) == success, isSteady && isPast};
    };
    return device.list().linkLocal(if_index, device.uptimeVersion(), ask, record) ? success : notFound;
}
