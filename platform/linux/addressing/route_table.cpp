// SPDX-License-Identifier: BSD-3-Clause
// What the routing tables tell of prefixes and default routers: the on-link routes and the default routes.
#include "addressing/route_table.h"

#include "core/boot_time.h"

#include <linux/rtnetlink.h>

namespace ipmib::platform
{

namespace
{

enum Dump : std::size_t { allRoutes, advertisedRoutes };

bool isOnLink(const RouteNexthop &nexthop)
{
    return nexthop.ifIndex != 0 && !nexthop.hasGateway;
}

// The kernel's own on-link routes count in every table (an interface in a VRF has them in the VRF's), configured ones
// in the main table. What a routing protocol puts on a link is not a prefix of the interface.
bool tellsOfPrefix(const Route &route)
{
    if (route.type != RTN_UNICAST || route.length == 0 || route.sourceLength != 0 || route.destination.isLinkLocal() ||
        route.destination.isMulticast() || route.table == RT_TABLE_LOCAL) {
        return false;
    }
    switch (route.protocol) {
    case RTPROT_KERNEL:
        return true;
    case RTPROT_BOOT:
    case RTPROT_STATIC:
    case RTPROT_RA:
    case RTPROT_DHCP:
        return route.table == RT_TABLE_MAIN;
    default:
        return false;
    }
}

bool tellsOfRouter(const Route &route)
{
    return route.type == RTN_UNICAST && route.length == 0 && route.table == RT_TABLE_MAIN;
}

// Others can be entered by hand, and do not make this node a member.
bool tellsOfAnycast(const Route &route)
{
    return route.type == RTN_ANYCAST && route.protocol == RTPROT_KERNEL && !route.nexthops.empty();
}

OnLinkRoute onLinkRoute(const Route &route, const RouteNexthop &nexthop)
{
    return {route.destination,
            nexthop.ifIndex,
            route.table,
            route.metric,
            route.until,
            route.length,
            route.protocol,
            route.protocol == RTPROT_RA,
            false};
}

std::vector<DefaultRoute> defaultRoutes(const Route &route)
{
    DefaultRoute row{};
    row.source = route.source;
    row.sourceLength = route.sourceLength;
    row.metric = route.metric;
    row.nexthopId = route.nexthopId;
    row.until = route.until;
    row.preference = route.preference;
    row.learned = route.protocol == RTPROT_RA;
    if (route.nexthopId != 0) {
        return {row};
    }
    std::vector<DefaultRoute> rows;
    for (const RouteNexthop &nexthop : route.nexthops) {
        if (nexthop.hasGateway) {
            row.gateway = nexthop.gateway;
            row.ifIndex = nexthop.ifIndex;
            row.dead = nexthop.dead;
            rows.push_back(row);
        }
    }
    return rows;
}

} // namespace

void RouteTable::readLearnedDefaults(Rtnetlink &socket)
{
    RtnetlinkRequest request(RTM_GETROUTE, NLM_F_DUMP);
    auto &filter = request.family<rtmsg>();
    filter.rtm_family = AF_INET6;
    filter.rtm_table = RT_TABLE_MAIN;
    filter.rtm_protocol = RTPROT_RA;
    const std::uint32_t now = secondsSinceBoot();
    socket.ask(request, [&](const nlmsghdr &message) { updateLearnedDefaults(message, now); });
}

void RouteTable::updateLearnedDefaults(const nlmsghdr &message, std::uint32_t now)
{
    Route route;
    if (message.nlmsg_type != RTM_NEWROUTE || !parseRoute(message, now, route) || !tellsOfRouter(route)) {
        return;
    }
    for (DefaultRoute &row : defaultRoutes(route)) {
        const DefaultRoute *known = defaults_.find(row);
        if (known == nullptr) {
            continue; // about to be announced
        }
        // In the last hundredth of a second the kernel says what it says of routes without an end. One that has lost
        // its end would have been announced.
        row.until = row.until.isNever() ? known->until : row.until;
        const bool changed = known->until != row.until || known->preference != row.preference;
        defaults_.put(row);
        if (changed && handlers_.defaultsChanged) {
            handlers_.defaultsChanged();
        }
    }
}

RtnetlinkRequest RouteTable::dump(std::size_t which)
{
    dumping_ = which;
    RtnetlinkRequest request(RTM_GETROUTE, NLM_F_DUMP);
    auto &filter = request.family<rtmsg>();
    filter.rtm_family = AF_INET6;
    filter.rtm_flags = which == advertisedRoutes ? RTM_F_PREFIX : 0;
    return request;
}

void RouteTable::fill(const nlmsghdr &message, Generation generation)
{
    Route route;
    if (message.nlmsg_type != RTM_NEWROUTE || !parseRoute(message, secondsSinceBoot(), route)) {
        return;
    }
    if (tellsOfRouter(route)) {
        for (const DefaultRoute &row : defaultRoutes(route)) {
            defaults_.put(row, generation);
        }
    } else if (tellsOfPrefix(route)) {
        for (const RouteNexthop &nexthop : route.nexthops) {
            if (isOnLink(nexthop)) {
                fillOnLink(onLinkRoute(route, nexthop), generation);
            }
        }
    }
}

// Until both dumps have ended, what was known of an advertisement stays.
void RouteTable::fillOnLink(OnLinkRoute row, Generation generation)
{
    const OnLinkRoute *known = onLink_.find(row);
    row.readAdvertised = dumping_ == advertisedRoutes;
    row.advertised = row.advertised || row.readAdvertised || (known != nullptr && known->advertised);
    const bool same = known != nullptr && known->until == row.until && known->protocol == row.protocol &&
                      known->advertised == row.advertised;
    onLink_.put(row, generation);
    if (!same) {
        tellOnLink(row);
    }
}

void RouteTable::settleAdvertised()
{
    std::vector<OnLinkRoute> changed;
    onLink_.each([&](const OnLinkRoute &row) {
        if (row.advertised != (row.readAdvertised || row.protocol == RTPROT_RA)) {
            changed.push_back(row);
        }
    });
    for (const OnLinkRoute &row : changed) {
        onLink_.findToChange(row)->advertised = !row.advertised;
        tellOnLink(row);
    }
}

void RouteTable::tellOnLink(const OnLinkRoute &row) const
{
    if (handlers_.onLinkChanged) {
        handlers_.onLinkChanged(row.key());
    }
}

void RouteTable::sweep(Generation generation)
{
    for (const OnLinkRoute &gone : onLink_.sweep(generation)) {
        tellOnLink(gone);
    }
    settleAdvertised();
    defaults_.sweep(generation);
    if (handlers_.defaultsChanged) {
        handlers_.defaultsChanged();
    }
    if (handlers_.rebuilt) {
        handlers_.rebuilt();
    }
}

void RouteTable::apply(const nlmsghdr &message)
{
    const std::uint32_t now = secondsSinceBoot();
    if (message.nlmsg_type == RTM_NEWPREFIX) {
        AdvertisedPrefix prefix;
        if (parseAdvertisedPrefix(message, now, prefix)) {
            if (prefix.onLink && !prefix.withdrawn) {
                markAdvertised(prefix.key);
            }
            if (handlers_.advertised) {
                handlers_.advertised(prefix);
            }
        }
        return;
    }
    Route route;
    if ((message.nlmsg_type == RTM_NEWROUTE || message.nlmsg_type == RTM_DELROUTE) && parseRoute(message, now, route)) {
        applyRoute(message, route);
    }
}

void RouteTable::applyRoute(const nlmsghdr &message, const Route &route)
{
    if (tellsOfAnycast(route)) {
        if (handlers_.anycastChanged) {
            handlers_.anycastChanged(route.destination, route.nexthops[0].ifIndex, message.nlmsg_type == RTM_NEWROUTE);
        }
        return;
    }
    const bool replaces = (message.nlmsg_flags & NLM_F_REPLACE) != 0;
    bool touched = false;
    if (tellsOfRouter(route)) {
        applyDefault(message, route);
        touched = true;
    } else {
        touched = replaces && eraseReplaced(route);
        if (tellsOfPrefix(route)) {
            applyOnLink(message, route);
            touched = true;
        }
    }
    // Which routes one has replaced depends on more than the message says.
    if (replaces && touched && handlers_.uncertain) {
        handlers_.uncertain();
    }
}

void RouteTable::applyOnLink(const nlmsghdr &message, const Route &route)
{
    for (const RouteNexthop &nexthop : route.nexthops) {
        if (!isOnLink(nexthop)) {
            continue;
        }
        OnLinkRoute row = onLinkRoute(route, nexthop);
        if (message.nlmsg_type == RTM_DELROUTE) {
            onLink_.erase(row);
        } else {
            const OnLinkRoute *known = onLink_.find(row);
            row.advertised = row.advertised || (known != nullptr && known->advertised);
            onLink_.put(row);
        }
        tellOnLink(row);
    }
}

bool RouteTable::eraseReplaced(const Route &route)
{
    std::vector<OnLinkRoute> replaced;
    onLink_.eachFrom(At{route.destination, route.length, 0, 0, 0}, [&](const OnLinkRoute &row) {
        const bool sameDestination = row.prefix == route.destination && row.length == route.length;
        if (sameDestination && row.table == route.table && row.metric == route.metric) {
            replaced.push_back(row);
        }
        return sameDestination;
    });
    for (const OnLinkRoute &row : replaced) {
        onLink_.erase(row);
        tellOnLink(row);
    }
    return !replaced.empty();
}

void RouteTable::applyDefault(const nlmsghdr &message, const Route &route)
{
    if ((message.nlmsg_flags & NLM_F_REPLACE) != 0) {
        eraseReplacedDefaults(route);
    }
    for (const DefaultRoute &row : defaultRoutes(route)) {
        if (message.nlmsg_type == RTM_DELROUTE) {
            defaults_.erase(row);
        } else {
            defaults_.put(row);
        }
    }
    if (handlers_.defaultsChanged) {
        handlers_.defaultsChanged();
    }
}

void RouteTable::eraseReplacedDefaults(const Route &route)
{
    DefaultRoute first{};
    first.metric = route.metric;
    first.sourceLength = route.sourceLength;
    first.source = route.source;
    while (const DefaultRoute *found = defaults_.atOrAfter(first)) {
        if (found->metric != route.metric || found->sourceLength != route.sourceLength ||
            found->source != route.source) {
            return;
        }
        defaults_.erase(DefaultRoute(*found));
    }
}

void RouteTable::markAdvertised(const PrefixKey &key)
{
    std::vector<OnLinkRoute> rows;
    eachOnLink(key, [&](const OnLinkRoute &row) { rows.push_back(row); });
    for (OnLinkRoute &row : rows) {
        if (row.protocol == RTPROT_KERNEL) {
            onLink_.findToChange(row)->advertised = true;
        }
    }
}

} // namespace ipmib::platform
