// SPDX-License-Identifier: BSD-3-Clause
// The routes of a simulated device, up to millions of them: small rows in the order of their keys. What many rows have
// in common is kept once.
#pragma once

#include "addresses/packed_address.h"

#include <ipmib/platform_ip.h>
#include <ipmib/platform_routes.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace ipmib::simulated
{

struct RouteDestination {
    std::uint32_t version = 0;      // IPMIB_IPV4 or IPMIB_IPV6
    platform::PackedAddress prefix; // IPv4 stands in the upper 32 bits
    std::uint32_t length = 0;       // bits

    friend auto operator<=>(const RouteDestination &, const RouteDestination &) = default;
};

// All of a row but for its destination, and for its age, which is told by the moment of the last change.
struct RouteWay {
    IpmibRoute route{};
    std::uint32_t changedS = 0; // since boot
};

class Routes
{
  public:
    using Place = std::size_t; // of a row; 0 is that of the first one

    // Rows to come are of this way.
    void begin(const RouteWay &way);
    // The name of the row is the caller's own.
    void add(const RouteDestination &destination, std::uint32_t name);
    // All have been added: sorts them. Answers with the name of one that is there twice, if there is any.
    std::optional<std::uint32_t> complete();

    // Leaves the first so many rows, and remembers how many it has thrown away.
    void cut(std::uint64_t rows);
    std::uint64_t thrownAway() const { return thrownAway_; }

    // Behind the last row.
    Place end() const { return rows_.size(); }
    // Rows of a version by ifIndex.
    const std::map<std::uint32_t, std::uint64_t> &counts(std::uint32_t version) const
    {
        return counts_[version == IPMIB_IPV6 ? 1 : 0];
    }
    // The row with this key; the end when there is none.
    Place find(const IpmibRouteKey &key) const;
    // The first row behind the key.
    Place after(const IpmibRouteKey &key) const;
    // The first row with this destination; the end when there is none.
    Place find(const RouteDestination &destination) const;
    // The next one of the same destination; the end when there is none.
    Place sibling(Place place) const;

    const RouteWay &way(Place place) const { return ways_[rows_[place].way]; }
    std::uint32_t version(Place place) const { return rows_[place].version; }
    // All but the age.
    void fillRoute(Place place, IpmibRoute &row) const;

  private:
    struct Row {
        platform::PackedAddress prefix;
        std::uint32_t way;
        std::uint8_t version;
        std::uint8_t length;

        RouteDestination destination() const { return {version, prefix, length}; }
    };
    struct Added {
        Row row;
        std::uint32_t name;
    };

    template <class Before>
    Place firstNot(Before before) const;
    void sortWays();
    std::strong_ordering compare(const Row &row, const IpmibRouteKey &key) const;

    std::vector<RouteWay> ways_; // in the order of their keys
    std::vector<Added> added_;
    std::vector<Row> rows_;
    std::map<std::uint32_t, std::uint64_t> counts_[2];
    std::uint64_t thrownAway_ = 0;
    mutable Place last_ = 0; // of the last lookup: walks go on from there
};

} // namespace ipmib::simulated
