// SPDX-License-Identifier: BSD-3-Clause
// The ordered table does what a std::map does, for any sequence of changes, and keeps its memory in proportion.
#include "ordered_table.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <random>
#include <vector>

namespace
{

using ipmib::platform::OrderedTable;

struct Row {
    std::uint32_t key;
    std::uint32_t value;
};

struct ByKey {
    bool operator()(const Row &a, const Row &b) const { return a.key < b.key; }
    bool operator()(const Row &a, std::uint32_t b) const { return a.key < b; }
    bool operator()(std::uint32_t a, const Row &b) const { return a < b.key; }
};

// Small chunks, so that splits and merges happen all the time.
using Table = OrderedTable<Row, ByKey, 64>;
using Model = std::map<std::uint32_t, std::uint32_t>;

void expectSame(const Row *row, const Model &model, Model::const_iterator expected)
{
    if (expected == model.end()) {
        EXPECT_EQ(row, nullptr);
    } else {
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->key, expected->first);
        EXPECT_EQ(row->value, expected->second);
    }
}

void expectSameLookups(const Table &table, const Model &model, std::uint32_t key)
{
    expectSame(table.find(key), model, model.find(key));
    expectSame(table.after(key), model, model.upper_bound(key));
    expectSame(table.atOrAfter(key), model, model.lower_bound(key));

    constexpr std::size_t enough = 20; // rows, to cross from one chunk into others
    std::size_t visited = 0;
    auto expected = model.lower_bound(key);
    table.eachFrom(key, [&](const Row &row) {
        expectSame(&row, model, expected++);
        return ++visited < enough;
    });
    EXPECT_TRUE(visited == enough || expected == model.end());
}

// A walk that changes the table now and then between two of its steps.
void expectSameWalk(Table &table, Model &model, std::mt19937 &random)
{
    std::uint32_t at = 0;
    for (auto expected = model.upper_bound(at); expected != model.end(); expected = model.upper_bound(at)) {
        expectSame(table.after(at), model, expected);
        at = expected->first;
        expectSame(table.find(at), model, expected);
        if (random() % 4 == 0) {
            const std::uint32_t key = at + static_cast<std::uint32_t>(random() % 5) - 2;
            const bool grows = random() % 2 == 0;
            grows ? table.put({key, 1}) : table.erase(key);
            grows ? void(model.insert_or_assign(key, 1)) : void(model.erase(key));
        }
    }
    EXPECT_EQ(table.after(at), nullptr);
}

class Against : public testing::TestWithParam<std::uint32_t>
{
};

// The parameter bounds the keys: few keys mean many replacements and erasures that hit, many keep the table growing.
TEST_P(Against, aMapAgreesAfterEveryChange)
{
    std::mt19937 random(GetParam());
    std::uniform_int_distribution<std::uint32_t> keys(0, GetParam());
    Table table;
    Model model;
    for (std::uint32_t step = 0; step < 20'000; ++step) {
        const std::uint32_t key = keys(random);
        // Phases of growth and of decay take the table through every size.
        const bool growing = (step / 2'000) % 2 == 0;
        if (random() % 10 < (growing ? 7u : 3u)) {
            EXPECT_EQ(table.put({key, step}), model.insert_or_assign(key, step).second);
        } else {
            EXPECT_EQ(table.erase(key), model.erase(key) == 1);
        }
        ASSERT_EQ(table.size(), model.size());
        expectSameLookups(table, model, keys(random));
        expectSameLookups(table, model, key);
    }
    expectSameWalk(table, model, random);
    auto expected = model.begin();
    table.each([&](const Row &row) {
        ASSERT_NE(expected, model.end());
        EXPECT_EQ(row.key, expected->first);
        EXPECT_EQ(row.value, (expected++)->second);
    });
    EXPECT_EQ(expected, model.end());
    expectSame(table.first(), model, model.begin());
}

INSTANTIATE_TEST_SUITE_P(OrderedTable, Against, testing::Values(0, 7, 60, 1'000, 100'000));

// A reading puts some rows again and adds others; what it has not put goes, also after readings that did not end.
TEST(OrderedTable, aSweepTakesOutWhatTheLastReadingHasNotPut)
{
    std::mt19937 random(7);
    Table table;
    Model model;
    ipmib::platform::Generation generation = 0;
    for (std::uint32_t round = 0; round < 600; ++round) {
        generation = generation == 255 ? 1 : static_cast<ipmib::platform::Generation>(generation + 1);
        Model read;
        for (auto puts = static_cast<std::uint32_t>(random() % 100); puts > 0; --puts) {
            const auto key = static_cast<std::uint32_t>(random() % 100);
            EXPECT_EQ(table.put({key, round}, generation), model.insert_or_assign(key, round).second);
            read[key] = round;
        }
        const auto erased = static_cast<std::uint32_t>(random() % 100); // shifts the marks of those behind it
        EXPECT_EQ(table.erase(erased), model.erase(erased) == 1);
        read.erase(erased);
        if (random() % 3 != 0) {
            std::vector<Row> gone;
            for (const auto &[key, value] : model) {
                if (read.count(key) == 0) {
                    gone.push_back({key, value});
                }
            }
            const std::vector<Row> swept = table.sweep(generation);
            ASSERT_EQ(swept.size(), gone.size());
            for (std::size_t i = 0; i < gone.size(); ++i) {
                EXPECT_EQ(swept[i].key, gone[i].key);
                EXPECT_EQ(swept[i].value, gone[i].value);
            }
            model = read;
        }
        ASSERT_EQ(table.size(), model.size());
        for (std::uint32_t key = 0; key < 101; ++key) {
            expectSameLookups(table, model, key);
        }
    }
}

TEST(OrderedTable, aPassInPiecesMeetsEveryRowThatStaysMeanwhile)
{
    std::mt19937 random(3);
    Table table;
    for (std::uint32_t key = 0; key < 1'000; ++key) {
        table.put({key * 10, key}, static_cast<ipmib::platform::Generation>(key % 3 == 0 ? 1 : 2));
    }
    std::optional<Row> from;
    unsigned pieces = 0;
    do {
        from = table.eraseSome(from, 5, [](const Row &, ipmib::platform::Generation last) { return last != 2; });
        table.put({static_cast<std::uint32_t>(random() % 1'000 * 10 + 5), 0}, 2);
        table.erase(static_cast<std::uint32_t>(random() % 1'000 * 10 + 5));
        ++pieces;
    } while (from);
    EXPECT_GT(pieces, 20u);
    unsigned left = 0;
    table.each([&](const Row &row) {
        EXPECT_TRUE(row.key % 10 == 5 || row.key / 10 % 3 != 0) << row.key;
        left += row.key % 10 == 0 ? 1 : 0;
    });
    EXPECT_EQ(left, 666u);
    EXPECT_FALSE(Table().eraseSome(std::nullopt, 5, [](const Row &, ipmib::platform::Generation) { return true; }));
}

TEST(OrderedTable, whatIsPutWhileAReadingIsUnderWayIsNotSweptOut)
{
    Table table;
    table.put({1, 0}, 1);
    table.put({2, 0}, 1);
    table.put({1, 0}, 2);
    table.put({1, 7});
    table.put({3, 7});
    ASSERT_EQ(table.sweep(2).size(), 1u);
    EXPECT_EQ(table.find(1u)->value, 7u);
    EXPECT_EQ(table.find(2u), nullptr);
    EXPECT_NE(table.find(3u), nullptr);
}

TEST(OrderedTable, anEmptyOneHasNothing)
{
    Table table;
    EXPECT_EQ(table.first(), nullptr);
    EXPECT_EQ(table.find(1u), nullptr);
    EXPECT_EQ(table.after(0u), nullptr);
    EXPECT_FALSE(table.erase(1u));
    table.put({1, 1});
    EXPECT_TRUE(table.erase(1u));
    EXPECT_TRUE(table.empty());
    EXPECT_EQ(table.first(), nullptr);
    EXPECT_LT(table.memory(), 1024u);
}

TEST(OrderedTable, aRowCanBeChangedInPlace)
{
    Table table;
    table.put({5, 1});
    table.findToChange(5u)->value = 9;
    EXPECT_EQ(table.find(5u)->value, 9u);
    EXPECT_EQ(table.findToChange(6u), nullptr);
}

// What the table takes beyond its rows stays in proportion to them, however they came and went.
TEST(OrderedTable, memoryFollowsTheRows)
{
    using Large = OrderedTable<Row, ByKey>;
    const auto share = [](const Large &table) {
        return static_cast<double>(table.memory()) / static_cast<double>(table.size() * (sizeof(Row) + 1));
    };
    Large ascending;
    for (std::uint32_t key = 0; key < 100'000; ++key) {
        ascending.put({key, 0});
    }
    EXPECT_LT(share(ascending), 1.1);

    Large shuffled;
    std::mt19937 random(1);
    for (std::uint32_t i = 0; i < 100'000; ++i) {
        shuffled.put({static_cast<std::uint32_t>(random()), 0});
    }
    EXPECT_LT(share(shuffled), 2.0);

    for (std::uint32_t key = 0; key < 100'000; ++key) {
        if (key % 50 != 0) {
            ascending.erase(key);
        }
    }
    EXPECT_EQ(ascending.size(), 2'000u);
    EXPECT_LT(share(ascending), 6.0);
}

} // namespace
