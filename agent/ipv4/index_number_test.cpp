// SPDX-License-Identifier: BSD-3-Clause
#include "ipv4/index_number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace ipmib::agent
{

namespace
{

constexpr oid widest = 0xFFFF'FFFF;
constexpr std::uint64_t sevenAndAddress = 0x7'C000'0201;

using Index = std::vector<oid>;

std::uint64_t behindAddress(const Index &index)
{
    return lastNotBehind(index, addressIndex);
}

std::uint64_t behindBoth(const Index &index)
{
    return lastNotBehind(index, interfaceAndAddressIndex);
}

TEST(IndexNumber, IsThatOfAWholeIndexAlone)
{
    EXPECT_EQ(indexNumber(Index{192, 0, 2, 1}, addressIndex), 0xC000'0201u);
    EXPECT_EQ(indexNumber(Index{7, 192, 0, 2, 1}, interfaceAndAddressIndex), sevenAndAddress);
    EXPECT_EQ(indexNumber(Index{widest, 255, 255, 255, 255}, interfaceAndAddressIndex), UINT64_MAX);
    for (const Index &index :
         {Index{}, Index{192, 0, 2}, Index{192, 0, 2, 1, 0}, Index{192, 0, 256, 1}, Index{widest + 193, 0, 2, 1}}) {
        EXPECT_EQ(indexNumber(index, addressIndex), std::nullopt);
    }
    EXPECT_EQ(indexNumber(Index{widest + 1, 192, 0, 2, 1}, interfaceAndAddressIndex), std::nullopt);
}

TEST(IndexNumber, ALongIndexStandsBehindItsBeginning)
{
    EXPECT_EQ(behindAddress({192, 0, 2, 1}), 0xC000'0201u);
    EXPECT_EQ(behindAddress({192, 0, 2, 1, 0}), 0xC000'0201u);
    EXPECT_EQ(behindBoth({7, 192, 0, 2, 1, widest, 3}), sevenAndAddress);
}

TEST(IndexNumber, AShortIndexStandsInFrontOfAllThatBeginsWithIt)
{
    EXPECT_EQ(behindAddress({}), 0u);
    EXPECT_EQ(behindAddress({0}), 0u);
    EXPECT_EQ(behindAddress({192, 0, 2}), 0xC000'01FFu);
    EXPECT_EQ(behindBoth({7}), 0x6'FFFF'FFFFu);
    EXPECT_EQ(behindBoth({7, 192, 0, 2}), 0x7'C000'01FFu);
}

TEST(IndexNumber, WhatIsOutOfRangeStandsBehindAllOfThatBeginning)
{
    EXPECT_EQ(behindAddress({192, 0, 256}), 0xC000'FFFFu);
    EXPECT_EQ(behindAddress({192, 0, 256, 0}), 0xC000'FFFFu);
    EXPECT_EQ(behindAddress({widest}), 0xFFFF'FFFFu);
    EXPECT_EQ(behindBoth({7, widest, 0, 0, 0, 0}), 0x7'FFFF'FFFFu);
    EXPECT_EQ(behindBoth({widest + 1}), UINT64_MAX);
}

// Every index of up to three sub-identifiers against the order of identifiers itself.
TEST(IndexNumber, ARowIsBehindAnIndexWhenItsIdentifierIs)
{
    constexpr unsigned bits[] = {2, 1, 1};
    std::vector<Index> asked{{}};
    for (std::size_t from = 0, length = 0; length < 4; ++length) {
        const std::size_t to = asked.size();
        for (; from < to; ++from) {
            for (oid id = 0; id < 6; ++id) {
                asked.push_back(asked[from]);
                asked.back().push_back(id);
            }
        }
    }
    for (const Index &row : asked) {
        const auto number = indexNumber(row, bits);
        if (!number || *number == 0) {
            continue;
        }
        for (const Index &index : asked) {
            EXPECT_EQ(*number > lastNotBehind(index, bits), row > index);
        }
    }
}

} // namespace

} // namespace ipmib::agent
