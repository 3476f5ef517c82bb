// SPDX-License-Identifier: BSD-3-Clause
// Makes many interfaces, addresses, prefixes, neighbours and routers from a few numbers.
#pragma once

#include "device/device.h"
#include "scenario/value.h"

#include <cstdint>

namespace ipmib::simulated
{

// SplitMix64.
class Random
{
  public:
    // Different streams of one seed have nothing to do with each other.
    Random(std::uint64_t seed, std::uint64_t stream) : state_(seed)
    {
        state_ = next() ^ stream;
        next();
    }

    std::uint64_t next()
    {
        std::uint64_t mixed = state_ += 0x9E37'79B9'7F4A'7C15;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58'476D'1CE4'E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D0'49BB'1331'11EB;
        return mixed ^ (mixed >> 31);
    }

    // 0 to limit - 1; the limits are far below 2^64, so that no number is noticeably more frequent.
    std::uint64_t below(std::uint64_t limit) { return next() % limit; }

  private:
    std::uint64_t state_;
};

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

// {"interfaces": {"count": 64, "name": "xe"}, "neighbours": 1000000}: the member "generate" of a scenario. The same
// seed makes the same device.
void generate(const Value &value, std::uint32_t seed, Device &device);

} // namespace ipmib::simulated
