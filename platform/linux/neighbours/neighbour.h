// SPDX-License-Identifier: BSD-3-Clause
// How the kernel's messages speak of IPv6 neighbours.
#pragma once

#include "neighbour_rows.h"

#include <libmnl/libmnl.h>

#include <cstdint>

namespace ipmib::platform
{

enum class NeighbourNews { ignored, present, gone };

// What a message says. `ignored` is about something that is no neighbour of ours; `gone` leaves only the key.
NeighbourNews readNeighbour(const nlmsghdr &message, std::uint64_t nowMs, Neighbour &neighbour);

} // namespace ipmib::platform
