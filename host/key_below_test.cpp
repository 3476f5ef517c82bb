// SPDX-License-Identifier: BSD-3-Clause
// Keys below arbitrary identifiers: never above them, and no row between the two.
#include "key_below.h"

#include "testing/identifiers.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ipmib::host
{
namespace
{

using testing::Identifier;
using testing::Random;
using testing::text;

IndexPart number(std::uint32_t low, std::uint32_t high)
{
    return {0, 0, false, false, low, high};
}

IndexPart octets(std::uint32_t shortest, std::uint32_t longest, bool hasFixedLength = false)
{
    return {0, 0, true, hasFixedLength, shortest, longest};
}

// Every row that can be, in order.
std::vector<Identifier> allRows(const IndexParts &parts, std::size_t i = 0)
{
    if (i == parts.size()) {
        return {{}};
    }
    std::vector<Identifier> heads;
    const IndexPart &part = parts[i];
    for (std::uint32_t value = part.low; value <= part.high; ++value) {
        if (!part.isOctets) {
            heads.push_back({value});
        } else if (value <= 1) {
            for (SubId octet = 0; octet < (value == 0 ? 1u : 256u); ++octet) {
                Identifier head;
                if (!part.hasFixedLength) {
                    head.push_back(value);
                }
                head.insert(head.end(), value, octet);
                heads.push_back(head);
            }
        }
    }
    std::vector<Identifier> rows;
    const auto tails = allRows(parts, i + 1);
    for (const Identifier &head : heads) {
        for (const Identifier &tail : tails) {
            rows.push_back(head);
            rows.back().insert(rows.back().end(), tail.begin(), tail.end());
        }
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

Identifier randomInstance(Random &random, const std::vector<Identifier> &rows)
{
    static constexpr SubId notable[] = {0, 1, 2, 3, 4, 5, 254, 255, 256, UINT32_MAX};
    Identifier instance = testing::pick(random, rows);
    for (std::size_t i = random() % 3; i > 0; --i) {
        instance[random() % instance.size()] = testing::pick(random, notable);
    }
    if (random() % 2) {
        instance.resize(random() % (instance.size() + 2), testing::pick(random, notable));
    }
    return instance;
}

std::ptrdiff_t rowsUpTo(const std::vector<Identifier> &rows, const Identifier &limit, bool inclusive)
{
    return (inclusive ? std::upper_bound(rows.begin(), rows.end(), limit)
                      : std::lower_bound(rows.begin(), rows.end(), limit)) -
           rows.begin();
}

TEST(KeyBelow, hasNoRowBetweenItselfAndTheIdentifier)
{
    const std::vector<IndexParts> shapes = {
        {number(1, 4)},
        {number(0, 4)},
        {number(0, 2), number(1, 3)},
        {number(0, 2), number(0, 3), number(2, 4)},
        {octets(0, 1)},
        {octets(1, 1, true)},
        {number(1, 2), octets(0, 1)},
        {number(0, 2), octets(1, 1), number(0, 3)},
        {octets(1, 1, true), octets(0, 1)},
    };
    Random random(5);
    for (const IndexParts &parts : shapes) {
        const auto rows = allRows(parts);
        for (int i = 0; i < 4000 && !::testing::Test::HasFailure(); ++i) {
            const Identifier instance = randomInstance(random, rows);
            for (const bool smaller : {false, true}) {
                SCOPED_TRACE(text(instance) + (smaller ? " excluded" : " included"));
                const auto expected = rowsUpTo(rows, instance, !smaller);
                RowKey key;
                if (!keyBelow(parts, instance, smaller, key)) {
                    EXPECT_EQ(expected, 0);
                    continue;
                }
                for (std::size_t part = 0; part < parts.size(); ++part) {
                    EXPECT_LE(key.number(part), parts[part].high);
                }
                Oid name;
                ASSERT_TRUE(appendKey(parts, key, name));
                const Identifier below(name.view().begin(), name.view().end());
                EXPECT_EQ(rowsUpTo(rows, below, true), expected) << "by the key " << text(below);
            }
        }
    }
}

std::string below(const IndexParts &parts, const Identifier &instance)
{
    RowKey key;
    Oid name;
    return keyBelow(parts, instance, false, key) && appendKey(parts, key, name) ? text(name.view()) : "none";
}

TEST(KeyBelow, fillsAnAddressThatBreaksOff)
{
    const IndexParts parts = {number(0, INT32_MAX), octets(0, 255)};
    EXPECT_EQ(below(parts, {2, 4, 32, 1}), "2.4.32.0.255.255");
    EXPECT_EQ(below(parts, {2, 4, 32, 0}), "2.4.31.255.255.255");
    EXPECT_EQ(below(parts, {2, 4, 0, 0}), "2.3.255.255.255");
    EXPECT_EQ(below(parts, {2, 4, 32, 1, 256, 9}), "2.4.32.1.255.255");
    EXPECT_EQ(below(parts, {2, 4, 32, 1, 7, 9, 1, 2}), "2.4.32.1.7.9");
}

TEST(KeyBelow, aNumberBehindOctetsIsItsFloor)
{
    const IndexParts parts = {octets(0, 255), number(1, INT32_MAX)};
    EXPECT_EQ(below(parts, {1, 9, 77}), "1.9.0");
    EXPECT_EQ(below(parts, {1, 9}), "1.9.0");
    EXPECT_EQ(below(parts, {2, 9}), "2.8.255.0");
}

TEST(KeyBelow, belowTheOctetsNothingOfThemIsLeft)
{
    const IndexParts parts = {number(1, 9), number(0, 16), octets(0, 2), number(0, 128)};
    const auto far = [&parts](const Identifier &instance) {
        RowKey key;
        Oid name;
        return keyBelowOctets(parts, instance, key) && appendKey(parts, key, name) ? text(name.view()) : "none";
    };
    EXPECT_EQ(far({3, 2, 1, 77, 64}), "3.1.2.255.255.128");
    EXPECT_EQ(far({3, 0, 1, 77}), "2.16.2.255.255.128");
    EXPECT_EQ(far({1, 0, 1, 77}), "none");
    EXPECT_EQ(far({}), "none");
    RowKey key;
    EXPECT_FALSE(keyBelowOctets({number(1, 9), number(1, 9)}, Identifier{5, 5}, key));
}

TEST(RowKeyTest, readsExactlyWhatItWrites)
{
    const IndexParts parts = {number(1, 9), octets(0, 2), octets(2, 2, true)};
    RowKey key;
    const Identifier instance = {5, 1, 200, 7, 8};
    ASSERT_TRUE(readKey(parts, instance, key));
    EXPECT_EQ(key.number(0), 5u);
    EXPECT_EQ(key.octets(1)[0], 200);
    EXPECT_EQ(key.octets(2)[1], 8);
    Oid name;
    ASSERT_TRUE(appendKey(parts, key, name));
    EXPECT_EQ(text(name.view()), text(instance));

    for (const Identifier &wrong : {Identifier{},
                                    {5},
                                    {5, 1},
                                    {5, 1, 200},
                                    {5, 1, 200, 7},
                                    {5, 1, 200, 7, 8, 9},
                                    {0, 1, 200, 7, 8},
                                    {10, 1, 200, 7, 8},
                                    {5, 3, 1, 1, 1, 7, 8},
                                    {5, 1, 256, 7, 8},
                                    {5, 1, 200, 7, 256},
                                    {UINT32_MAX, 1, 200, 7, 8},
                                    {5, UINT32_MAX, 200, 7, 8}}) {
        EXPECT_FALSE(readKey(parts, wrong, key)) << text(wrong);
    }
}

} // namespace
} // namespace ipmib::host
