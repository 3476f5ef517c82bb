// SPDX-License-Identifier: BSD-3-Clause
// The clocks of the platform: nearly all its time stamps count from the boot.
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

// Of the clock that stands still while the machine sleeps, by which an SNMP agent measures its own uptime.
inline std::uint64_t monotonicMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000 + static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000;
}

} // namespace ipmib::platform
