// SPDX-License-Identifier: BSD-3-Clause
// What this process may do beside what its user may: capabilities(7), as sets of bits.
#pragma once

#include <cstdint>

namespace ipmib::support
{

constexpr std::uint64_t capability(int number)
{
    return std::uint64_t{1} << number;
}

// Those that can be used or taken up.
std::uint64_t heldCapabilities();

// Lets go of all others, for good as far as that is allowed: programs that it starts have none of them either. False
// with errno set when the system refuses.
bool keepCapabilities(std::uint64_t wanted);

} // namespace ipmib::support
