// SPDX-License-Identifier: BSD-3-Clause
// IPv6 default routers.
#include "services/service.h"

#include <algorithm>

using namespace ipmib::platform;

namespace
{

// The lifetime is what is left now, and so it was learned now.
uint32_t fillGateway(const LinuxPlatform &platform, const Router *router, GatewayRecord *record)
{
    if (router == nullptr) {
        return noMore;
    }
    const uint32_t now = platform.now();
    *record = GatewayRecord{};
    record->if_index = ipmib_be32(router->ifIndex);
    router->address.copyTo(record->address);
    record->flags = ipmib_be32(static_cast<uint32_t>(router->preference & 3) << gatewayPreferenceShift);
    record->lifetime_s = ipmib_be32(std::min(router->until.left(now), gatewayLongestLifetime));
    record->learned_at_s = ipmib_be32(now);
    return success;
}

// False for a class that does not exist.
bool readClass(uint32_t code, RouterList::Class &of)
{
    of = code == gatewayClassLinkLocal ? RouterList::Class::linkLocal : RouterList::Class::global;
    return code == gatewayClassLinkLocal || code == gatewayClassGlobal;
}

uint32_t get(const GatewayKey *key, GatewayRecord *gateway)
{
    LinuxPlatform *platform = running();
    if (platform == nullptr) {
        return notFound;
    }
    const Router *router =
        platform->addressing().refreshedRouters().find(PackedAddress::of(key->address), ipmib_be32_get(key->if_index));
    return fillGateway(*platform, router, gateway) == success ? success : notFound;
}

} // namespace

uint32_t IP6Mib_GetFirstGatewayInVrf(uint32_t, uint32_t gateway_class, GatewayRecord *gateway)
{
    LinuxPlatform *platform = running();
    RouterList::Class of;
    if (platform == nullptr || !readClass(gateway_class, of)) {
        return noMore;
    }
    return fillGateway(*platform, platform->addressing().refreshedRouters().first(of), gateway);
}

uint32_t IP6Mib_GetNextGatewayInVrf(uint32_t, uint32_t gateway_class, const GatewayKey *key, GatewayRecord *gateway)
{
    LinuxPlatform *platform = running();
    RouterList::Class of;
    if (platform == nullptr || !readClass(gateway_class, of)) {
        return noMore;
    }
    const Router *router = platform->addressing().refreshedRouters().after(of, PackedAddress::of(key->address),
                                                                           ipmib_be32_get(key->if_index));
    return fillGateway(*platform, router, gateway);
}

uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return get(key, gateway);
}

uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return get(key, gateway);
}
