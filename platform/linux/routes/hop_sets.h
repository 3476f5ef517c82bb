// SPDX-License-Identifier: BSD-3-Clause
// Where routes lead: sets of next hops, each kept once however many routes share it.
#pragma once

#include "addresses/packed_address.h"
#include "routes/interned.h"

#include <compare>
#include <cstdint>
#include <vector>

namespace ipmib::platform
{

struct Hop {
    PackedAddress gateway;     // of IPv4 a number below 2^32
    std::uint32_t ifIndex = 0; // 0 for none
    std::uint8_t family = 0;   // of the gateway: AF_INET, AF_INET6, or 0 for none

    friend auto operator<=>(const Hop &, const Hop &) = default;
};

// Either hops, ascending, of which there is at least one; or a nexthop object, which other tables know.
struct HopSet {
    Hop first;
    std::vector<Hop> others;
    std::uint32_t object = 0; // 0 for none

    static HopSet of(std::vector<Hop> hops);
    static HopSet ofObject(std::uint32_t id);
    bool operator==(const HopSet &) const = default;
    std::uint64_t hash() const;

    // For a set of hops.
    std::size_t size() const { return 1 + others.size(); }
    // Calls visit(hop) for each one, until it returns false; false when one did.
    template <class Visit>
    bool each(Visit visit) const
    {
        if (!visit(first)) {
            return false;
        }
        for (const Hop &hop : others) {
            if (!visit(hop)) {
                return false;
            }
        }
        return true;
    }
};
using HopSets = Interned<HopSet>;

// What else routes have in common.
struct RouteClass {
    std::uint32_t table = 0;
    std::uint32_t metric = 0;
    std::uint32_t rest = 0;       // routes that differ in other ways have other numbers
    std::uint32_t ownAddress = 0; // of IPv4: the address that packets have as their source; 0 for any
    PackedAddress source;         // where only packets from some sources take the route
    std::uint8_t sourceLength = 0;
    std::uint8_t tos = 0;
    std::uint8_t type = 0;     // RTN_*
    std::uint8_t protocol = 0; // RTPROT_*
    bool withinHost = false;   // stays when an interface goes down

    bool operator==(const RouteClass &) const = default;
    std::uint64_t hash() const;
    // A route takes the place of others with the same identity, destination and length.
    bool sameIdentity(const RouteClass &other) const
    {
        return table == other.table && metric == other.metric && tos == other.tos && source == other.source &&
               sourceLength == other.sourceLength;
    }
};
using RouteClasses = Interned<RouteClass>;

} // namespace ipmib::platform
