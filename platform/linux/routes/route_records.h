// SPDX-License-Identifier: BSD-3-Clause
// The routes of one version of IP, by destination: one record each, as small as a million of them ask for.
#pragma once

#include "addresses/packed_address.h"
#include "ordered_table.h"

#include <functional>
#include <memory>
#include <optional>

namespace ipmib::platform
{

// Ordered by destination, length, and then so that each record has a place of its own.
struct RouteRecord {
    PackedAddress destination; // of IPv4 a number below 2^32
    std::uint8_t length;       // bits
    std::uint32_t routeClass;  // below mostClasses
    std::uint32_t hops;
    std::uint32_t changed; // seconds since boot; no part of the order
};

class RouteRecords
{
  public:
    static constexpr std::uint32_t mostClasses = 1u << 24;

    // Of AF_INET, 16 octets a record, or AF_INET6, 28.
    static std::unique_ptr<RouteRecords> of(std::uint8_t family);
    virtual ~RouteRecords() = default;

    virtual std::size_t size() const = 0;
    virtual std::size_t memory() const = 0;
    // The first one at the key or behind it; behind it. False for none. Key and record may be the same.
    virtual bool atOrAfter(const RouteRecord &key, RouteRecord &found) const = 0;
    virtual bool after(const RouteRecord &key, RouteRecord &found) const = 0;
    // True when it was added. One that is there keeps its time.
    virtual bool put(const RouteRecord &record, Generation generation) = 0;
    virtual bool erase(const RouteRecord &record) = 0;
    // The same as atOrAfter, and after, of those records whose hops count.
    virtual bool next(const RouteRecord &key, bool behind, const std::function<bool(std::uint32_t hops)> &count,
                      RouteRecord &found) const = 0;

    // A pass over all records in pieces of some thousand, between which they may change: takes out those for which
    // leaves() says so, which must not look at the records. False when the pass has ended.
    using Leaves = std::function<bool(const RouteRecord &, Generation)>;
    using Place = std::optional<RouteRecord>; // where a piece begins; a pass begins with none
    virtual bool eraseSome(Place &from, const Leaves &leaves) = 0;
};

} // namespace ipmib::platform
