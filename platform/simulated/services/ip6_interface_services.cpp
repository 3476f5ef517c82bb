// SPDX-License-Identifier: BSD-3-Clause
// IPv6 on one interface: identifier, link-local state, timers and what routers are told.
#include "services/call.h"

#include <endian.h>

#include <cstring>

using namespace ipmib::simulated;

namespace
{

constexpr uint32_t standardMinIntervalS = 198; // 0.33 of standardMaxIntervalS

bool isUsable(const Address &address)
{
    return address.state != ipmib::platform::addressStateTentative &&
           address.state != ipmib::platform::addressStateDuplicate;
}

} // namespace

uint32_t IP6Mib_GetIFID(uint32_t if_index, uint8_t *identifier)
{
    const Call call(Service::IP6Mib_GetIFID, if_index);
    const Interface *interface = call ? call.device().withIp6(if_index) : nullptr;
    if (interface == nullptr) {
        return call ? notFound : call.result();
    }
    const uint64_t number = htobe64(interface->linkLocal ? interface->linkLocal->address.low
                                    : interface->mac     ? interfaceIdentifier(*interface->mac)
                                                         : 0);
    std::memcpy(identifier, &number, sizeof number);
    return success;
}

uint32_t IP6ADDR_DRVK_GetMainLLA(uint32_t if_index, FullAddressRecord *address)
{
    const Call call(Service::IP6ADDR_DRVK_GetMainLLA, if_index);
    if (!call) {
        return call.result();
    }
    call.rowHopLimit().mainLinkLocalAsked(if_index);
    const Address *linkLocal = call.device().linkLocal(if_index);
    if (linkLocal == nullptr || !isUsable(*linkLocal)) {
        return notFound;
    }
    *address = FullAddressRecord{};
    address->if_index = if_index;
    linkLocal->address.copyTo(address->address);
    return success;
}

uint32_t ND_GetIfConfigInfo(uint32_t if_index, NdIfConfigInfo *info)
{
    const Call call(Service::ND_GetIfConfigInfo, if_index);
    const Interface *interface = call ? call.device().withIp6(if_index) : nullptr;
    if (interface == nullptr) {
        return call ? notFound : call.result();
    }
    *info = NdIfConfigInfo{};
    if (interface->advertisement) {
        *info = interface->advertisement->info;
    } else {
        info->max_interval_s = standardMaxIntervalS;
        info->min_interval_s = standardMinIntervalS;
        info->flags = ND_FLAG_NO_MTU_OPTION;
    }
    info->reachable_ms = interface->reachableMs;
    info->retransmit_ms = interface->retransmitMs;
    call.rowHopLimit().configAsked(if_index,
                                   interface->advertisement ? interface->advertisement->hopLimit : std::nullopt);
    return success;
}

// What a row of router advertisements shows as the link's MTU: the one of the MTU option.
uint32_t IP6_GetIfMTU(uint32_t if_index, uint32_t *mtu)
{
    const Call call(Service::IP6_GetIfMTU, if_index);
    const Interface *interface = call ? call.device().withIp6(if_index) : nullptr;
    if (interface == nullptr) {
        return call ? notFound : call.result();
    }
    const bool advertised = interface->advertisement && interface->advertisement->mtu != 0;
    *mtu = advertised ? interface->advertisement->mtu : interface->mtu;
    return success;
}

uint32_t ND_GetHopLimit(void)
{
    const Call call(Service::ND_GetHopLimit);
    return call ? call.rowHopLimit().take().value_or(call.device().hopLimit) : call.result();
}
