// SPDX-License-Identifier: BSD-3-Clause
// Indexes of rows against the order of identifiers.
#include "row_index.h"

#include <gtest/gtest.h>

#include <vector>

namespace ipmib::host
{
namespace
{

using Numbers = std::vector<SubId>;

constexpr SubId widest = UINT32_MAX;
constexpr SubIdRange interfaceAndAddress[] = {anyIfIndex, only(4), anyOctet, anyOctet, anyOctet, anyOctet};

Numbers below(IndexShape shape, const Numbers &instance)
{
    Numbers index(shape.size());
    return indexBelow(shape, instance, false, index) ? index : Numbers();
}

TEST(RowIndex, AShortInstanceStandsInFrontOfAllThatBeginsWithIt)
{
    EXPECT_EQ(below(interfaceAndAddress, {}), Numbers());
    EXPECT_EQ(below(interfaceAndAddress, {1}), Numbers());
    EXPECT_EQ(below(interfaceAndAddress, {7}), (Numbers{6, 4, 255, 255, 255, 255}));
    EXPECT_EQ(below(interfaceAndAddress, {7, 4, 192, 0, 2}), (Numbers{7, 4, 192, 0, 1, 255}));
}

TEST(RowIndex, ALongInstanceStandsBehindItsBeginning)
{
    EXPECT_EQ(below(interfaceAndAddress, {7, 4, 192, 0, 2, 1, 0}), (Numbers{7, 4, 192, 0, 2, 1}));
    Numbers index(6);
    EXPECT_TRUE(indexBelow(interfaceAndAddress, Numbers{7, 4, 192, 0, 2, 0}, true, index));
    EXPECT_EQ(index, (Numbers{7, 4, 192, 0, 1, 255}));
}

TEST(RowIndex, WhatIsOutOfRangeStandsBehindAllOfThatBeginning)
{
    EXPECT_EQ(below(interfaceAndAddress, {7, 4, 192, 256, 0, 0}), (Numbers{7, 4, 192, 255, 255, 255}));
    EXPECT_EQ(below(interfaceAndAddress, {7, 16}), (Numbers{7, 4, 255, 255, 255, 255}));
    EXPECT_EQ(below(interfaceAndAddress, {7, 3, 1, 2, 3}), (Numbers{6, 4, 255, 255, 255, 255}));
    EXPECT_EQ(below(interfaceAndAddress, {widest}), (Numbers{INT32_MAX, 4, 255, 255, 255, 255}));
}

// All identifiers of up to five small sub-identifiers, of fixed and of varying length.
TEST(RowIndex, EveryIndexIsBehindWhatItsIdentifierIsBehind)
{
    constexpr SubIdRange fixed[] = {{1, 2}, {0, 1}, {2, 3}};
    constexpr SubIdRange varying[] = {lengthUpTo(2), {0, 2}, {0, 2}, {1, 2}};
    std::vector<Numbers> all{{}};
    for (std::size_t from = 0, length = 0; length < 5; ++length) {
        const std::size_t to = all.size();
        for (; from < to; ++from) {
            for (SubId id = 0; id < 5; ++id) {
                all.push_back(all[from]);
                all.back().push_back(id);
            }
        }
    }
    for (const IndexShape shape : {IndexShape(fixed), IndexShape(varying)}) {
        std::vector<std::pair<Numbers, Numbers>> rows; // identifiers, and indexes
        for (const Numbers &instance : all) {
            Numbers index(shape.size());
            if (readIndex(shape, instance, index)) {
                rows.emplace_back(instance, index);
                Oid written;
                ASSERT_TRUE(appendIndex(shape, index, written));
                EXPECT_TRUE(std::is_eq(compare(written.view(), instance)));
            }
        }
        ASSERT_GT(rows.size(), 4u);
        for (const Numbers &instance : all) {
            Oid lowest;
            const bool canFollow = appendLowestBehind(shape, instance, lowest);
            EXPECT_TRUE(!canFollow || std::is_gt(compare(lowest.view(), instance)));
            for (const auto &[identifier, places] : rows) {
                EXPECT_EQ(canFollow && std::is_gteq(compare(identifier, lowest.view())),
                          std::is_gt(compare(identifier, instance)));
            }
            for (const bool smaller : {false, true}) {
                Numbers index(shape.size());
                const bool has = indexBelow(shape, instance, smaller, index);
                for (const auto &[identifier, places] : rows) {
                    const auto order = compare(identifier, instance);
                    const bool follows = std::is_gt(order) || (smaller && std::is_eq(order));
                    EXPECT_EQ(!has || std::is_gt(compare(places, index)), follows);
                }
            }
        }
    }
}

} // namespace
} // namespace ipmib::host
