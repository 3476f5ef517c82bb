// SPDX-License-Identifier: BSD-3-Clause
// Where walks stand, for each instance of the platform.
#include "row_cursors.h"

#include <gtest/gtest.h>

namespace ipmib::host
{
namespace
{

constexpr SubId first[] = {1, 7};
constexpr SubId second[] = {1, 9, 3};
constexpr SubId third[] = {2};

TEST(RowCursors, aWalkMovesOnAndLeavesNothingBehind)
{
    RowCursors cursors;
    EXPECT_FALSE(cursors.has(first));
    cursors.move({}, first);
    EXPECT_TRUE(cursors.has(first));
    cursors.move(first, second);
    EXPECT_FALSE(cursors.has(first));
    EXPECT_TRUE(cursors.has(second));
}

TEST(RowCursors, aRowOfOneInstanceIsNoneOfAnothers)
{
    RowCursors cursors;
    cursors.move({}, first);
    cursors.select(3);
    EXPECT_FALSE(cursors.has(first));
    cursors.move({}, second);
    cursors.select(0);
    EXPECT_TRUE(cursors.has(first));
    EXPECT_FALSE(cursors.has(second));
    cursors.select(3);
    EXPECT_TRUE(cursors.has(second));
}

TEST(RowCursors, manyWalksOfOneInstanceLeaveAnothersAlone)
{
    RowCursors cursors;
    cursors.move({}, first);
    cursors.select(1);
    for (SubId i = 0; i < 100; ++i) {
        const SubId row[] = {5, i};
        cursors.move(third, row);
    }
    cursors.select(0);
    EXPECT_TRUE(cursors.has(first));
}

TEST(RowCursors, anInstanceThatHasEndedIsForgotten)
{
    RowCursors cursors;
    cursors.select(2);
    cursors.move({}, first);
    cursors.forget(2);
    EXPECT_FALSE(cursors.has(first));
    cursors.forget(99); // of which nothing was known
}

} // namespace
} // namespace ipmib::host
