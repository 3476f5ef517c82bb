// SPDX-License-Identifier: BSD-3-Clause
// What the routing tables tell of IPv4: the default routers, and which prefixes are on the link.
#include "ipv4/ipv4_route_table.h"

#include <linux/rtnetlink.h>

#include <algorithm>

namespace ipmib::platform
{

namespace
{

constexpr std::uint32_t wholeAddress = 32;

bool isDefault(const Ipv4Route &route)
{
    return route.type == RTN_UNICAST && route.identity.length == 0 && route.identity.table == RT_TABLE_MAIN;
}

// Interfaces of a VRF have their routes in its table. The loopback interface's prefix is a local route.
bool tellsOfLink(const Ipv4Route &route)
{
    if (route.identity.length == 0) {
        return false;
    }
    return route.type == RTN_UNICAST || (route.type == RTN_LOCAL && route.identity.length < wholeAddress);
}

// Routes with the same identity are told apart by where they lead.
bool leadSameWay(const Ipv4Route &a, const Ipv4Route &b)
{
    return a.identity == b.identity && a.nexthopId == b.nexthopId &&
           std::equal(
               a.hops.begin(), a.hops.end(), b.hops.begin(), b.hops.end(),
               [](const Ipv4Hop &x, const Ipv4Hop &y) { return x.ifIndex == y.ifIndex && x.gateway == y.gateway; });
}

} // namespace

bool Ipv4RouteTable::isOnLink(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length) const
{
    const OnLink *row = onLinks_.atOrAfter(OnLink{prefix, length, ifIndex, 0, 0, 0});
    return row != nullptr && row->prefix == prefix && row->length == length && row->ifIndex == ifIndex;
}

const std::vector<Ipv4Router> &Ipv4RouteTable::routers()
{
    if (listed_ && listedNexthops_ == nexthops_.version()) {
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
            nexthops_.eachBehind(route.nexthopId, [&](const NexthopObject &object) {
                addRouter(object.ipv4Gateway, object.ifIndex, object.dead);
            });
            continue;
        }
        for (const Ipv4Hop &hop : route.hops) {
            addRouter(hop.gateway, hop.ifIndex, hop.dead);
        }
    }
    std::sort(routers_.begin(), routers_.end());
    routers_.erase(std::unique(routers_.begin(), routers_.end()), routers_.end());
    listed_ = true;
    listedNexthops_ = nexthops_.version();
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

RtnetlinkRequest Ipv4RouteTable::dump(std::size_t)
{
    RtnetlinkRequest request(RTM_GETROUTE, NLM_F_DUMP);
    request.family<rtmsg>().rtm_family = AF_INET;
    return request;
}

void Ipv4RouteTable::add(const Ipv4Route &route, Generation generation)
{
    if (isDefault(route)) {
        std::erase_if(defaults_, [&](const Default &other) { return leadSameWay(other.route, route); });
        defaults_.push_back({route, generation});
        listed_ = false;
    } else if (tellsOfLink(route)) {
        for (const Ipv4Hop &hop : route.hops) {
            if (hop.ifIndex != 0 && !hop.hasGateway) {
                onLinks_.put({route.identity.destination, route.identity.length, hop.ifIndex, route.identity.table,
                              route.identity.metric, route.identity.tos},
                             generation);
            }
        }
    }
}

void Ipv4RouteTable::fill(const nlmsghdr &message, Generation generation)
{
    Ipv4Route route;
    if (message.nlmsg_type == RTM_NEWROUTE && parseIpv4Route(message, route)) {
        add(route, generation);
    }
}

void Ipv4RouteTable::sweep(Generation generation)
{
    std::erase_if(defaults_, [&](const Default &each) { return each.generation != generation; });
    onLinks_.sweep(generation);
    listed_ = false;
}

void Ipv4RouteTable::apply(const nlmsghdr &message)
{
    // The kernel does not announce the routes that go with an address, which was their source.
    if (message.nlmsg_type == RTM_DELADDR && uncertain_) {
        uncertain_();
    }
    Ipv4Route route;
    const bool comes = message.nlmsg_type == RTM_NEWROUTE;
    if ((!comes && message.nlmsg_type != RTM_DELROUTE) || !parseIpv4Route(message, route) ||
        !(isDefault(route) || tellsOfLink(route))) {
        return;
    }
    if (comes && (message.nlmsg_flags & NLM_F_REPLACE) != 0) {
        eraseReplaced(route.identity);
    }
    if (comes) {
        add(route, 0);
    } else if (isDefault(route)) {
        std::erase_if(defaults_, [&](const Default &other) { return leadSameWay(other.route, route); });
    } else {
        for (const Ipv4Hop &hop : route.hops) {
            onLinks_.erase(OnLink{route.identity.destination, route.identity.length, hop.ifIndex, route.identity.table,
                                  route.identity.metric, route.identity.tos});
        }
    }
    listed_ = false;
}

// Routes that one has replaced are not announced. Of several with one identity (`ip route append`) it replaces the
// first one, and the message does not say which that was.
void Ipv4RouteTable::eraseReplaced(const Ipv4Route::Identity &identity)
{
    const std::size_t defaults =
        std::erase_if(defaults_, [&](const Default &each) { return each.route.identity == identity; });
    std::vector<OnLink> replaced;
    onLinks_.eachFrom(OnLink{identity.destination, identity.length, 0, 0, 0, 0}, [&](const OnLink &row) {
        const bool here = row.prefix == identity.destination && row.length == identity.length;
        if (here && row.table == identity.table && row.metric == identity.metric && row.tos == identity.tos) {
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

} // namespace ipmib::platform
