// SPDX-License-Identifier: BSD-3-Clause
// Indexes with IPv4 addresses as numbers: an ifIndex in the upper 32 bits, where there is one, and the address in the
// lower. As numbers they stand in the order of their identifiers.
#pragma once

#include "net_snmp.h"

#include <cstdint>
#include <optional>
#include <span>

namespace ipmib::agent
{

// How many bits the sub-identifiers of an index have.
inline constexpr unsigned addressIndex[] = {8, 8, 8, 8};
inline constexpr unsigned interfaceAndAddressIndex[] = {32, 8, 8, 8, 8};

// Nothing when it is no such index.
std::optional<std::uint64_t> indexNumber(std::span<const oid> index, std::span<const unsigned> bits);

// The highest number that does not stand behind the index, which may be too short, too long or out of every range; 0
// stands for itself, and is nobody's.
std::uint64_t lastNotBehind(std::span<const oid> index, std::span<const unsigned> bits);

} // namespace ipmib::agent
