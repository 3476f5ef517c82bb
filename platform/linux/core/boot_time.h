// SPDX-License-Identifier: BSD-3-Clause
// The clock of every time stamp of the platform.
#pragma once

#include <cstdint>
#include <ctime>

namespace ipmib::platform
{

// Whole seconds since boot.
inline std::uint32_t secondsSinceBoot()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint32_t>(now.tv_sec);
}

} // namespace ipmib::platform
