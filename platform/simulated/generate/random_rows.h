// SPDX-License-Identifier: BSD-3-Clause
// Rows made of random numbers.
#pragma once

#include "device/device.h"
#include "generate/random.h"

namespace ipmib::simulated
{

inline constexpr std::uint8_t subnetLength = 64; // bits of each interface's network

Mac randomMac(Random &random);
// Of a busy interface: in and out about the same, some of it errors.
CounterSet<IpmibIpCounters> randomCounters(Random &random);

// Add so many different rows to an interface, those with global addresses within its network.
void addRandomNeighbours(Random random, std::uint32_t count, const PackedAddress &subnet, std::uint32_t ifIndex,
                         Device &device);
void addRandomAddresses(Random random, std::uint32_t count, const PackedAddress &subnet, std::uint32_t ifIndex,
                        Device &device);
// Networks of their own, beside those that addresses bring along.
void addRandomPrefixes(Random random, std::uint32_t count, std::uint32_t ifIndex, Device &device);
void addRandomRouters(Random random, std::uint32_t count, std::uint32_t ifIndex, Device &device);

} // namespace ipmib::simulated
