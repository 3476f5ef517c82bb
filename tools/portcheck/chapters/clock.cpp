// SPDX-License-Identifier: BSD-3-Clause
// Time since boot.
#include "chapters.h"
#include "judge.h"

#include <chrono>
#include <thread>

namespace ipmib::portcheck
{

void checkClock(Probe &probe, host::Resolver &)
{
    const std::uint32_t now = probe.secondsSinceBoot();
    if (looksSince1970(now)) {
        probe.broken(Promise::clock, "TIME_GetSystemBootTime",
                     "it answers " + std::to_string(now) + ": seconds since 1970 look like this, not since boot");
    }
    for (std::uint32_t reading = 0, latest = now; reading < 20; ++reading) {
        const std::uint32_t later = probe.secondsSinceBoot();
        if (later < latest) {
            probe.broken(Promise::clock, "TIME_GetSystemBootTime",
                         "it answers " + std::to_string(later) + " behind " + std::to_string(latest) +
                             ": it runs backwards");
            return;
        }
        latest = later;
    }
    if (probe.clockTime == std::chrono::milliseconds(0)) {
        return;
    }
    const auto begin = std::chrono::steady_clock::now();
    const std::uint32_t before = probe.secondsSinceBoot();
    std::this_thread::sleep_for(probe.clockTime);
    probe.beginPacket();
    const std::uint32_t counted = probe.secondsSinceBoot() - before;
    const auto passed =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin).count();
    // At least one boundary of a second lies in between.
    if (counted < 1 || counted > passed + 1) {
        probe.broken(Promise::clock, "TIME_GetSystemBootTime",
                     "it counted " + std::to_string(static_cast<std::int32_t>(counted)) + " in " +
                         std::to_string(passed) + " seconds");
    }
}

} // namespace ipmib::portcheck
