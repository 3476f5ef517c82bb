// SPDX-License-Identifier: BSD-3-Clause
// One route of either version of IP, and one prefix of a router advertisement, as the kernel's messages tell of them.
#include "routes/route_message.h"

#include "routes/multipath.h"

#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <utility>

namespace ipmib::platform
{

namespace
{

using Bytes = std::array<std::uint8_t, 16>;

constexpr std::int32_t ticksPerSecond = 100; // of the kernel's expiry times, on every architecture but alpha

// Flags in RTM_NEWPREFIX messages, which no header of the kernel exports. Newer kernels hand on the option's own flags,
// older ones have numbers of their own, which are reserved bits of the option.
constexpr unsigned prefixOnLink = 0x80 | 0x01;
constexpr unsigned prefixAutonomous = 0x40 | 0x02;

PackedAddress addressIn(const void *octets, std::uint8_t family)
{
    if (family == AF_INET6) {
        return PackedAddress::of(octets);
    }
    std::uint32_t number;
    std::memcpy(&number, octets, sizeof number);
    return {0, ntohl(number)};
}

// Zeros for an attribute that is absent or too short.
PackedAddress addressOf(const nlattr *attribute, std::uint8_t family)
{
    const std::size_t size = family == AF_INET6 ? sizeof(Bytes) : sizeof(in_addr_t);
    const bool whole = attribute != nullptr && mnl_attr_get_payload_len(attribute) >= size;
    return whole ? addressIn(mnl_attr_get_payload(attribute), family) : PackedAddress{};
}

// A gateway of the other version stands in an attribute of its own, behind its family.
void takeGateway(const Attributes<RTA_MAX> &attributes, std::uint8_t family, RouteNexthop &nexthop)
{
    const std::size_t size = family == AF_INET6 ? sizeof(Bytes) : sizeof(in_addr_t);
    if (const nlattr *gateway = attributes[RTA_GATEWAY];
        gateway != nullptr && mnl_attr_get_payload_len(gateway) >= size) {
        nexthop.gatewayFamily = family;
        nexthop.gateway = addressOf(gateway, family);
        return;
    }
    const nlattr *via = attributes[RTA_VIA];
    if (via == nullptr || mnl_attr_get_payload_len(via) < sizeof(rtvia) + sizeof(in_addr_t)) {
        return;
    }
    rtvia header;
    std::memcpy(&header, mnl_attr_get_payload(via), sizeof header);
    const bool ofIpv6 = header.rtvia_family == AF_INET6;
    if ((!ofIpv6 && header.rtvia_family != AF_INET) ||
        (ofIpv6 && mnl_attr_get_payload_len(via) < sizeof header + sizeof(Bytes))) {
        return;
    }
    nexthop.gatewayFamily = static_cast<std::uint8_t>(header.rtvia_family);
    nexthop.gateway =
        addressIn(static_cast<const std::uint8_t *>(mnl_attr_get_payload(via)) + sizeof header, nexthop.gatewayFamily);
}

// Mixes a nest or a number into what stands for all that is not told apart otherwise.
void mixIn(std::uint32_t &rest, const void *octets, std::size_t size)
{
    constexpr std::uint32_t prime = 16'777'619; // FNV-1a
    for (std::size_t i = 0; i < size; ++i) {
        rest = (rest ^ static_cast<const std::uint8_t *>(octets)[i]) * prime;
    }
}

void mixIn(std::uint32_t &rest, const Attributes<RTA_MAX> &attributes)
{
    for (const std::size_t type : {RTA_METRICS, RTA_FLOW, RTA_ENCAP_TYPE, RTA_ENCAP}) {
        if (const nlattr *attribute = attributes[type]; attribute != nullptr) {
            mixIn(rest, mnl_attr_get_payload(attribute), mnl_attr_get_payload_len(attribute));
        }
    }
}

// The kernel tells what is left in ticks, a negative number when the route has lapsed and was not dropped yet.
Deadline deadlineOf(const rta_cacheinfo &info, std::uint32_t now)
{
    if (info.rta_expires == 0) {
        return Deadline::never();
    }
    return Deadline::after(now,
                           info.rta_expires < 0 ? 0 : static_cast<std::uint32_t>(info.rta_expires / ticksPerSecond));
}

} // namespace

bool parseRoute(const nlmsghdr &message, std::uint8_t family, std::uint32_t now, Route &route)
{
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(rtmsg))) {
        return false;
    }
    const auto &header = *static_cast<const rtmsg *>(mnl_nlmsg_get_payload(&message));
    const unsigned bits = family == AF_INET6 ? 128 : 32;
    if (header.rtm_family != family || header.rtm_dst_len > bits || (header.rtm_flags & RTM_F_CLONED) != 0) {
        return false;
    }
    const Attributes<RTA_MAX> attributes(message, sizeof(rtmsg));
    std::vector<RouteNexthop> nexthops = std::move(route.nexthops); // for its memory
    nexthops.clear();
    route = Route{};
    route.destination = addressOf(attributes[RTA_DST], family);
    route.length = header.rtm_dst_len;
    if (family == AF_INET6) {
        route.source = addressOf(attributes[RTA_SRC], family);
        route.sourceLength = header.rtm_src_len;
    } else {
        route.tos = header.rtm_tos;
        route.ownAddress = static_cast<std::uint32_t>(addressOf(attributes[RTA_PREFSRC], family).low);
        route.rest = header.rtm_scope;
        mixIn(route.rest, attributes);
    }
    route.scope = header.rtm_scope;
    route.type = header.rtm_type;
    route.protocol = header.rtm_protocol;
    route.preference = attributes.get<std::uint8_t>(RTA_PREF).value_or(0);
    route.table = attributes.get<std::uint32_t>(RTA_TABLE).value_or(header.rtm_table);
    route.metric = attributes.get<std::uint32_t>(RTA_PRIORITY).value_or(0);
    route.until = deadlineOf(attributes.get<rta_cacheinfo>(RTA_CACHEINFO).value_or(rta_cacheinfo{}), now);
    route.nexthopId = attributes.get<std::uint32_t>(RTA_NH_ID).value_or(0);
    if (attributes[RTA_MULTIPATH] != nullptr) {
        eachNexthop(*attributes[RTA_MULTIPATH], [&](const rtnexthop &hop, const Attributes<RTA_MAX> &inner) {
            RouteNexthop nexthop;
            nexthop.ifIndex = static_cast<std::uint32_t>(hop.rtnh_ifindex);
            nexthop.dead = (hop.rtnh_flags & RTNH_F_DEAD) != 0;
            takeGateway(inner, family, nexthop);
            if (family == AF_INET) {
                mixIn(route.rest, &hop.rtnh_hops, sizeof hop.rtnh_hops);
                mixIn(route.rest, inner);
            }
            nexthops.push_back(nexthop);
        });
    } else if (attributes[RTA_OIF] != nullptr) {
        RouteNexthop nexthop;
        nexthop.ifIndex = attributes.get<std::uint32_t>(RTA_OIF).value_or(0);
        nexthop.dead = (header.rtm_flags & RTNH_F_DEAD) != 0;
        takeGateway(attributes, family, nexthop);
        nexthops.push_back(nexthop);
    }
    route.nexthops = std::move(nexthops);
    return true;
}

bool parseAdvertisedPrefix(const nlmsghdr &message, std::uint32_t now, AdvertisedPrefix &prefix)
{
    if (message.nlmsg_type != RTM_NEWPREFIX || message.nlmsg_len < mnl_nlmsg_size(sizeof(prefixmsg))) {
        return false;
    }
    const auto &header = *static_cast<const prefixmsg *>(mnl_nlmsg_get_payload(&message));
    const Attributes<PREFIX_MAX> attributes(message, sizeof(prefixmsg));
    const auto address = attributes.get<Bytes>(PREFIX_ADDRESS);
    const auto lifetimes = attributes.get<prefix_cacheinfo>(PREFIX_CACHEINFO);
    if (header.prefix_family != AF_INET6 || header.prefix_len > 128 || !address || !lifetimes) {
        return false;
    }
    prefix.key = PrefixKey::of(static_cast<std::uint32_t>(header.prefix_ifindex), PackedAddress::of(address->data()),
                               header.prefix_len);
    prefix.onLink = (header.prefix_flags & prefixOnLink) != 0;
    prefix.autonomous = (header.prefix_flags & prefixAutonomous) != 0;
    prefix.withdrawn = lifetimes->valid_time == 0;
    prefix.preferredUntil = Deadline::after(now, lifetimes->preferred_time);
    prefix.validUntil = Deadline::after(now, lifetimes->valid_time);
    return true;
}

} // namespace ipmib::platform
