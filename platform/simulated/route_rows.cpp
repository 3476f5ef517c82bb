// SPDX-License-Identifier: BSD-3-Clause
// A simulated device's routes as platform_routes.h has them.
#include "route_rows.h"

#include "core/log.h"

#include <algorithm>

namespace ipmib::simulated
{

void RouteRows::newDevice()
{
    device_.routes.cut(limit_);
    if (discards() != 0) {
        platform::logWarning(
            "routes: there are more than the %llu rows that the configuration allows; the rest is left out",
            static_cast<unsigned long long>(limit_));
    }
}

bool RouteRows::isThere(std::uint32_t version, std::uint32_t ifIndex) const
{
    if ((version == IPMIB_IPV6 ? device_.ip6Down : device_.ip4Down).covers(device_.time())) {
        return false;
    }
    const Interface *interface = device_.find(ifIndex);
    return ifIndex == 0 || (interface != nullptr && interface->runs(device_.time()));
}

bool RouteRows::isThere(Routes::Place place) const
{
    return isThere(device_.routes.version(place), device_.routes.way(place).route.if_index);
}

bool RouteRows::fillRow(Routes::Place place, IpmibRoute &row) const
{
    device_.routes.fillRoute(place, row);
    const std::uint32_t changed = device_.routes.way(place).changedS;
    row.age_s = device_.secondsSinceBoot() - std::min(changed, device_.secondsSinceBoot());
    return true;
}

std::uint64_t RouteRows::count(std::uint32_t version) const
{
    std::uint64_t sum = 0;
    for (const auto &[ifIndex, rows] : device_.routes.counts(version)) {
        sum += isThere(version, ifIndex) ? rows : 0;
    }
    return sum;
}

bool RouteRows::find(const IpmibRouteKey &key, IpmibRoute &row) const
{
    const Routes::Place place = device_.routes.find(key);
    return place != device_.routes.end() && isThere(place) && fillRow(place, row);
}

bool RouteRows::next(const IpmibRouteKey &key, IpmibRoute &row) const
{
    for (Routes::Place place = device_.routes.after(key); place != device_.routes.end(); ++place) {
        if (isThere(place)) {
            return fillRow(place, row);
        }
    }
    return false;
}

bool RouteRows::match(std::uint32_t version, const std::uint8_t *address, IpmibRoute &row) const
{
    const Routes &routes = device_.routes;
    const bool isIpv6 = version == IPMIB_IPV6;
    std::uint8_t octets[sizeof(IpmibRouteKey::destination)] = {};
    std::copy_n(address, isIpv6 ? sizeof octets : sizeof(std::uint32_t), octets);
    const auto whole = platform::PackedAddress::of(octets);
    for (std::uint32_t length = isIpv6 ? 128 : 32; length <= 128; --length) { // and ends by wrapping around
        Routes::Place place = routes.find(RouteDestination{version, whole.masked(length), length});
        for (; place != routes.end(); place = routes.sibling(place)) {
            if (isThere(place)) {
                return fillRow(place, row);
            }
        }
    }
    return false;
}

} // namespace ipmib::simulated
