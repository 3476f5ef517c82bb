// SPDX-License-Identifier: BSD-3-Clause
// IPv6 default routers.
#include "services/call.h"

#include <algorithm>

using namespace ipmib::simulated;

namespace
{

// The lifetime is what is left now, and so it was learned now.
uint32_t fillGateway(const Device &device, const Router *router, uint32_t without, GatewayRecord *record)
{
    if (router == nullptr) {
        return without;
    }
    const uint32_t left = router->lifetime.left(device.elapsedS());
    *record = GatewayRecord{};
    record->if_index = ipmib_be32(router->ifIndex);
    router->address.copyTo(record->address);
    record->flags = ipmib_be32(router->preference << ipmib::platform::gatewayPreferenceShift);
    record->lifetime_s = ipmib_be32(std::min(left, ipmib::platform::gatewayLongestLifetime));
    record->learned_at_s = ipmib_be32(device.secondsSinceBoot());
    return success;
}

std::optional<Device::RouterClass> classOf(uint32_t code)
{
    switch (code) {
    case ipmib::platform::gatewayClassGlobal:
        return Device::RouterClass::global;
    case ipmib::platform::gatewayClassLinkLocal:
        return Device::RouterClass::linkLocal;
    default:
        return std::nullopt;
    }
}

RouterKey keyOf(const GatewayKey &key)
{
    return {PackedAddress::of(key.address), ipmib_be32_get(key.if_index)};
}

uint32_t get(Service service, const GatewayKey &key, GatewayRecord *gateway)
{
    const Call call(service, ipmib_be32_get(key.if_index));
    return call ? fillGateway(call.device(), call.device().router(keyOf(key)), notFound, gateway) : call.result();
}

} // namespace

uint32_t IP6Mib_GetFirstGatewayInVrf(uint32_t, uint32_t gateway_class, GatewayRecord *gateway)
{
    const Call call(Service::IP6Mib_GetFirstGatewayInVrf);
    const auto of = classOf(gateway_class);
    if (!call || !of) {
        return call ? noMore : call.result();
    }
    return fillGateway(call.device(), call.device().firstRouter(*of), noMore, gateway);
}

uint32_t IP6Mib_GetNextGatewayInVrf(uint32_t, uint32_t gateway_class, const GatewayKey *key, GatewayRecord *gateway)
{
    const Call call(Service::IP6Mib_GetNextGatewayInVrf, ipmib_be32_get(key->if_index));
    const auto of = classOf(gateway_class);
    if (!call || !of) {
        return call ? noMore : call.result();
    }
    return fillGateway(call.device(), call.device().routerAfter(*of, keyOf(*key)), noMore, gateway);
}

uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return get(Service::IP6Mib_GetGatewayByKey, *key, gateway);
}

uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return get(Service::IP6ADDR_DRVK_GetGatewayByKey, *key, gateway);
}
