// SPDX-License-Identifier: BSD-3-Clause
// IPv4 neighbours among the rows that platforms keep.
#pragma once

#include "neighbour_rows.h"

#include <ipmib/platform_ipv4.h>

namespace ipmib::platform
{

inline NeighbourKey ipv4Neighbour(std::uint32_t ifIndex, std::uint32_t address)
{
    return {ifIndex, 0, address};
}

// As ipNetToMediaTable shows it, which has no column for the state: what has not been resolved is invalid there.
void describe(const Neighbour &neighbour, IpmibIpv4Neighbour &row);

} // namespace ipmib::platform
