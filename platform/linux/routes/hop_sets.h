// SPDX-License-Identifier: BSD-3-Clause
// Where routes lead: sets of next hops, each kept once however many routes share it.
#pragma once

#include "addresses/packed_address.h"
#include "ordered_table.h"
#include "routes/interned.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <tuple>
#include <vector>

namespace ipmib::platform
{

struct Hop {
    PackedAddress gateway;     // of IPv4 a number below 2^32
    std::uint32_t ifIndex = 0; // 0 for none
    std::uint8_t family = 0;   // of the gateway: AF_INET, AF_INET6, or 0 for none

    friend auto operator<=>(const Hop &, const Hop &) = default;
};

// Either hops, ascending, of which there is at least one; or a nexthop object, which other tables know. With all else
// that the kernel goes by when it takes routes along: those that share it go together.
struct HopSet {
    Hop first;
    std::vector<Hop> others;
    std::uint32_t object = 0;     // 0 for none
    std::uint32_t ownAddress = 0; // of IPv4: the address that packets have as their source; 0 for any
    bool withinHost = false;      // stays when an interface goes down

    static HopSet of(std::vector<Hop> hops);
    static HopSet ofObject(std::uint32_t id);
    bool operator==(const HopSet &) const = default;
    bool leadsSameWay(const HopSet &other) const
    {
        return object == other.object && first == other.first && others == other.others;
    }
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

class HopSets
{
  public:
    static constexpr std::uint32_t none = Interned<HopSet>::none;
    enum class By : std::uint32_t { link, object, ownAddress };

    // As those of Interned.
    std::uint32_t find(const HopSet &set) const { return sets_.find(set); }
    std::uint32_t take(const HopSet &set);
    void leave(std::uint32_t number);
    void retire(std::uint32_t number);
    bool isRetired(std::uint32_t number) const { return sets_.isRetired(number); }
    std::uint32_t uses(std::uint32_t number) const { return sets_.uses(number); }
    const HopSet &operator[](std::uint32_t number) const { return sets_[number]; }

    // The sets that lead to a link, name an object, or have an address as the source; not those that are retired.
    std::vector<std::uint32_t> of(By by, std::uint32_t which) const;
    std::size_t memory() const { return sets_.memory() + places_.memory(); }

  private:
    struct Place {
        By by;
        std::uint32_t which;
        std::uint32_t number;

        auto tied() const { return std::tie(by, which, number); }
        bool operator<(const Place &other) const { return tied() < other.tied(); }
    };
    template <class Visit>
    void eachPlace(std::uint32_t number, Visit visit) const;
    void forgetPlaces(std::uint32_t number);

    Interned<HopSet> sets_;
    OrderedTable<Place, std::less<>> places_;
};

// What else routes have in common.
struct RouteClass {
    std::uint32_t table = 0;
    std::uint32_t metric = 0;
    std::uint32_t rest = 0; // routes that differ in other ways have other numbers
    PackedAddress source;   // where only packets from some sources take the route
    std::uint8_t sourceLength = 0;
    std::uint8_t tos = 0;
    std::uint8_t type = 0;     // RTN_*
    std::uint8_t protocol = 0; // RTPROT_*

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
