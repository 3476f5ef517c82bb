// SPDX-License-Identifier: BSD-3-Clause
// What the tables of the IP-FORWARD-MIB share: values that routes have in all of them, and IPv4 destinations.
#pragma once

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

#include <bit>

namespace ipmib::tables
{

inline constexpr host::SubId zeroDotZero[] = {0, 0};
inline constexpr std::uint64_t noMetric = UINT32_MAX; // -1
inline constexpr std::uint32_t behindAllLengths = UINT32_MAX;

inline void follow(const IpmibRouteHooks &routes)
{
    char error[256] = "";
    if (routes.follow(error, sizeof error) != 0) {
        throw std::runtime_error(error);
    }
}

inline bool areRead(const IpmibRouteHooks &routes)
{
    return routes.are_read() != 0;
}

// Any protocol behind the last one that a table has a number for is "other".
inline Cell protocol(const IpmibRoute &route, std::uint32_t last)
{
    constexpr std::uint32_t other = 1;
    return integer(route.protocol <= last ? route.protocol : other);
}

// What it is since has no end.
inline Cell age(const IpmibRoute &route)
{
    return integer(std::min<std::uint32_t>(route.age_s, INT32_MAX));
}

inline Cell noSuchMetric(const IpmibRoute &)
{
    return integer(noMetric);
}

// The key of an IPv4 destination; all rows that have it are behind the key, but for a row that is the key itself.
inline IpmibRouteKey ipv4Key(std::uint32_t destination, std::uint32_t length)
{
    IpmibRouteKey key{};
    key.version = IPMIB_IPV4;
    std::ranges::copy(octetsOf(destination), key.destination);
    key.prefix_length = length;
    return key;
}

// A key behind all rows with this one's destination and prefix length.
inline IpmibRouteKey behind(IpmibRouteKey key)
{
    std::ranges::fill(key.policy, UINT32_MAX);
    key.next_hop_type = UINT32_MAX;
    return key;
}

inline std::uint32_t ipv4Destination(const IpmibRouteKey &key)
{
    const std::uint8_t *octets = key.destination;
    return std::uint32_t{octets[0]} << 24 | std::uint32_t{octets[1]} << 16 | std::uint32_t{octets[2]} << 8 | octets[3];
}

// 0.0.0.0 for none, and for a gateway that no table of IPv4 alone can show.
inline Ipv4Octets ipv4NextHop(const IpmibRouteKey &key)
{
    Ipv4Octets octets{};
    if (key.next_hop_type == IPMIB_NEXT_HOP_IPV4 || key.next_hop_type == IPMIB_NEXT_HOP_IPV4Z) {
        std::copy_n(key.next_hop, octets.size(), octets.begin());
    }
    return octets;
}

// The length of the longest mask that is not above this number; the number need not be a mask.
constexpr std::uint32_t lengthUpTo(std::uint32_t mask)
{
    return static_cast<std::uint32_t>(std::countl_one(mask));
}

} // namespace ipmib::tables
