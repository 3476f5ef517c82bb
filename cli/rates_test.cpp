// SPDX-License-Identifier: BSD-3-Clause
// How fast counters grow between two looks at them.
#include "rates.h"

#include <gtest/gtest.h>

namespace ipmib::cli
{
namespace
{

Cell counterOf(std::uint64_t number, bool wide = true)
{
    return {std::to_string(number), number, CounterValue{number, wide}};
}

TEST(Rates, aCounterOf32BitsWrapsAndOneOf64BitsHasBegunAnew)
{
    EXPECT_EQ(growth({7, true}, {10, true}), 3u);
    EXPECT_EQ(growth({UINT32_MAX, false}, {2, false}), 3u);
    EXPECT_EQ(growth({7, true}, {2, true}), std::nullopt);
}

TEST(Rates, areCountedFromTheLookBeforeAndBelongToTheirRow)
{
    Rates rates;
    const auto first = rates.update({{textCell("lan0"), counterOf(100)}, {textCell("wan0"), counterOf(5)}}, 1);
    EXPECT_EQ(first[0][1].text, "-");
    EXPECT_TRUE(first[0][1].json.is_null());
    const auto second = rates.update({{textCell("wan0"), counterOf(25)}, {textCell("lan0"), counterOf(103)}}, 2);
    EXPECT_EQ(second[0][0].text, "wan0");
    EXPECT_EQ(second[0][1].text, "10");
    EXPECT_EQ(second[1][1].text, "1.5");
    EXPECT_EQ(second[1][1].json, 1.5);
}

TEST(Rates, aRowThatWasAwayStartsAgain)
{
    Rates rates;
    rates.update({{textCell("lan0"), counterOf(100)}}, 1);
    rates.update({}, 1);
    EXPECT_EQ(rates.update({{textCell("lan0"), counterOf(200)}}, 1)[0][1].text, "-");
    EXPECT_EQ(rates.update({{textCell("lan0"), emptyCell()}}, 1)[0][1].text, "-");
    EXPECT_EQ(rates.update({{textCell("lan0"), counterOf(300)}}, 1)[0][1].text, "-");
}

} // namespace
} // namespace ipmib::cli
