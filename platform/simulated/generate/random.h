// SPDX-License-Identifier: BSD-3-Clause
// Numbers that look random and are the same for the same seed, on every machine and with every library.
#pragma once

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

} // namespace ipmib::simulated
