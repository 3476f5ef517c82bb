// SPDX-License-Identifier: BSD-3-Clause
// One IPv6 route, and one prefix of a router advertisement, as the kernel's messages tell of them.
#pragma once

#include "addressing/deadline.h"
#include "addressing/prefix_key.h"

#include <libmnl/libmnl.h>

#include <vector>

namespace ipmib::platform
{

struct RouteNexthop {
    std::uint32_t ifIndex = 0;
    bool hasGateway = false;
    bool dead = false; // the kernel passes over it until its interface is up again
    PackedAddress gateway;
};

struct Route {
    PackedAddress destination;
    PackedAddress source;          // where only packets from some sources take the route
    std::uint8_t length = 0;       // bits
    std::uint8_t sourceLength = 0; // bits; 0 for packets from everywhere
    std::uint8_t type = 0;         // RTN_*
    std::uint8_t protocol = 0;     // RTPROT_*
    std::uint8_t preference = 0;   // as in an advertisement: 0 medium, 1 high, 3 low
    std::uint32_t table = 0;
    std::uint32_t metric = 0;
    Deadline until;
    std::uint32_t nexthopId = 0;        // of a nexthop object; 0 for none
    std::vector<RouteNexthop> nexthops; // with a nexthop object only when the kernel is set to tell both
};

// Of an RTM_NEWROUTE or RTM_DELROUTE message; false when it is not about an IPv6 route of the routing tables (the
// kernel lists its cache of path MTUs among them). Now is in seconds since boot.
bool parseRoute(const nlmsghdr &message, std::uint32_t now, Route &route);

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
