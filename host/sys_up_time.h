// SPDX-License-Identifier: BSD-3-Clause
// When sysUpTime was 0, for values that are moments of it. An agent tells it of itself, a sub-agent of its master;
// until then it is the machine's start.
#pragma once

#include "source.h"

#include <chrono>
#include <cstdint>

namespace ipmib::host
{

class SysUpTime
{
  public:
    // What sysUpTime is at this moment, in hundredths of a second.
    void isNow(std::uint64_t ticks)
    {
        const std::uint64_t elapsedMs = ticks * msPerTick;
        const std::uint64_t now = nowMs();
        startMs_ = now > elapsedMs ? now - elapsedMs : 0;
    }

    // sysUpTime at a moment of CLOCK_MONOTONIC in milliseconds; 0 for 0 and for what was before its start.
    Value at(std::uint64_t monotonicMs) const
    {
        const std::uint64_t elapsedMs = monotonicMs > startMs_ ? monotonicMs - startMs_ : 0;
        return {ValueType::timeTicks, elapsedMs / msPerTick & UINT32_MAX, {}, {}};
    }

  private:
    static constexpr std::uint64_t msPerTick = 10;

    static std::uint64_t nowMs()
    {
        using namespace std::chrono;
        return static_cast<std::uint64_t>(
            duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count()); // CLOCK_MONOTONIC
    }

    std::uint64_t startMs_ = 0;
};

} // namespace ipmib::host
