// SPDX-License-Identifier: BSD-3-Clause
// One IPv6 neighbour as the mirror keeps it, and how the kernel's messages speak of it.
#pragma once

#include <libmnl/libmnl.h>

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
enum class NeighbourType : std::uint8_t { dynamic = 2, fixed = 3 };
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
    std::uint8_t linkLayer[6];  // zeros when the kernel has none, or one of another length
    NeighbourType type;
    NeighbourState state;

    NeighbourKey key() const { return {ifIndex, high, low}; }
};
static_assert(sizeof(Neighbour) == 32);

enum class NeighbourNews { ignored, present, gone };

// What a message says. `ignored` is about something that is no neighbour of ours; `gone` leaves only the key.
NeighbourNews readNeighbour(const nlmsghdr &message, std::uint64_t nowMs, Neighbour &neighbour);

} // namespace ipmib::platform
