// SPDX-License-Identifier: BSD-3-Clause
// The kernel's routes of one version of IP, read and followed once for all who want to know of them.
#include "routes/route_feed.h"

#include "core/boot_time.h"

#include <linux/if.h>
#include <linux/nexthop.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace ipmib::platform
{

const char *RouteFeed::name() const
{
    return family_ == AF_INET ? "IPv4 routes" : "routes";
}

std::vector<unsigned> RouteFeed::groups() const
{
    if (family_ == AF_INET) {
        return {RTNLGRP_IPV4_ROUTE, RTNLGRP_IPV4_IFADDR, RTNLGRP_NEXTHOP, RTNLGRP_LINK};
    }
    return {RTNLGRP_IPV6_ROUTE, RTNLGRP_IPV6_PREFIX, RTNLGRP_NEXTHOP, RTNLGRP_LINK};
}

std::size_t RouteFeed::dumps() const
{
    return family_ == AF_INET || asksForAdvertised() ? 3 : 2;
}

RouteFeed::Dump RouteFeed::dumpAt(std::size_t which) const
{
    constexpr Dump ofIpv4[] = {Dump::addresses, Dump::nexthops, Dump::routes};
    constexpr Dump ofIpv6[] = {Dump::nexthops, Dump::routes, Dump::advertised};
    return family_ == AF_INET ? ofIpv4[which] : ofIpv6[which];
}

RtnetlinkRequest RouteFeed::dump(std::size_t which)
{
    dumping_ = dumpAt(which);
    switch (dumping_) {
    case Dump::addresses:
        return addresses_.dump(0);
    case Dump::nexthops: {
        RtnetlinkRequest request(RTM_GETNEXTHOP, NLM_F_DUMP);
        request.family<nhmsg>();
        return request;
    }
    default:
        RtnetlinkRequest request(RTM_GETROUTE, NLM_F_DUMP);
        auto &filter = request.family<rtmsg>();
        filter.rtm_family = family_;
        filter.rtm_flags = dumping_ == Dump::advertised ? RTM_F_PREFIX : 0;
        return request;
    }
}

void RouteFeed::fill(const nlmsghdr &message, Generation generation)
{
    if (message.nlmsg_type == RTM_NEWADDR && family_ == AF_INET) {
        addresses_.fill(message, generation);
    } else if (message.nlmsg_type == RTM_NEWNEXTHOP) {
        nexthops_.fill(message, generation);
    } else if (message.nlmsg_type == RTM_NEWROUTE && parseRoute(message, family_, secondsSinceBoot(), route_)) {
        if (dumping_ == Dump::advertised) {
            fillAdvertised(route_);
            return;
        }
        for (RouteConsumer *consumer : consumers_) {
            consumer->fillRoute(route_, generation);
        }
    }
}

void RouteFeed::sweep(Generation generation)
{
    addresses_.sweep(generation);
    nexthopsGone(nexthops_.sweep(generation));
    for (RouteConsumer *consumer : consumers_) {
        consumer->nexthopsChanged();
        consumer->sweepRoutes(generation);
    }
}

void RouteFeed::apply(const nlmsghdr &message)
{
    switch (message.nlmsg_type) {
    case RTM_NEWROUTE:
    case RTM_DELROUTE:
        if (parseRoute(message, family_, secondsSinceBoot(), route_)) {
            const RouteNews news{route_, message.nlmsg_type == RTM_NEWROUTE,
                                 (message.nlmsg_flags & NLM_F_REPLACE) != 0};
            for (RouteConsumer *consumer : consumers_) {
                consumer->applyNews(news);
            }
        }
        break;
    case RTM_NEWPREFIX:
        applyAdvertisedPrefix(message);
        break;
    case RTM_NEWNEXTHOP:
    case RTM_DELNEXTHOP:
        nexthopsGone(nexthops_.apply(message));
        for (RouteConsumer *consumer : consumers_) {
            consumer->nexthopsChanged();
        }
        break;
    case RTM_NEWLINK:
    case RTM_DELLINK:
        applyLink(message);
        break;
    case RTM_NEWADDR:
    case RTM_DELADDR:
        if (family_ == AF_INET) {
            applyIpv4Address(message);
        }
        break;
    default:
        break;
    }
}

// Nexthop objects go with the carrier, routes do not.
void RouteFeed::applyLink(const nlmsghdr &message)
{
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(ifinfomsg))) {
        return;
    }
    const auto &info = *static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(&message));
    if (info.ifi_family != AF_UNSPEC || info.ifi_index <= 0) {
        return; // a bridge's port
    }
    const auto ifIndex = static_cast<std::uint32_t>(info.ifi_index);
    const bool gone = message.nlmsg_type == RTM_DELLINK;
    const bool up = !gone && (info.ifi_flags & IFF_UP) != 0;
    if (!up || (info.ifi_flags & (IFF_RUNNING | IFF_LOWER_UP)) == 0) {
        nexthopsGone(nexthops_.linkLost(ifIndex));
    }
    if (!up) {
        linkDown(ifIndex, gone ? RouteConsumer::LinkLoss::gone : RouteConsumer::LinkLoss::down);
    } else if (family_ == AF_INET || (info.ifi_flags & IFF_RUNNING) != 0) {
        for (RouteConsumer *consumer : consumers_) {
            consumer->linkUp(ifIndex);
        }
    }
}

// With an interface's last address the kernel switches IPv4 off there.
void RouteFeed::applyIpv4Address(const nlmsghdr &message)
{
    Ipv4Address address;
    if (!parseIpv4Address(message, secondsSinceBoot(), address)) {
        return;
    }
    addresses_.apply(message);
    if (message.nlmsg_type == RTM_NEWADDR) {
        for (RouteConsumer *consumer : consumers_) {
            consumer->linkUp(address.ifIndex);
        }
        return;
    }
    if (!addresses_.hasAny(address.ifIndex)) {
        linkDown(address.ifIndex, RouteConsumer::LinkLoss::withoutIpv4);
    }
    if (addresses_.find(address.address) == nullptr) {
        for (RouteConsumer *consumer : consumers_) {
            consumer->addressGone(address.address);
        }
    }
}

void RouteFeed::linkDown(std::uint32_t ifIndex, RouteConsumer::LinkLoss loss)
{
    for (RouteConsumer *consumer : consumers_) {
        consumer->linkDown(ifIndex, loss);
    }
}

void RouteFeed::nexthopsGone(const std::vector<std::uint32_t> &ids)
{
    if (ids.empty()) {
        return;
    }
    for (RouteConsumer *consumer : consumers_) {
        consumer->nexthopsGone(ids);
        consumer->nexthopsChanged();
    }
}

} // namespace ipmib::platform
