// SPDX-License-Identifier: BSD-3-Clause
// IPv4 addresses as identifiers and packets carry them.
#pragma once

#include "host/oid.h"

#include <ipmib/platform_ipv4.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace ipmib::tables
{

using Ipv4Octets = std::array<std::uint8_t, 4>;

constexpr Ipv4Octets octetsOf(std::uint32_t address)
{
    return {static_cast<std::uint8_t>(address >> 24), static_cast<std::uint8_t>(address >> 16),
            static_cast<std::uint8_t>(address >> 8), static_cast<std::uint8_t>(address)};
}

// Of a prefix so many bits long.
constexpr std::uint32_t maskOf(std::uint32_t length)
{
    return length == 0 ? 0 : UINT32_MAX << (32 - length);
}

// The address whose octets stand at a place of an index.
template <std::size_t N>
constexpr std::uint32_t addressAt(const std::array<host::SubId, N> &index, std::size_t place)
{
    return index[place] << 24 | index[place + 1] << 16 | index[place + 2] << 8 | index[place + 3];
}

// The rows are there, and are followed, from here on.
inline void follow(const IpmibIpv4Hooks &ipv4)
{
    char error[256] = "";
    if (ipv4.follow(error, sizeof error) != 0) {
        throw std::runtime_error(error);
    }
}

} // namespace ipmib::tables
