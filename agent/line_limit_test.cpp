// SPDX-License-Identifier: BSD-3-Clause
// However many lines somebody causes, a few of each kind are written, and the others are counted.

#include "line_limit.h"

#include <gtest/gtest.h>

namespace ipmib::agent
{

namespace
{

using namespace std::chrono_literals;

unsigned admitted(LineLimit &limit, const std::function<std::string(int)> &line, int count,
                  LineLimit::Clock::time_point now = {})
{
    unsigned written = 0;
    for (int i = 0; i < count; ++i) {
        written += limit.admits(line(i), now) ? 1 : 0;
    }
    return written;
}

TEST(LineLimit, LinesOfOneKindDifferInNumbers)
{
    LineLimit limit;
    const auto line = [](int i) {
        return "    -- iso.3.6.1.2.1." + std::to_string(i) + " from [10.0." + std::to_string(i) +
               ".1]:" + std::to_string(1000 * i) + " 0x" + std::to_string(i) + "fe\n";
    };
    EXPECT_EQ(admitted(limit, line, 1000), LineLimit::mostOfOneKind);
    EXPECT_TRUE(limit.hasLeftOut());
    EXPECT_EQ(admitted(
                  limit, [](int) { return "something else\n"; }, 3),
              3u);
}

TEST(LineLimit, AnOctetInHexadecimalIsANumber)
{
    LineLimit limit;
    unsigned written = 0;
    for (const char *octet : {"ec", "3f", "10", "aa", "f2", "bb", "cd"}) {
        written += limit.admits(std::string("bad type (") + octet + ")", {}) ? 1 : 0;
    }
    EXPECT_EQ(written, LineLimit::mostOfOneKind);
    EXPECT_TRUE(limit.admits("bad type (unknown)", {}));
}

TEST(LineLimit, WhatIsLeftOutIsCounted)
{
    LineLimit limit;
    const LineLimit::Clock::time_point begin{};
    admitted(
        limit, [](int i) { return "connection " + std::to_string(i) + " ends\n"; }, 12, begin);
    EXPECT_TRUE(limit.takeReport(begin + 59s).empty());
    EXPECT_EQ(limit.takeReport(begin + 60s),
              std::vector<std::string>{"left out 7 more in a minute of: connection # ends"});
    EXPECT_FALSE(limit.hasLeftOut());
    EXPECT_TRUE(limit.takeReport(begin + 120s).empty());
    EXPECT_TRUE(limit.admits("connection 13 ends\n", begin + 60s));
}

// Each line with a word of its own, as a user's name that was made up.
TEST(LineLimit, WordsOfSomebodysChoiceHaveALimitToo)
{
    LineLimit limit;
    const auto line = [](int i) {
        return std::string("no user ") + static_cast<char>('a' + i % 26) + static_cast<char>('g' + i / 26 % 20) +
               static_cast<char>('g' + i / 520) + "\n";
    };
    EXPECT_EQ(admitted(limit, line, 10000), LineLimit::mostOfAllKinds);
    EXPECT_LE(limit.takeReport(LineLimit::Clock::time_point{} + LineLimit::period).size(),
              LineLimit::mostOfAllKinds + 1);
}

} // namespace

} // namespace ipmib::agent
