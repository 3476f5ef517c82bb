// SPDX-License-Identifier: BSD-3-Clause
// One route of either version of IP, and one prefix of a router advertisement, as the kernel's messages tell of them.
#pragma once

#include "addresses/deadline.h"
#include "addresses/packed_address.h"

#include <libmnl/libmnl.h>
#include <sys/socket.h>

#include <vector>

namespace ipmib::platform
{

struct RouteNexthop {
    std::uint32_t ifIndex = 0;
    std::uint8_t gatewayFamily = 0; // AF_INET, AF_INET6, or 0 for none
    bool dead = false;              // the kernel passes over it until its interface is up again
    PackedAddress gateway;          // of IPv4 a number below 2^32, as the destination

    bool hasGateway() const { return gatewayFamily != 0; }
    std::uint32_t ipv4Gateway() const { return gatewayFamily == AF_INET ? static_cast<std::uint32_t>(gateway.low) : 0; }
};

struct Route {
    PackedAddress destination;
    PackedAddress source;          // where only packets from some sources take the route
    std::uint8_t length = 0;       // bits
    std::uint8_t sourceLength = 0; // bits; 0 for packets from everywhere
    std::uint8_t type = 0;         // RTN_*
    std::uint8_t protocol = 0;     // RTPROT_*
    std::uint8_t tos = 0;          // of IPv4
    std::uint8_t scope = 0;        // RT_SCOPE_*
    std::uint8_t preference = 0;   // as in an advertisement: 0 medium, 1 high, 3 low
    std::uint32_t table = 0;
    std::uint32_t metric = 0;
    std::uint32_t ownAddress = 0; // of IPv4: what packets that take it have as their source; 0 for none
    std::uint32_t rest = 0;       // of IPv4: routes that differ in other ways have other numbers
    Deadline until;
    std::uint32_t nexthopId = 0;        // of a nexthop object; 0 for none
    std::vector<RouteNexthop> nexthops; // with a nexthop object only when the kernel is set to tell both
};

// Of an RTM_NEWROUTE or RTM_DELROUTE message; false when it is not about a route of this family in the routing tables
// (the kernel lists its cache of path MTUs among them). Now is in seconds since boot.
bool parseRoute(const nlmsghdr &message, std::uint8_t family, std::uint32_t now, Route &route);

// A prefix that a router has just advertised on an interface.
struct AdvertisedPrefix {
    PrefixKey key;
    bool onLink;
    bool autonomous;
    bool withdrawn; // valid for no time at all
    Deadline preferredUntil;
    Deadline validUntil;
};

// Of an RTM_NEWPREFIX message; false when it does not tell of an IPv6 prefix with its lifetimes.
bool parseAdvertisedPrefix(const nlmsghdr &message, std::uint32_t now, AdvertisedPrefix &prefix);

} // namespace ipmib::platform
