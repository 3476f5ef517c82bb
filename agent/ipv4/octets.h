// SPDX-License-Identifier: BSD-3-Clause
// An IPv4 address as packets carry it.
#pragma once

#include "host/resolver.h"

#include <array>
#include <cstdint>

namespace ipmib::agent
{

using Ipv4Octets = std::array<std::uint8_t, 4>;

constexpr Ipv4Octets octetsOf(std::uint32_t address)
{
    return {static_cast<std::uint8_t>(address >> 24), static_cast<std::uint8_t>(address >> 16),
            static_cast<std::uint8_t>(address >> 8), static_cast<std::uint8_t>(address)};
}

inline host::Value ipAddress(const Ipv4Octets &octets)
{
    return {host::ValueType::ipAddress, 0, octets, {}};
}

} // namespace ipmib::agent
