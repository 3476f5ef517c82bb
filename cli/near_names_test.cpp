// SPDX-License-Identifier: BSD-3-Clause
// Which name may have been meant by a word that is none.
#include "near_names.h"

#include <gtest/gtest.h>

namespace ipmib::cli
{
namespace
{

TEST(NearNames, countLettersPutInLeftOutReplacedOrExchanged)
{
    EXPECT_EQ(editDistance("show", "show"), 0u);
    EXPECT_EQ(editDistance("shwo", "show"), 1u);
    EXPECT_EQ(editDistance("Lan0", "lan7"), 1u);
    EXPECT_EQ(editDistance("neighbors", "neighbours"), 1u);
    EXPECT_EQ(editDistance("", "tree"), 4u);
    EXPECT_EQ(editDistance("walk", "get"), 4u);
}

TEST(NearNames, theNearestAreNamedAndNoOthers)
{
    EXPECT_EQ(didYouMean("lan7", {"wan0", "lan0", "eth0"}), "; did you mean lan0?");
    EXPECT_EQ(didYouMean("lan7", {"lan0", "lan1", "wan0"}), "; did you mean lan0 or lan1?");
    EXPECT_EQ(didYouMean("lan7", {"lan0", "lan1", "lan2", "lan3"}), "") << "too many to be meant";
    EXPECT_EQ(didYouMean("xyz", {"lan0", "wan0"}), "");
    EXPECT_EQ(didYouMean("x", {"y"}), "");
    EXPECT_EQ(didYouMean(std::string(1'000'000, 'a'), {"lan0"}), "");
}

} // namespace
} // namespace ipmib::cli
