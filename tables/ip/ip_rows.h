// SPDX-License-Identifier: BSD-3-Clause
// What the tables of IP share: hooks that may be missing, and how IPv4 stands in the indexes of tables for both
// versions.
#pragma once

#include "tables/ip/ipv4.h"
#include "tables/values.h"

#include "host/row_source.h"

#include <ipmib/platform_ip.h>

#include <span>
#include <stdexcept>

namespace ipmib::tables
{

inline constexpr std::uint64_t rowActive = 1;
inline constexpr std::uint64_t storageVolatile = 2;

// The type ipv4(1), the length 4 and the octets.
inline constexpr host::SubId ipv4Type = 1;
inline constexpr host::SubId ipv4Length = 4;
inline constexpr host::SubIdRange ofIpv4 = host::only(ipv4Type);
inline constexpr host::SubIdRange ofIpv4Length = host::only(ipv4Length);

inline Cell ticks(std::uint32_t hundredths)
{
    return host::Value{host::ValueType::timeTicks, hundredths, {}, {}};
}

inline void follow(const IpmibIpHooks &ip, std::uint32_t rows)
{
    char error[256] = "";
    if (ip.follow != nullptr && ip.follow(rows, error, sizeof error) != 0) {
        throw std::runtime_error(error);
    }
}

// One row, with the index of its version of IP.
template <host::SubId version>
struct VersionIndex {
    using Index = std::array<host::SubId, 1>;
    static constexpr host::SubIdRange shape[1] = {host::only(version)};
};

} // namespace ipmib::tables
