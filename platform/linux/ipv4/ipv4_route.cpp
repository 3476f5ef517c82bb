// SPDX-License-Identifier: BSD-3-Clause
// One IPv4 route, as the kernel's messages tell of it.
#include "ipv4/ipv4_route.h"

#include "addressing/multipath.h"

#include <arpa/inet.h>
#include <sys/socket.h>

namespace ipmib::platform
{

namespace
{

constexpr std::uint8_t longestPrefix = 32;

void takeGateway(const Attributes<RTA_MAX> &attributes, Ipv4Hop &hop)
{
    const auto gateway = attributes.get<in_addr_t>(RTA_GATEWAY);
    hop.gateway = ntohl(gateway.value_or(INADDR_ANY));
    hop.hasGateway = gateway.has_value() || attributes[RTA_VIA] != nullptr;
}

} // namespace

bool parseIpv4Route(const nlmsghdr &message, Ipv4Route &route)
{
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(rtmsg))) {
        return false;
    }
    const auto &header = *static_cast<const rtmsg *>(mnl_nlmsg_get_payload(&message));
    if (header.rtm_family != AF_INET || header.rtm_dst_len > longestPrefix || (header.rtm_flags & RTM_F_CLONED) != 0) {
        return false;
    }
    const Attributes<RTA_MAX> attributes(message, sizeof(rtmsg));
    route.identity.table = attributes.get<std::uint32_t>(RTA_TABLE).value_or(header.rtm_table);
    route.identity.destination = ntohl(attributes.get<in_addr_t>(RTA_DST).value_or(INADDR_ANY));
    route.identity.length = header.rtm_dst_len;
    route.identity.tos = header.rtm_tos;
    route.identity.metric = attributes.get<std::uint32_t>(RTA_PRIORITY).value_or(0);
    route.type = header.rtm_type;
    route.nexthopId = attributes.get<std::uint32_t>(RTA_NH_ID).value_or(0);
    route.hops.clear();
    if (attributes[RTA_MULTIPATH] != nullptr) {
        eachNexthop(*attributes[RTA_MULTIPATH], [&](const rtnexthop &nexthop, const Attributes<RTA_MAX> &inner) {
            Ipv4Hop hop;
            hop.ifIndex = static_cast<std::uint32_t>(nexthop.rtnh_ifindex);
            hop.dead = (nexthop.rtnh_flags & RTNH_F_DEAD) != 0;
            takeGateway(inner, hop);
            route.hops.push_back(hop);
        });
    } else if (attributes[RTA_OIF] != nullptr) {
        Ipv4Hop hop;
        hop.ifIndex = attributes.get<std::uint32_t>(RTA_OIF).value_or(0);
        hop.dead = (header.rtm_flags & RTNH_F_DEAD) != 0;
        takeGateway(attributes, hop);
        route.hops.push_back(hop);
    }
    return true;
}

} // namespace ipmib::platform
