// SPDX-License-Identifier: BSD-3-Clause
// Times of rows as values of sysUpTime.
#include "core/uptime.h"

#include <sys/times.h>

#include <cstdlib>

namespace ipmib::platform
{

// The clock of the kernel's time stamps begins to tick a moment after CLOCK_MONOTONIC, in ticks of its own: how many
// hundredths of a second it is behind, for good. times() reads it as well, from 2^32 ticks less 300 seconds before
// the boot. Which number of ticks a second the kernel was built with is told by the answer that makes sense.
std::uint32_t Uptime::measuredStampLag()
{
    constexpr std::int64_t ticksASecond[] = {100, 250, 300, 1000};
    constexpr std::int64_t wrapping = std::int64_t{1} << 32;
    constexpr std::int64_t ahead300 = 300 * std::int64_t{ticksPerSecond};
    const auto now = static_cast<std::int64_t>(monotonicMilliseconds() / tickMs);
    const auto ticks = static_cast<std::int64_t>(times(nullptr));
    std::int64_t lag = wrapping;
    for (const std::int64_t hertz : ticksASecond) {
        const std::int64_t found = now - (ticks - (wrapping * ticksPerSecond / hertz - ahead300));
        lag = std::llabs(found) < std::llabs(lag) ? found : lag;
    }
    return static_cast<std::uint32_t>(lag);
}

} // namespace ipmib::platform
