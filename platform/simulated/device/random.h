// SPDX-License-Identifier: BSD-3-Clause
// Numbers that look random and follow from others.
#pragma once

#include <cstdint>

namespace ipmib::simulated
{

// Steele, Lea and Flood: SplitMix64.
constexpr std::uint64_t mixed(std::uint64_t x)
{
    x += 0x9E37'79B9'7F4A'7C15;
    x = (x ^ x >> 30) * 0xBF58'476D'1CE4'E5B9;
    x = (x ^ x >> 27) * 0x94D0'49BB'1331'11EB;
    return x ^ x >> 31;
}

// At least 0, less than 1.
constexpr double fractionOf(std::uint64_t x)
{
    return static_cast<double>(mixed(x) >> 11) * 0x1p-53;
}

} // namespace ipmib::simulated
