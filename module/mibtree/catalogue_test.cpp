// SPDX-License-Identifier: BSD-3-Clause
// The catalogue answers what handlers ask of it at compile time.
#include "mibtree/catalogue.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

namespace
{

using namespace ipmib::mibtree;

TEST(Catalogue, KnowsHowManyColumnsATableServes)
{
    constexpr std::array served{servedColumns(1), servedColumns(2),  servedColumns(3), servedColumns(4),
                                servedColumns(5), servedColumns(6),  servedColumns(7), servedColumns(8),
                                servedColumns(9), servedColumns(10), servedColumns(11)};
    EXPECT_EQ(served, (std::array<std::uint32_t, 11>{2, 7, 25, 32, 9, 11, 8, 5, 12, 5, 4}));
    EXPECT_EQ(servedColumns(0), 0);
    EXPECT_EQ(servedColumns(12), 0);
}

TEST(Catalogue, KnowsHowManyColumnsAreTheIndex)
{
    EXPECT_EQ(indexColumns(1), 0);
    EXPECT_EQ(indexColumns(4), 2);
    EXPECT_EQ(indexColumns(5), 4);
    EXPECT_EQ(indexColumns(11), 2);
}

TEST(Catalogue, DerivesValueTypesFromSyntaxes)
{
    EXPECT_EQ(valueType(1, 2), VT_INTEGER);
    EXPECT_EQ(valueType(4, 0x1A), VT_COUNTER32);
    EXPECT_EQ(valueType(4, 0x20), VT_COUNTER64);
    EXPECT_EQ(valueType(5, 4), VT_UNSIGNED32);
    EXPECT_EQ(valueType(6, 2), VT_OCTETS);
    EXPECT_EQ(valueType(6, 5), VT_OID);
    EXPECT_EQ(valueType(6, 8), VT_TIMETICKS);
}

TEST(Catalogue, TellsWhetherTheItemsOfASyntaxAscend)
{
    using namespace ipmib::mibtree::syntax;
    constexpr Syntax ascending[] = {Counter32, INTEGER({4, 4}), Unsigned32({0, 0}, {1, 2}),
                                    Enumeration({{"one", 1}, {"two", 2}})};
    for (const Syntax &each : ascending) {
        EXPECT_TRUE(itemsAscend(each));
    }
    constexpr Syntax others[] = {INTEGER({5, 4}), Unsigned32({0, 1}, {1, 2}), Unsigned32({0, 1}, {3, 2}),
                                 Enumeration({{"one", 1}, {"uno", 1}}), Enumeration({{"two", 2}, {"one", 1}})};
    for (const Syntax &each : others) {
        EXPECT_FALSE(itemsAscend(each));
    }
}

} // namespace
