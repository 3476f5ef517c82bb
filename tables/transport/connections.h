// SPDX-License-Identifier: BSD-3-Clause
// Where the ends of connections stand in the indexes of the tables of TCP and UDP.
#pragma once

#include "tables/values.h"

#include "host/row_source.h"

#include <ipmib/platform_connections.h>

#include <algorithm>
#include <array>

namespace ipmib::tables
{

inline constexpr host::SubIdRange anyPort{0, UINT16_MAX};

// The places of one end: type, length, octets, port.
inline constexpr std::size_t longestAddress = sizeof(IpmibEnd::octets);
inline constexpr std::size_t placesOfEnd = 2 + longestAddress + 1;

template <std::size_t N>
constexpr void shapeOfEnd(std::array<host::SubIdRange, N> &shape, std::size_t place)
{
    shape[place] = {IPMIB_END_ANY, IPMIB_END_IPV6Z};
    shape[place + 1] = host::lengthUpTo(longestAddress);
    for (std::size_t i = 0; i < longestAddress; ++i) {
        shape[place + 2 + i] = host::anyOctet;
    }
    shape[place + 2 + longestAddress] = anyPort;
}

template <std::size_t N>
IpmibEnd endAt(const std::array<host::SubId, N> &index, std::size_t place)
{
    IpmibEnd end{index[place], index[place + 1], {}, index[place + 2 + longestAddress]};
    std::transform(index.begin() + place + 2, index.begin() + place + 2 + longestAddress, end.octets,
                   [](host::SubId octet) { return static_cast<std::uint8_t>(octet); });
    return end;
}

template <std::size_t N>
void putEnd(const IpmibEnd &end, std::array<host::SubId, N> &index, std::size_t place)
{
    index[place] = end.type;
    index[place + 1] = std::min<std::uint32_t>(end.size, longestAddress);
    std::copy_n(end.octets, longestAddress, index.begin() + place + 2);
    index[place + 2 + longestAddress] = end.port;
}

} // namespace ipmib::tables
