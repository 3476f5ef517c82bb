// SPDX-License-Identifier: BSD-3-Clause
// The default routers: the gateways of the default routes, one row for each gateway and interface.
#include "routes/router_list.h"

#include <algorithm>
#include <tuple>

namespace ipmib::platform
{

namespace
{

auto keyOf(const Router &router)
{
    return std::tie(router.address, router.ifIndex);
}

bool routerBefore(const Router &a, const Router &b)
{
    return keyOf(a) < keyOf(b);
}

bool sameKey(const Router &a, const Router &b)
{
    return keyOf(a) == keyOf(b);
}

// Of several routes through one router the one that lasts longest counts, so a configured one before all, and of two
// that last as long the one that the kernel prefers.
bool listedBefore(const Router &a, const Router &b)
{
    if (!sameKey(a, b)) {
        return keyOf(a) < keyOf(b);
    }
    return a.until != b.until ? a.until > b.until : a.metric < b.metric;
}

template <class Iterator>
const Router *firstOf(RouterList::Class of, Iterator begin, Iterator end)
{
    const bool linkLocal = of == RouterList::Class::linkLocal;
    const auto found =
        std::find_if(begin, end, [&](const Router &row) { return row.address.isLinkLocal() == linkLocal; });
    return found == end ? nullptr : &*found;
}

} // namespace

void RouterList::rebuild(const DefaultRoutes &routes, const NexthopTable &nexthops)
{
    rows_.clear();
    hasLearned_ = false;
    routes.each([&](const DefaultRoute &route) {
        hasLearned_ = hasLearned_ || route.learned;
        const auto add = [&](const PackedAddress &gateway, std::uint32_t ifIndex, bool dead) {
            if (!dead) { // what the kernel passes over is no router now
                rows_.push_back({gateway, ifIndex, route.metric, route.preference, route.until});
            }
        };
        if (route.nexthopId == 0) {
            add(route.gateway, route.ifIndex, route.dead);
        } else {
            nexthops.eachHop(route.nexthopId, [&](const NexthopObject &object) {
                if (object.hasGateway) {
                    add(object.gateway, object.ifIndex, object.dead);
                }
            });
        }
    });
    std::sort(rows_.begin(), rows_.end(), listedBefore);
    rows_.erase(std::unique(rows_.begin(), rows_.end(), sameKey), rows_.end());
}

const Router *RouterList::first(Class of) const
{
    return firstOf(of, rows_.begin(), rows_.end());
}

const Router *RouterList::after(Class of, const PackedAddress &address, std::uint32_t ifIndex) const
{
    const auto behind = std::upper_bound(rows_.begin(), rows_.end(), Router{address, ifIndex, 0, 0, {}}, routerBefore);
    return firstOf(of, behind, rows_.end());
}

const Router *RouterList::find(const PackedAddress &address, std::uint32_t ifIndex) const
{
    const Router key{address, ifIndex, 0, 0, {}};
    const auto found = std::lower_bound(rows_.begin(), rows_.end(), key, routerBefore);
    return found == rows_.end() || !sameKey(*found, key) ? nullptr : &*found;
}

} // namespace ipmib::platform
