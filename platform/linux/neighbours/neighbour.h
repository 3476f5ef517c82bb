// SPDX-License-Identifier: BSD-3-Clause
// How the kernel's messages speak of neighbours.
#pragma once

#include "neighbour_rows.h"

#include <libmnl/libmnl.h>

#include <cstdint>

namespace ipmib::platform
{

enum class NeighbourNews { ignored, present, gone };

// Bytes of an address of AF_INET6 or AF_INET.
std::size_t addressSize(std::uint8_t family);

// What a message says of neighbours in the family AF_INET6 or AF_INET. `ignored` is about something that is no such
// neighbour of ours; `gone` leaves only the key.
NeighbourNews readNeighbour(const nlmsghdr &message, std::uint8_t family, std::uint64_t nowMs, Neighbour &neighbour);

} // namespace ipmib::platform
