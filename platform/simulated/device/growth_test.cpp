// SPDX-License-Identifier: BSD-3-Clause
// Shapes of a counter's growth: they never fall, and what they come to is known.
#include "device/counters.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <random>

namespace ipmib::simulated
{
namespace
{

Growth growth(const std::string &text)
{
    const Json json = Json::parse(text);
    return Growth::read(Value(json));
}

Counter counter(const std::string &text)
{
    const Json json = Json::parse(text);
    return Counter::read(Value(json));
}

constexpr Time day = 86'400 * msPerSecond;

// Shapes of many sizes, among them those that stand still for a while, where rounding would show.
constexpr const char *shapes[] = {
    R"({"ramp": {"from": 0, "to": 1000, "seconds": 60}})",
    R"({"ramp": {"from": 1e12, "to": 0, "seconds": 2678400, "at": 5}})",
    R"({"ramp": {"from": 0.001, "to": 0, "seconds": 86400}})",
    R"({"day": {"mean": 1000}})",
    R"({"day": {"mean": 1e12, "period": 2678400}})",
    R"({"day": {"mean": 3.3, "swing": 3.3, "period": 0.7, "peak": 0.1}})",
    R"({"noise": {"mean": 1000, "seed": 1}})",
    R"({"noise": {"mean": 1e12, "step": 86400, "seed": 2}})",
    R"({"noise": {"mean": 1.5, "step": 0.9}})",
    R"({"burst": {"rate": 1e12, "times": [{"from": 1, "to": 2}, {"from": 5, "to": 5.5, "every": 7}]}})",
    R"([3, {"day": {"mean": 10, "period": 60}}, {"noise": {"mean": 10}}])",
};

TEST(Growth, neverFallsAtAnyTime)
{
    std::mt19937 random(17);
    for (const char *shape : shapes) {
        const Growth grows = growth(shape);
        for (const Time span : {10 * msPerSecond, day, 365 * day, 30 * 365 * day}) {
            for (int i = 0; i < 2'000; ++i) {
                const Time time = std::uniform_int_distribution<Time>(0, span)(random);
                const Time step = i % 2 == 0 ? 1 : std::uniform_int_distribution<Time>(0, 1'000)(random);
                // Of a counter that may wrap: what lies between two looks is small, not nearly 2^64.
                EXPECT_LT(grows.after(time + step) - grows.after(time), std::uint64_t{1} << 63)
                    << shape << " at " << time << " + " << step;
            }
        }
    }
}

TEST(Growth, isTheSameAtTheSameTimeHoweverItIsAsked)
{
    for (const char *shape : shapes) {
        const Growth grows = growth(shape);
        const std::uint64_t atOnce = growth(shape).after(3 * day + 5);
        for (Time time = 0; time < 3 * day; time += day / 50 + 1) {
            grows.after(time);
        }
        EXPECT_EQ(grows.after(3 * day + 5), atOnce) << shape;
        EXPECT_EQ(grows.after(0), 0u) << shape;
    }
}

TEST(Growth, rampsComeToTheSumOfTheirRates)
{
    const Growth up = growth(R"({"ramp": {"from": 100, "to": 300, "seconds": 10, "at": 5}})");
    EXPECT_EQ(up.after(5 * msPerSecond), 500u);
    EXPECT_NEAR(static_cast<double>(up.after(10 * msPerSecond)), 500 + 5 * 150, 1);
    EXPECT_NEAR(static_cast<double>(up.after(15 * msPerSecond)), 500 + 10 * 200, 1);
    EXPECT_NEAR(static_cast<double>(up.after(25 * msPerSecond)), 500 + 10 * 200 + 10 * 300, 1);
}

TEST(Growth, aDayIsFastAtItsPeakAndSlowHalfAPeriodLater)
{
    const Growth grows = growth(R"({"day": {"mean": 1000, "swing": 800, "peak": 72000}})");
    EXPECT_EQ(grows.after(day), 86'400'000u);
    EXPECT_EQ(grows.after(10 * day), 864'000'000u);
    const auto rateAt = [&grows](Time seconds) {
        constexpr Time minute = 60 * msPerSecond;
        return static_cast<double>(grows.after(seconds * msPerSecond + minute) - grows.after(seconds * msPerSecond)) /
               60;
    };
    EXPECT_NEAR(rateAt(72'000), 1'800, 1);
    EXPECT_NEAR(rateAt(72'000 - 43'200), 200, 1);
    EXPECT_NEAR(rateAt(72'000 - 21'600), 1'000, 10);
}

TEST(Growth, noiseStaysWithinItsSwingAndIsAnotherForEachSeed)
{
    const Growth one = growth(R"({"noise": {"mean": 1000, "swing": 400, "step": 10, "seed": 1}})");
    const Growth other = growth(R"({"noise": {"mean": 1000, "swing": 400, "step": 10, "seed": 2}})");
    std::uint64_t least = UINT64_MAX;
    std::uint64_t most = 0;
    int same = 0;
    for (Time time = 0; time < 1'000 * 10 * msPerSecond; time += 10 * msPerSecond) {
        const std::uint64_t counts = one.after(time + 10 * msPerSecond) - one.after(time);
        least = std::min(least, counts);
        most = std::max(most, counts);
        same += counts == other.after(time + 10 * msPerSecond) - other.after(time) ? 1 : 0;
    }
    EXPECT_GE(least, 6'000u);
    EXPECT_LT(least, 7'000u);
    EXPECT_LE(most, 14'000u);
    EXPECT_GT(most, 13'000u);
    EXPECT_LT(same, 10);
    EXPECT_NEAR(static_cast<double>(one.after(30 * day)), 30 * 86'400e3, 4'000);
}

TEST(Growth, burstsCountAtTheirTimesAloneAndRatesAddUp)
{
    const Growth grows = growth(R"([2, {"burst": {"rate": 100, "times": [{"from": 10, "to": 15, "every": 60}]}}])");
    EXPECT_EQ(grows.after(10 * msPerSecond), 20u);
    EXPECT_EQ(grows.after(12 * msPerSecond), 24u + 200);
    EXPECT_EQ(grows.after(60 * msPerSecond), 120u + 500);
    EXPECT_EQ(grows.after(72 * msPerSecond), 144u + 700);
}

TEST(Counter, beginsAnewAtItsResets)
{
    const Counter once = counter(R"({"start": 1000, "rate": 10, "reset": {"at": 60}})");
    EXPECT_EQ(once.after(60 * msPerSecond - 1), 1'599u);
    EXPECT_EQ(once.after(60 * msPerSecond), 0u);
    EXPECT_EQ(once.after(360 * msPerSecond), 3'000u);
    const Counter again = counter(R"({"rate": 10, "reset": {"at": 60, "every": 100}})");
    EXPECT_EQ(again.after(159 * msPerSecond), 990u);
    EXPECT_EQ(again.after(160 * msPerSecond), 0u);
    EXPECT_EQ(again.after(1'061 * msPerSecond), 10u);
}

TEST(Counter, startsShortOfItsWidthsEnd)
{
    EXPECT_EQ(counter(R"({"start": {"beforeWrap": 5}})").after(0), UINT64_MAX - 4);
    EXPECT_EQ(counter(R"({"start": {"beforeWrap": 5, "bits": 32}})").after(0), 0xFFFF'FFFBu);
    EXPECT_EQ(counter(R"({"start": {"beforeWrap": 5}, "rate": 1})").after(6 * msPerSecond), 1u);
}

} // namespace
} // namespace ipmib::simulated
