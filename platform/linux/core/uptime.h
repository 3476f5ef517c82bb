// SPDX-License-Identifier: BSD-3-Clause
// The clocks of the platform, and times of rows: what happened at a moment of the kernel's clock is told as a value of
// sysUpTime, and what was there before sysUpTime began as 0.
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

class Uptime
{
  public:
    static constexpr std::uint64_t tickMs = 10; // of sysUpTime, and of the kernel's time stamps
    static constexpr std::uint32_t ticksPerSecond = 100;

    // The lag is that of the clock of the kernel's time stamps behind CLOCK_MONOTONIC, in hundredths of a second.
    explicit Uptime(std::uint32_t stampLag = measuredStampLag()) : stampLag_(stampLag) {}

    // sysUpTime was 0 then; until it is called, it was so at boot.
    void began(std::uint64_t monotonicMs) { began_ = (monotonicMs + tickMs - 1) / tickMs; }

    // Of a time stamp of the kernel: hundredths of a second since boot, modulo 2^32, so of the last 497 days.
    std::uint32_t at(std::uint32_t stamp) const
    {
        const std::uint64_t now = monotonicMilliseconds() / tickMs;
        const std::uint64_t uptime = now > began_ ? now - began_ : 0;
        const std::uint32_t age = ageAt(now, stamp);
        if (age > ~ahead) {
            return static_cast<std::uint32_t>(uptime); // the two clocks tick at different moments
        }
        return age < uptime ? static_cast<std::uint32_t>(uptime - age) : 0;
    }
    // Whether at() will go on to answer the same.
    bool isSettled(std::uint32_t stamp) const { return ageAt(monotonicMilliseconds() / tickMs, stamp) <= ~ahead; }
    // Of whole seconds since boot.
    std::uint32_t atSecond(std::uint32_t seconds) const { return atMs(std::uint64_t{seconds} * 1'000); }
    // Of a moment of CLOCK_MONOTONIC; 0 stands for a moment before the platform's start.
    std::uint32_t atMs(std::uint64_t monotonicMs) const
    {
        const std::uint64_t tick = monotonicMs / tickMs;
        return tick > began_ ? static_cast<std::uint32_t>(tick - began_) : 0;
    }

  private:
    static constexpr std::uint32_t ahead = 100; // ticks

    static std::uint32_t measuredStampLag();
    std::uint32_t ageAt(std::uint64_t now, std::uint32_t stamp) const
    {
        return static_cast<std::uint32_t>(now) - stampLag_ - stamp;
    }

    std::uint64_t began_ = 0; // hundredths of a second since boot
    std::uint32_t stampLag_;
};

} // namespace ipmib::platform
