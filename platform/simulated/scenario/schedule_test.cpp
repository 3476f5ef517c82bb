// SPDX-License-Identifier: BSD-3-Clause
// Periods: which moments they cover, and how much of the time before a moment.
#include "scenario/schedule.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ipmib::simulated
{
namespace
{

Schedule scheduleOf(const char *text)
{
    const Json json = Json::parse(text);
    return Schedule::read(Value(json));
}

TEST(Schedule, nothingIsCoveredWithoutPeriods)
{
    EXPECT_FALSE(Schedule().covers(0));
    EXPECT_FALSE(scheduleOf("[]").covers(1'000'000));
    EXPECT_EQ(scheduleOf("[]").coveredBefore(1'000'000), 0u);
}

TEST(Schedule, aPeriodBeginsWithItsFirstMomentAndEndsBeforeItsLast)
{
    const Schedule schedule = scheduleOf(R"([{"from": 1.5, "to": 3}])");
    EXPECT_FALSE(schedule.covers(1'499));
    EXPECT_TRUE(schedule.covers(1'500));
    EXPECT_TRUE(schedule.covers(2'999));
    EXPECT_FALSE(schedule.covers(3'000));
}

TEST(Schedule, withoutAnEndItIsForEver)
{
    EXPECT_TRUE(scheduleOf(R"([{"from": 7}])").covers(1'000'000'000'000'000));
    EXPECT_TRUE(Schedule::always().covers(0));
    EXPECT_EQ(Schedule::always().coveredBefore(5'000), 5'000u);
}

TEST(Schedule, oneThatComesAgainDoesSoForEver)
{
    const Schedule schedule = scheduleOf(R"([{"from": 10, "to": 12, "every": 60}])");
    for (const Time hour : {0u, 3'600'000u}) {
        EXPECT_FALSE(schedule.covers(hour + 9'999));
        EXPECT_TRUE(schedule.covers(hour + 10'000));
        EXPECT_TRUE(schedule.covers(hour + 11'999));
        EXPECT_FALSE(schedule.covers(hour + 12'000));
        EXPECT_TRUE(schedule.covers(hour + 70'000));
    }
}

TEST(Schedule, whatIsCoveredIsWhatCountingMillisecondsGives)
{
    const Schedule schedule = scheduleOf(R"([{"from": 0.003, "to": 0.007}, {"from": 0.010, "to": 0.011},
                       {"from": 0.020, "to": 0.025, "every": 0.007}])");
    Time counted = 0;
    for (Time time = 0; time < 200; ++time) {
        ASSERT_EQ(schedule.coveredBefore(time), counted) << time;
        counted += schedule.covers(time) ? 1 : 0;
    }
    EXPECT_GT(counted, 100u);
}

TEST(Schedule, theLastChangeIsWhereALookAtEveryMillisecondSeesOne)
{
    const Schedule schedule = scheduleOf(R"([{"from": 0.003, "to": 0.007}, {"from": 0.010, "to": 0.011},
                       {"from": 0.020, "to": 0.025, "every": 0.007}])");
    Time change = 0;
    for (Time time = 0; time < 200; ++time) {
        if (time > 0 && schedule.covers(time) != schedule.covers(time - 1)) {
            change = time;
        }
        ASSERT_EQ(schedule.lastChange(time), change) << time;
    }
    EXPECT_EQ(Schedule::always().lastChange(5'000), 0u);
    for (Time time = 0; time < 200; ++time) {
        const auto next = schedule.nextChange(time);
        ASSERT_TRUE(next) << time;
        ASSERT_GT(*next, time);
        ASSERT_EQ(schedule.lastChange(*next), *next) << time;
        ASSERT_LE(schedule.lastChange(*next - 1), time) << "none lies between";
    }
    EXPECT_FALSE(Schedule::always().nextChange(5'000));
    EXPECT_FALSE(scheduleOf(R"([{"from": 1, "to": 2}])").nextChange(2'000));
}

} // namespace
} // namespace ipmib::simulated
