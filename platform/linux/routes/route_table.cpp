// SPDX-License-Identifier: BSD-3-Clause
// What the routing tables tell of prefixes and default routers: the on-link routes and the default routes.
#include "routes/route_table.h"

#include "core/uptime.h"

#include <linux/rtnetlink.h>

#include <algorithm>

namespace ipmib::platform
{

namespace
{

bool isOnLink(const RouteNexthop &nexthop)
{
    return nexthop.ifIndex != 0 && !nexthop.hasGateway();
}

// The kernel's own on-link routes count in every table (an interface in a VRF has them in the VRF's), configured ones
// in the main table. What a routing protocol puts on a link is not a prefix of the interface.
bool isPrefixRoute(const Route &route)
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

bool isRouterRoute(const Route &route)
{
    return route.type == RTN_UNICAST && route.length == 0 && route.table == RT_TABLE_MAIN;
}

// Others can be entered by hand, and do not make this node a member.
bool isAnycastRoute(const Route &route)
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
        if (nexthop.hasGateway()) {
            row.gateway = nexthop.gateway;
            row.ifIndex = nexthop.ifIndex;
            row.dead = nexthop.dead;
            rows.push_back(row);
        }
    }
    return rows;
}

bool standsAlone(const DefaultRoute &row)
{
    return row.learned || row.nexthopId != 0;
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
    if (message.nlmsg_type != RTM_NEWROUTE || !parseRoute(message, AF_INET6, now, route) || !isRouterRoute(route)) {
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

void RouteTable::fillRoute(const Route &route, Generation generation)
{
    if (isRouterRoute(route)) {
        for (const DefaultRoute &row : defaultRoutes(route)) {
            defaults_.put(row, generation);
        }
    } else if (isPrefixRoute(route)) {
        for (const RouteNexthop &nexthop : route.nexthops) {
            if (isOnLink(nexthop)) {
                fillOnLink(onLinkRoute(route, nexthop), generation);
            }
        }
    }
}

bool RouteTable::asksForAdvertised() const
{
    bool any = false;
    onLink_.each([&](const OnLinkRoute &row) {
        any = any ||
              (row.protocol == RTPROT_KERNEL && (!handlers_.mayBeAdvertised || handlers_.mayBeAdvertised(row.key())));
    });
    return any;
}

void RouteTable::fillAdvertised(const Route &route)
{
    if (!isPrefixRoute(route)) {
        return;
    }
    for (const RouteNexthop &nexthop : route.nexthops) {
        OnLinkRoute *row = isOnLink(nexthop) ? onLink_.findToChange(onLinkRoute(route, nexthop)) : nullptr;
        if (row != nullptr) {
            row->readAdvertised = true;
        }
    }
}

// Until the dumps have ended, what was known of an advertisement stays.
void RouteTable::fillOnLink(OnLinkRoute row, Generation generation)
{
    const OnLinkRoute *known = onLink_.find(row);
    row.advertised = row.advertised || (known != nullptr && known->advertised);
    if (known != nullptr && row.until.isNever() && known->until.left(secondsSinceBoot()) <= 1) {
        row.until = known->until; // in its last hundredth of a second the kernel says that it has no end
    }
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
        if (row.protocol == RTPROT_KERNEL && row.advertised != row.readAdvertised) {
            changed.push_back(row);
        }
    });
    for (const OnLinkRoute &row : changed) {
        onLink_.findToChange(row)->advertised = row.readAdvertised;
        tellOnLink(row);
    }
}

void RouteTable::tellOnLink(const OnLinkRoute &row) const
{
    if (handlers_.onLinkChanged) {
        handlers_.onLinkChanged(row.key());
    }
}

bool RouteTable::sweepRoutes(Generation generation)
{
    for (const OnLinkRoute &gone : onLink_.sweep(generation)) {
        tellOnLink(gone);
    }
    if (readsAdvertised()) {
        settleAdvertised();
    }
    defaults_.sweep(generation);
    tellDefaults();
    if (handlers_.rebuilt) {
        handlers_.rebuilt();
    }
    return true;
}

void RouteTable::tellDefaults() const
{
    if (handlers_.defaultsChanged) {
        handlers_.defaultsChanged();
    }
}

void RouteTable::tellUncertain() const
{
    if (handlers_.uncertain) {
        handlers_.uncertain();
    }
}

void RouteTable::applyAdvertisedPrefix(const nlmsghdr &message)
{
    AdvertisedPrefix prefix;
    if (!parseAdvertisedPrefix(message, secondsSinceBoot(), prefix)) {
        return;
    }
    if (prefix.onLink && !prefix.withdrawn) {
        markAdvertised(prefix.key);
    }
    if (handlers_.advertised) {
        handlers_.advertised(prefix);
    }
}

void RouteTable::applyNews(const RouteNews &news)
{
    const Route &route = news.route;
    if (isAnycastRoute(route)) {
        if (handlers_.anycastChanged) {
            handlers_.anycastChanged(route.destination, route.nexthops[0].ifIndex, news.comes);
        }
        return;
    }
    if (isRouterRoute(route)) {
        applyDefault(news);
        return;
    }
    if (news.replaces) {
        eraseReplaced(route);
    }
    if (isPrefixRoute(route)) {
        applyOnLink(news);
    }
}

void RouteTable::applyOnLink(const RouteNews &news)
{
    for (const RouteNexthop &nexthop : news.route.nexthops) {
        if (!isOnLink(nexthop)) {
            continue;
        }
        OnLinkRoute row = onLinkRoute(news.route, nexthop);
        if (!news.comes) {
            onLink_.erase(row);
        } else {
            const OnLinkRoute *known = onLink_.find(row);
            row.advertised = row.advertised || (known != nullptr && known->advertised);
            row.readAdvertised = row.advertised;
            onLink_.put(row);
        }
        tellOnLink(row);
    }
}

// A route without a gateway replaces another one without, the first of several; one with a gateway may have replaced
// one with a gateway, of which nothing is known here.
void RouteTable::eraseReplaced(const Route &route)
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
    if (!replaced.empty()) {
        tellUncertain();
    }
}

void RouteTable::applyDefault(const RouteNews &news)
{
    if (news.replaces) {
        eraseReplacedDefaults(news.route);
    }
    for (const DefaultRoute &row : defaultRoutes(news.route)) {
        if (news.comes) {
            defaults_.put(row);
        } else {
            defaults_.erase(row);
        }
    }
    tellDefaults();
}

// Configured routes with gateways are one multipath route, which is replaced as a whole. Of others, which stand alone,
// the first one is replaced.
void RouteTable::eraseReplacedDefaults(const Route &route)
{
    DefaultRoute first{};
    first.metric = route.metric;
    first.sourceLength = route.sourceLength;
    first.source = route.source;
    std::vector<DefaultRoute> together;
    std::vector<DefaultRoute> alone;
    defaults_.eachFrom(first, [&](const DefaultRoute &row) {
        const bool same =
            row.metric == route.metric && row.sourceLength == route.sourceLength && row.source == route.source;
        if (same) {
            (standsAlone(row) ? alone : together).push_back(row);
        }
        return same;
    });
    const std::vector<DefaultRoute> rows = defaultRoutes(route);
    const bool comesAlone = rows.empty() || standsAlone(rows.front());
    const bool certain = comesAlone ? alone.size() + together.size() <= 1 : !together.empty() || alone.size() <= 1;
    for (const DefaultRoute &row : !comesAlone && !together.empty() ? together : alone) {
        defaults_.erase(row);
    }
    if (!certain) {
        tellUncertain();
    }
}

void RouteTable::linkDown(std::uint32_t ifIndex, LinkLoss loss)
{
    handlers_.linkDown(ifIndex);
    std::vector<OnLinkRoute> gone;
    onLink_.eraseIf([&](const OnLinkRoute &row) {
        if (row.ifIndex == ifIndex) {
            gone.push_back(row);
        }
        return row.ifIndex == ifIndex;
    });
    for (const OnLinkRoute &row : gone) {
        tellOnLink(row);
    }
    const auto isThere = [&](const DefaultRoute &row) { return row.ifIndex == ifIndex && row.nexthopId == 0; };
    defaults_.eraseIf([&](const DefaultRoute &row) { return isThere(row) && standsAlone(row); });
    std::vector<DefaultRoute> rows;
    defaults_.each([&](const DefaultRoute &row) { rows.push_back(row); });
    const auto whole = [](const DefaultRoute &row) { return std::tie(row.metric, row.sourceLength, row.source); };
    for (DefaultRoute &row : rows) {
        row.dead = row.dead || isThere(row);
    }
    for (const DefaultRoute &row : rows) {
        const auto ofSameRoute = [&](const DefaultRoute &other) {
            return !standsAlone(row) && !standsAlone(other) && whole(row) == whole(other);
        };
        const bool lost = std::any_of(rows.begin(), rows.end(),
                                      [&](const DefaultRoute &other) { return ofSameRoute(other) && isThere(other); });
        const bool left = std::any_of(rows.begin(), rows.end(),
                                      [&](const DefaultRoute &other) { return ofSameRoute(other) && !other.dead; });
        if (lost && (!left || loss == LinkLoss::gone)) {
            defaults_.erase(row);
        } else if (lost) {
            defaults_.put(row);
        }
    }
    tellDefaults();
}

void RouteTable::linkUp(std::uint32_t ifIndex)
{
    std::vector<DefaultRoute> dead;
    defaults_.each([&](const DefaultRoute &row) {
        if (row.dead && row.ifIndex == ifIndex) {
            dead.push_back(row);
        }
    });
    for (const DefaultRoute &row : dead) {
        defaults_.findToChange(row)->dead = false;
    }
    tellDefaults();
}

void RouteTable::nexthopsGone(const std::vector<std::uint32_t> &ids)
{
    defaults_.eraseIf([&](const DefaultRoute &row) {
        return row.nexthopId != 0 && std::find(ids.begin(), ids.end(), row.nexthopId) != ids.end();
    });
}

void RouteTable::markAdvertised(const PrefixKey &key)
{
    std::vector<OnLinkRoute> rows;
    eachOnLink(key, [&](const OnLinkRoute &row) { rows.push_back(row); });
    for (OnLinkRoute &row : rows) {
        if (row.protocol == RTPROT_KERNEL) {
            OnLinkRoute *marked = onLink_.findToChange(row);
            marked->advertised = marked->readAdvertised = true;
        }
    }
}

} // namespace ipmib::platform
