// SPDX-License-Identifier: BSD-3-Clause
// The clock of every time stamp of the platform.
#pragma once

#include <cstdint>
#include <ctime>

namespace ipmib::platform
{

inline std::uint64_t millisecondsSinceBoot()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000 + static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000;
}

// Whole seconds since boot.
inline std::uint32_t secondsSinceBoot()
{
    return static_cast<std::uint32_t>(millisecondsSinceBoot() / 1'000);
}

} // namespace ipmib::platform
