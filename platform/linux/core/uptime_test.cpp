// SPDX-License-Identifier: BSD-3-Clause
// Moments of the kernel's clock as values of sysUpTime.
#include "core/uptime.h"

#include <gtest/gtest.h>

namespace
{

using namespace ipmib::platform;

std::uint32_t now()
{
    return static_cast<std::uint32_t>(monotonicMilliseconds() / Uptime::tickMs);
}

TEST(Uptime, countsFromBootUntilSomebodySaysOtherwise)
{
    const Uptime uptime(0);
    const std::uint32_t stamp = now() - 100;
    EXPECT_EQ(uptime.at(stamp), stamp);
    EXPECT_EQ(uptime.atMs(12'345), 1'234u);
    EXPECT_EQ(uptime.atSecond(12), 1'200u);
}

TEST(Uptime, whatWasThereBeforeIsZero)
{
    Uptime uptime(0);
    const std::uint64_t began = (monotonicMilliseconds() / 10 - 500) * 10;
    uptime.began(began);
    const auto stamp = static_cast<std::uint32_t>(began / 10);
    EXPECT_EQ(uptime.at(stamp + 200), 200u);
    EXPECT_EQ(uptime.at(stamp), 0u);
    EXPECT_EQ(uptime.at(stamp - 1), 0u);
    EXPECT_EQ(uptime.at(0), 0u);
    EXPECT_EQ(uptime.at(stamp - (1u << 31)), 0u) << "half of what a stamp can tell";
    EXPECT_EQ(uptime.atMs(began + 2'000), 200u);
    EXPECT_EQ(uptime.atMs(began), 0u);
    EXPECT_EQ(uptime.atMs(0), 0u);
    EXPECT_EQ(uptime.atSecond(0), 0u);
    uptime.began(monotonicMilliseconds() + 60'000);
    EXPECT_EQ(uptime.at(now()), 0u);
}

// A stamp may be of a tick that has not begun by the other clock.
TEST(Uptime, nothingLiesAheadOfNow)
{
    Uptime uptime(0);
    uptime.began(monotonicMilliseconds() - 1'000);
    EXPECT_LE(uptime.at(now() + 5), 105u);
    EXPECT_GE(uptime.at(now() + 5), 99u);
    // Nor does the value depend on when somebody asks.
    const std::uint32_t stamp = now() - 50;
    const std::uint32_t first = uptime.at(stamp);
    for (const std::uint64_t end = monotonicMilliseconds() + 30; monotonicMilliseconds() < end;) {
        ASSERT_EQ(uptime.at(stamp), first);
    }
}

// The kernel's stamps are of a clock that began to tick later.
TEST(Uptime, stampsAreMovedToTheClockOfSysUpTime)
{
    constexpr std::uint32_t lag = 11;
    Uptime uptime(lag);
    const std::uint64_t began = (monotonicMilliseconds() / 10 - 500) * 10;
    uptime.began(began);
    const auto stamp = static_cast<std::uint32_t>(began / 10);
    EXPECT_EQ(uptime.at(stamp + 200), 200u + lag);
    EXPECT_EQ(uptime.at(stamp - lag), 0u);
    EXPECT_EQ(uptime.at(stamp - lag + 1), 1u);
    EXPECT_EQ(uptime.atMs(began + 2'000), 200u) << "this is of that clock already";
}

} // namespace
