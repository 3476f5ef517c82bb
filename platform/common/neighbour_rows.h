// SPDX-License-Identifier: BSD-3-Clause
// Neighbours as platforms keep and report them. An IPv4 address is a number below 2^32.
#pragma once

#include "ordered_table.h"

#include <ipmib/platform_ipv4.h>
#include <ipmib/records.h>

#include <compare>
#include <cstdint>

namespace ipmib::platform
{

// The order of rows: interface, then address. The address in two numbers compares as its 16 bytes do.
struct NeighbourKey {
    std::uint32_t ifIndex;
    std::uint64_t high;
    std::uint64_t low;
    auto operator<=>(const NeighbourKey &) const = default;

    static NeighbourKey of(std::uint32_t ifIndex, const void *address);
    void copyAddress(void *address) const;
    bool isLinkLocal() const { return high >> 54 == 0xfe80 >> 6; }
};

// Codes as the tables have them; that of a type is one below what a manager sees.
enum class NeighbourType : std::uint8_t { invalid = 1, dynamic = 2, fixed = 3, local = 4 };
enum class NeighbourState : std::uint8_t {
    reachable = 1,
    stale = 2,
    delay = 3,
    probe = 4,
    invalid = 5,
    unknown = 6,
    incomplete = 7
};

// 32 bytes, however many neighbours there are.
struct Neighbour {
    std::uint64_t high;
    std::uint64_t low;
    std::uint32_t ifIndex;
    std::uint32_t lastUpdatedS; // since boot
    std::uint8_t linkLayer[6];  // zeros when there is none, or one of another length
    NeighbourType type;
    NeighbourState state;

    NeighbourKey key() const { return {ifIndex, high, low}; }
};
static_assert(sizeof(Neighbour) == 32);

struct ByNeighbourKey {
    bool operator()(const Neighbour &a, const Neighbour &b) const { return a.key() < b.key(); }
    bool operator()(const Neighbour &a, const NeighbourKey &b) const { return a.key() < b; }
    bool operator()(const NeighbourKey &a, const Neighbour &b) const { return a < b.key(); }
};
using NeighbourRows = OrderedTable<Neighbour, ByNeighbourKey>;

// The next one of the key's interface, outside or inside fe80::/10; null for none.
const Neighbour *afterGlobal(const NeighbourRows &rows, const NeighbourKey &key);
const Neighbour *afterLinkLocal(const NeighbourRows &rows, const NeighbourKey &key);

NeighbourEntry entryOf(const Neighbour &neighbour);

inline NeighbourKey ipv4Neighbour(std::uint32_t ifIndex, std::uint32_t address)
{
    return {ifIndex, 0, address};
}

// As ipNetToMediaTable shows it, which has no column for the state: what has not been resolved is invalid there.
void describe(const Neighbour &neighbour, IpmibIpv4Neighbour &row);

} // namespace ipmib::platform
