// SPDX-License-Identifier: BSD-3-Clause
// The rows that a platform has, list by list. What breaks a promise is told to the probe on the way.
#pragma once

#include "probe.h"

#include <vector>

namespace ipmib::portcheck
{

enum class Selection { standard, withNeighbours };

std::vector<std::uint32_t> interfacesOf(Probe &probe, Selection selection);

enum NeighbourMode : std::uint32_t { outsideLinkLocal = 1, withinLinkLocal = 2 };
std::vector<NeighbourEntry> neighboursOf(Probe &probe, std::uint32_t ifIndex, NeighbourMode mode);

std::vector<FullPrefixRecord> prefixesOf(Probe &probe, std::uint32_t ifIndex);

std::vector<FullAddressRecord> addressesOf(Probe &probe);

enum RouterClass : std::uint32_t { linkLocalRouters = 2, globalRouters = 14 };
std::vector<GatewayRecord> routersOf(Probe &probe, RouterClass routerClass);
// Of both classes, without a word of what is wrong with them.
std::vector<GatewayRecord> routersQuietly(Probe &probe);

} // namespace ipmib::portcheck
