// SPDX-License-Identifier: BSD-3-Clause
// One IPv4 route, as the kernel's messages tell of it.
#pragma once

#include <libmnl/libmnl.h>

#include <cstdint>
#include <vector>

namespace ipmib::platform
{

struct Ipv4Hop {
    std::uint32_t ifIndex = 0;
    std::uint32_t gateway = 0; // 0 for none; an IPv6 gateway counts as none
    bool hasGateway = false;   // of either version
    bool dead = false;         // the kernel passes over it until its interface is up again
};

struct Ipv4Route {
    // A route with the same identity takes another one's place.
    struct Identity {
        std::uint32_t table;
        std::uint32_t destination;
        std::uint8_t length; // bits
        std::uint8_t tos;
        std::uint32_t metric;
        bool operator==(const Identity &) const = default;
    };
    Identity identity;
    std::uint8_t type;         // RTN_*
    std::uint32_t nexthopId;   // of a nexthop object; 0 for none
    std::vector<Ipv4Hop> hops; // with a nexthop object only when the kernel is set to tell both
};

// Of an RTM_NEWROUTE or RTM_DELROUTE message; false when it is not about an IPv4 route of the routing tables.
bool parseIpv4Route(const nlmsghdr &message, Ipv4Route &route);

} // namespace ipmib::platform
