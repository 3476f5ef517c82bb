// SPDX-License-Identifier: BSD-3-Clause
// The kernel's routes of one version of IP, read and followed once for all who want to know of them.
#include "routes/route_feed.h"

#include "core/attributes.h"
#include "core/uptime.h"

#include <linux/fib_rules.h>
#include <linux/if.h>
#include <linux/nexthop.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <utility>

namespace ipmib::platform
{

namespace
{

constexpr std::uint32_t loopbackIndex = 1; // in every network namespace

bool isUp(const nlmsghdr &message)
{
    return message.nlmsg_len >= mnl_nlmsg_size(sizeof(ifinfomsg)) &&
           (static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(&message))->ifi_flags & IFF_UP) != 0;
}

// One of the three that lead to the tables local, main and default.
bool isUsualRule(const nlmsghdr &message)
{
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(fib_rule_hdr))) {
        return true;
    }
    const auto &header = *static_cast<const fib_rule_hdr *>(mnl_nlmsg_get_payload(&message));
    const Attributes<FRA_MAX> attributes(message, sizeof header);
    return header.action == FR_ACT_TO_TBL && attributes[FRA_L3MDEV] == nullptr &&
           (header.table == RT_TABLE_LOCAL || header.table == RT_TABLE_MAIN || header.table == RT_TABLE_DEFAULT);
}

} // namespace

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

// As long as there are no rules but the usual ones, the kernel keeps the routes of the main table and of the local one
// in one tree, and for the few of the local table it looks through all of them at one go: 40 ms with a million. What is
// in the local table then follows from the addresses, as far as it is wanted.
std::vector<RouteFeed::Dump> RouteFeed::plan() const
{
    if (family_ == AF_INET6) {
        return asksForAdvertised() ? std::vector{Dump::nexthops, Dump::routes, Dump::advertised}
                                   : std::vector{Dump::nexthops, Dump::routes};
    }
    if (readsAllTables_ || hasRules_) {
        return {Dump::loopback, Dump::addresses, Dump::nexthops, Dump::rules, Dump::routes};
    }
    return {Dump::loopback, Dump::addresses, Dump::nexthops, Dump::rules, Dump::mainRoutes, Dump::defaultRoutes};
}

std::size_t RouteFeed::dumps() const
{
    return plan().size();
}

RtnetlinkRequest RouteFeed::routesOf(std::uint8_t family, std::uint8_t table, std::uint32_t flags)
{
    RtnetlinkRequest request(RTM_GETROUTE, NLM_F_DUMP);
    auto &filter = request.family<rtmsg>();
    filter.rtm_family = family;
    filter.rtm_table = table;
    filter.rtm_flags = flags;
    return request;
}

RtnetlinkRequest RouteFeed::dump(std::size_t which)
{
    if (which == 0) {
        loopbackUp_ = false;
    }
    dumping_ = plan()[which];
    switch (dumping_) {
    case Dump::loopback: {
        RtnetlinkRequest request(RTM_GETLINK, NLM_F_ACK);
        request.family<ifinfomsg>().ifi_index = loopbackIndex;
        return request;
    }
    case Dump::addresses:
        return addresses_.dump(0);
    case Dump::nexthops: {
        RtnetlinkRequest request(RTM_GETNEXTHOP, NLM_F_DUMP);
        request.family<nhmsg>();
        return request;
    }
    case Dump::rules: {
        hasRules_ = false;
        RtnetlinkRequest request(RTM_GETRULE, NLM_F_DUMP);
        request.family<fib_rule_hdr>().family = family_;
        return request;
    }
    case Dump::mainRoutes:
        return routesOf(family_, RT_TABLE_MAIN, 0);
    case Dump::defaultRoutes:
        return routesOf(family_, RT_TABLE_DEFAULT, 0);
    case Dump::advertised:
        return routesOf(family_, RT_TABLE_UNSPEC, RTM_F_PREFIX);
    default:
        return routesOf(family_, RT_TABLE_UNSPEC, 0);
    }
}

void RouteFeed::applyDump(const nlmsghdr &message, Generation generation)
{
    switch (message.nlmsg_type) {
    case RTM_NEWLINK:
        loopbackUp_ = loopbackUp_ || isUp(message);
        break;
    case RTM_NEWADDR:
        if (family_ == AF_INET) {
            addresses_.applyDump(message, generation);
            fillLoopbackPrefix(message, generation);
        }
        break;
    case RTM_NEWNEXTHOP:
        nexthops_.applyDump(message, generation);
        break;
    case RTM_NEWRULE:
        hasRules_ = hasRules_ || !isUsualRule(message);
        break;
    case RTM_NEWROUTE:
        fillRoute(message, generation);
        break;
    default:
        break;
    }
}

void RouteFeed::fillRoute(const nlmsghdr &message, Generation generation)
{
    if (!parseRoute(message, family_, secondsSinceBoot(), route_)) {
        return;
    }
    if (dumping_ == Dump::advertised) {
        fillAdvertised(route_);
        return;
    }
    for (RouteConsumer *consumer : consumers_) {
        consumer->fillRoute(route_, generation);
    }
}

// The one route of the local table that somebody wants to know of whatever tables are shown.
void RouteFeed::fillLoopbackPrefix(const nlmsghdr &message, Generation generation)
{
    constexpr std::uint8_t wholeAddress = 32;
    Ipv4Address address;
    if (!loopbackUp_ || readsAllTables_ || !parseIpv4Address(message, secondsSinceBoot(), address) ||
        address.ifIndex != loopbackIndex || address.length == wholeAddress ||
        (address.flags & (IFA_F_NOPREFIXROUTE | IFA_F_SECONDARY)) != 0) {
        return;
    }
    route_ = {};
    route_.destination = {0, address.prefix()};
    route_.length = address.length;
    route_.type = RTN_LOCAL;
    route_.protocol = RTPROT_KERNEL;
    route_.scope = RT_SCOPE_HOST;
    route_.table = RT_TABLE_LOCAL;
    route_.ownAddress = address.address;
    route_.nexthops.push_back({loopbackIndex, 0, false, {}});
    for (RouteConsumer *consumer : consumers_) {
        consumer->fillRoute(route_, generation);
    }
}

bool RouteFeed::sweep(Generation generation)
{
    if (std::exchange(sweeping_, generation) != generation) {
        swept_ = 0;
        addresses_.sweep(generation);
        nexthopsGone(nexthops_.sweep(generation));
        for (RouteConsumer *consumer : consumers_) {
            consumer->nexthopsChanged();
        }
    }
    while (swept_ < consumers_.size()) {
        if (!consumers_[swept_]->sweepRoutes(generation)) {
            return false;
        }
        ++swept_;
    }
    sweeping_ = 0;
    return true;
}

void RouteFeed::applyChange(const nlmsghdr &message)
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
        nexthopsGone(nexthops_.applyChange(message));
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
    const bool isNewPrefix =
        message.nlmsg_type == RTM_NEWADDR && !isPrefixOfAddress({address.ifIndex, address.prefix(), address.length});
    addresses_.applyChange(message);
    if (isNewPrefix) {
        applyNewPrefix(address);
    }
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
