// SPDX-License-Identifier: BSD-3-Clause
// What the routing tables tell of IPv4: the default routers, and which prefixes are on the link.
#include "routes/ipv4_route_table.h"

#include <linux/rtnetlink.h>

#include <algorithm>

namespace ipmib::platform
{

namespace
{

constexpr std::uint32_t wholeIpv4Address = 32;

bool isDefault(const Route &route)
{
    return route.type == RTN_UNICAST && route.length == 0 && route.table == RT_TABLE_MAIN;
}

// Interfaces of a VRF have their routes in its table. The loopback interface's prefix is a local route.
bool isOnLinkRoute(const Route &route)
{
    if (route.length == 0) {
        return false;
    }
    return route.type == RTN_UNICAST || (route.type == RTN_LOCAL && route.length < wholeIpv4Address);
}

// A route with the same identity takes another one's place.
bool sameIdentity(const Route &a, const Route &b)
{
    return a.table == b.table && a.destination == b.destination && a.length == b.length && a.tos == b.tos &&
           a.metric == b.metric;
}

// Routes with the same identity are told apart by where they lead.
bool leadSameWay(const Route &a, const Route &b)
{
    return sameIdentity(a, b) && a.nexthopId == b.nexthopId &&
           std::equal(a.nexthops.begin(), a.nexthops.end(), b.nexthops.begin(), b.nexthops.end(),
                      [](const RouteNexthop &x, const RouteNexthop &y) {
                          return x.ifIndex == y.ifIndex && x.gateway == y.gateway;
                      });
}

bool isOnLinkHop(const RouteNexthop &hop)
{
    return hop.ifIndex != 0 && !hop.hasGateway();
}

} // namespace

bool Ipv4RouteTable::isOnLink(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length) const
{
    const OnLink *row = onLinks_.atOrAfter(OnLink{prefix, length, ifIndex, 0, 0, 0, 0, false});
    return row != nullptr && row->prefix == prefix && row->length == length && row->ifIndex == ifIndex;
}

const std::vector<Ipv4Router> &Ipv4RouteTable::routers()
{
    if (listed_) {
        return routers_;
    }
    routers_.clear();
    const auto addRouter = [this](std::uint32_t gateway, std::uint32_t ifIndex, bool dead) {
        if (gateway != 0 && !dead) { // what the kernel passes over is no router now
            routers_.push_back({gateway, ifIndex});
        }
    };
    for (const auto &[route, generation] : defaults_) {
        if (route.nexthopId != 0) {
            nexthops().eachHop(route.nexthopId, [&](const NexthopObject &object) {
                addRouter(object.ipv4Gateway, object.ifIndex, object.dead);
            });
            continue;
        }
        for (const RouteNexthop &hop : route.nexthops) {
            addRouter(hop.ipv4Gateway(), hop.ifIndex, hop.dead);
        }
    }
    std::sort(routers_.begin(), routers_.end());
    routers_.erase(std::unique(routers_.begin(), routers_.end()), routers_.end());
    listed_ = true;
    return routers_;
}

const Ipv4Router *Ipv4RouteTable::findRouter(const Ipv4Router &key)
{
    const auto &all = routers();
    const auto found = std::lower_bound(all.begin(), all.end(), key);
    return found != all.end() && *found == key ? &*found : nullptr;
}

const Ipv4Router *Ipv4RouteTable::routerAfter(const Ipv4Router &key)
{
    const auto &all = routers();
    const auto found = std::upper_bound(all.begin(), all.end(), key);
    return found != all.end() ? &*found : nullptr;
}

Ipv4RouteTable::OnLink Ipv4RouteTable::onLinkOf(const Route &route, const RouteNexthop &hop)
{
    return {static_cast<std::uint32_t>(route.destination.low),
            route.length,
            hop.ifIndex,
            route.table,
            route.metric,
            route.tos,
            route.ownAddress,
            route.type == RTN_LOCAL};
}

void Ipv4RouteTable::fillRoute(const Route &route, Generation generation)
{
    if (isDefault(route)) {
        std::erase_if(defaults_, [&](const Default &other) { return leadSameWay(other.route, route); });
        defaults_.push_back({route, generation});
        listed_ = false;
    } else if (isOnLinkRoute(route)) {
        for (const RouteNexthop &hop : route.nexthops) {
            if (isOnLinkHop(hop) &&
                isPrefixOfAddress({hop.ifIndex, static_cast<std::uint32_t>(route.destination.low), route.length})) {
                onLinks_.put(onLinkOf(route, hop), generation);
            }
        }
    }
}

bool Ipv4RouteTable::sweepRoutes(Generation generation)
{
    std::erase_if(defaults_, [&](const Default &each) { return each.generation != generation; });
    onLinks_.sweep(generation);
    listed_ = false;
    return true;
}

void Ipv4RouteTable::applyNews(const RouteNews &news)
{
    const Route &route = news.route;
    if (!isDefault(route) && !isOnLinkRoute(route)) {
        return;
    }
    if (news.replaces) {
        eraseReplaced(route);
    }
    if (news.comes) {
        fillRoute(route, 0);
    } else if (isDefault(route)) {
        std::erase_if(defaults_, [&](const Default &other) { return leadSameWay(other.route, route); });
    } else {
        for (const RouteNexthop &hop : route.nexthops) {
            onLinks_.erase(onLinkOf(route, hop));
        }
    }
    listed_ = false;
}

// Routes that one has replaced are not announced. Of several with one identity (`ip route append`) it replaces the
// first one, and the message does not say which that was.
void Ipv4RouteTable::eraseReplaced(const Route &route)
{
    const std::size_t defaults =
        std::erase_if(defaults_, [&](const Default &each) { return sameIdentity(each.route, route); });
    const auto prefix = static_cast<std::uint32_t>(route.destination.low);
    std::vector<OnLink> replaced;
    onLinks_.eachFrom(OnLink{prefix, route.length, 0, 0, 0, 0, 0, false}, [&](const OnLink &row) {
        const bool here = row.prefix == prefix && row.length == route.length;
        if (here && row.table == route.table && row.metric == route.metric && row.tos == route.tos) {
            replaced.push_back(row);
        }
        return here;
    });
    for (const OnLink &row : replaced) {
        onLinks_.erase(row);
    }
    if (defaults + replaced.size() > 1 && uncertain_) {
        uncertain_();
    }
}

void Ipv4RouteTable::linkDown(std::uint32_t ifIndex, LinkLoss loss)
{
    onLinks_.eraseIf(
        [&](const OnLink &row) { return row.ifIndex == ifIndex && !(row.local && loss == LinkLoss::down); });
    std::erase_if(defaults_, [&](Default &each) {
        bool leadsThere = false;
        bool left = false;
        for (RouteNexthop &hop : each.route.nexthops) {
            leadsThere = leadsThere || hop.ifIndex == ifIndex;
            hop.dead = hop.dead || hop.ifIndex == ifIndex;
            left = left || !hop.dead;
        }
        return each.route.nexthopId == 0 && leadsThere && (!left || loss == LinkLoss::gone);
    });
    listed_ = false;
}

void Ipv4RouteTable::linkUp(std::uint32_t ifIndex)
{
    for (Default &each : defaults_) {
        for (RouteNexthop &hop : each.route.nexthops) {
            hop.dead = hop.dead && hop.ifIndex != ifIndex;
        }
    }
    listed_ = false;
}

void Ipv4RouteTable::addressGone(std::uint32_t address)
{
    onLinks_.eraseIf([&](const OnLink &row) { return row.ownAddress == address; });
    std::erase_if(defaults_, [&](const Default &each) { return each.route.ownAddress == address; });
    listed_ = false;
}

// The kernel's own route to the prefix is announced behind the address. Where it enters none, one may have been there.
void Ipv4RouteTable::applyNewPrefix(const Ipv4Address &address)
{
    if ((address.flags & IFA_F_NOPREFIXROUTE) != 0 && uncertain_) {
        uncertain_();
    }
}

void Ipv4RouteTable::nexthopsGone(const std::vector<std::uint32_t> &ids)
{
    std::erase_if(defaults_, [&](const Default &each) {
        return std::find(ids.begin(), ids.end(), each.route.nexthopId) != ids.end();
    });
    listed_ = false;
}

} // namespace ipmib::platform
