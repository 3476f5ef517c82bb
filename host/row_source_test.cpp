// SPDX-License-Identifier: BSD-3-Clause
// How often rows are asked for, and what becomes of one that vanishes; which answers they give is tested at random in
// merged_property_test.cpp.
#include "merged_source.h"

#include "testing/sorted_rows.h"

#include <gtest/gtest.h>

namespace ipmib::host::testing
{
namespace
{

using Rows = SortedRows<std::size(numberShape), numberShape>;

Oid entry()
{
    return Oid{1, 2, 1};
}

std::optional<Value> numberOf(const SortedRow &row)
{
    return Value{ValueType::unsigned32, row.instance.front(), {}, {}};
}

const std::vector<RowColumn<SortedRow>> rowColumns = {{1, numberOf}, {2, numberOf}, {4, numberOf, 1}};

std::vector<Oid> namesOf(std::initializer_list<std::pair<SubId, SubId>> columnsAndRows)
{
    std::vector<Oid> names;
    for (const auto &[column, row] : columnsAndRows) {
        names.push_back(entry());
        names.back().append(column);
        if (row != 0) {
            names.back().append(row);
        }
    }
    return names;
}

std::vector<Variable> asking(const std::vector<Oid> &names)
{
    std::vector<Variable> variables(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        variables[i].asked = names[i].view();
    }
    return variables;
}

std::vector<SortedRow> rowsOf(std::initializer_list<SubId> numbers)
{
    std::vector<SortedRow> rows;
    for (const SubId row : numbers) {
        rows.push_back({Identifier{row}, true});
    }
    return rows;
}

TEST(RowSource, LooksOnceForEachRowOfAPacket)
{
    Rows::Calls calls;
    RowSource<Rows> source(entry().view(), Rows(rowsOf({3, 5, 9}), rowColumns, &calls));
    const auto names = namesOf({{1, 3}, {2, 3}, {4, 3}, {1, 5}, {2, 5}});
    auto variables = asking(names);
    source.get(variables);
    EXPECT_EQ(calls.find, 2u);
    source.getNext(variables, entry().view());
    EXPECT_EQ(calls.next, 2u);
    for (std::size_t i = 0; i < variables.size(); ++i) {
        EXPECT_EQ(variables[i].status, Status::ok);
        EXPECT_EQ(variables[i].value.number, i < 3 ? 5u : 9u);
    }
}

TEST(RowSource, ATableWithoutRowsIsAskedForOnesOnce)
{
    Rows::Calls calls;
    RowSource<Rows> source(entry().view(), Rows(rowsOf({}), rowColumns, &calls));
    Variable variable;
    const Oid asked = entry();
    variable.asked = asked.view();
    source.getNext({&variable, 1}, entry().view());
    EXPECT_EQ(variable.status, Status::endOfRegion);
    EXPECT_EQ(calls.next, 1u);
}

TEST(RowSource, GoesOnToTheNextRowWhenOneHasVanished)
{
    std::vector<SortedRow> rows = rowsOf({3, 5, 9});
    rows[1].isWhole = false;
    RowSource<Rows> source(entry().view(), Rows(rows, rowColumns));
    const auto names = namesOf({{4, 3}, {2, 3}});
    auto variables = asking(names);
    source.getNext(variables, entry().view());
    EXPECT_EQ(text(variables[0].name.view()), "1.2.1.4.9");
    EXPECT_EQ(text(variables[1].name.view()), "1.2.1.2.5");
    const auto vanished = namesOf({{4, 5}});
    auto got = asking(vanished);
    source.get(got);
    EXPECT_EQ(got.front().status, Status::noSuchInstance);
}

// Rows that answer the same whatever is asked.
struct StuckRows {
    using Row = SubId;
    using Index = std::array<SubId, 1>;
    static constexpr IndexShape shape = numberShape;
    static constexpr RowColumn<Row> list[] = {{1, [](const Row &row) -> std::optional<Value> {
                                                   return Value{ValueType::unsigned32, row, {}, {}};
                                               }}};

    std::span<const RowColumn<Row>> columns() const { return list; }
    bool find(const Index &, Row &) const { return false; }
    bool next(const Index *, Row &row) const { return row = 7, true; }
    Index indexOf(const Row &row) const { return {row}; }
};

TEST(RowSource, RowsThatDoNotAscendEndTheColumn)
{
    RowSource<StuckRows> source(entry().view(), {});
    const auto names = namesOf({{1, 0}, {1, 6}, {1, 7}, {1, 8}});
    auto variables = asking(names);
    source.getNext(variables, entry().view());
    EXPECT_EQ(variables[0].status, Status::ok);
    EXPECT_EQ(variables[1].status, Status::ok);
    EXPECT_EQ(variables[2].status, Status::endOfRegion);
    EXPECT_EQ(variables[3].status, Status::endOfRegion);
}

TEST(MergedSource, AWalkThroughTheRowsOfOneSourceAsksTheOtherOnceAPacket)
{
    Rows::Calls one;
    Rows::Calls other;
    RowSource<Rows> low(entry().view(), Rows(rowsOf({2, 4, 6, 8, 10, 12}), rowColumns, &one));
    RowSource<Rows> high(entry().view(), Rows(rowsOf({100, 101, 102}), rowColumns, &other));
    MergedSource merged(entry().view(), {&low, &high});
    Oid asked = namesOf({{1, 0}}).front();
    merged.beginPacket();
    for (SubId row = 2; row <= 12; row += 2) {
        Variable variable;
        variable.asked = asked.view();
        merged.getNext({&variable, 1}, entry().view());
        ASSERT_EQ(text(variable.name.view()), "1.2.1.1." + std::to_string(row));
        asked = variable.name;
    }
    EXPECT_EQ(one.next, 6u);
    EXPECT_EQ(other.next, 1u);
    for (SubId row = 100; row <= 102; ++row) {
        Variable variable;
        variable.asked = asked.view();
        merged.getNext({&variable, 1}, entry().view());
        ASSERT_EQ(text(variable.name.view()), "1.2.1.1." + std::to_string(row));
        asked = variable.name;
    }
    EXPECT_EQ(other.next, 4u);
    EXPECT_LE(one.next, 8u) << "none behind 12 in this column, then the first of the next one, once";
    merged.beginPacket();
    Variable variable;
    variable.asked = asked.view();
    merged.getNext({&variable, 1}, entry().view());
    EXPECT_EQ(text(variable.name.view()), "1.2.1.2.2");
}

// Of a table with a row of each version of IP each packet looks at the row that it is answered with.
TEST(MergedSource, ASourceWhoseRowsMustStandBehindIsNotAsked)
{
    static constexpr SubIdRange firstShape[] = {only(1)};
    static constexpr SubIdRange secondShape[] = {only(2)};
    using First = SortedRows<1, firstShape>;
    using Second = SortedRows<1, secondShape>;
    First::Calls one;
    Second::Calls other;
    RowSource<First> first(entry().view(), First(rowsOf({1}), {rowColumns[0], rowColumns[1]}, &one));
    RowSource<Second> second(entry().view(), Second(rowsOf({2}), {rowColumns[0], rowColumns[1]}, &other));
    MergedSource merged(entry().view(), {&second, &first});
    Oid asked = entry();
    for (const char *next : {"1.2.1.1.1", "1.2.1.1.2", "1.2.1.2.1", "1.2.1.2.2"}) {
        merged.beginPacket();
        one = {};
        other = {};
        Variable variable;
        variable.asked = asked.view();
        merged.getNext({&variable, 1}, entry().view());
        ASSERT_EQ(text(variable.name.view()), next);
        EXPECT_EQ(variable.name.view().back() == 1 ? other.next : one.next, 0u) << next;
        asked = variable.name;
    }
    merged.beginPacket();
    one = {};
    other = {};
    Variable variable;
    variable.asked = asked.view();
    merged.getNext({&variable, 1}, entry().view());
    EXPECT_EQ(variable.status, Status::endOfRegion);
    EXPECT_EQ(one.next + other.next, 0u);
}

TEST(MergedSource, ASourceWithoutTheColumnIsAskedOnlyAtItsEnd)
{
    Rows::Calls one;
    Rows::Calls other;
    RowSource<Rows> whole(entry().view(), Rows(rowsOf({1, 2, 3}), {rowColumns[0]}, &one));
    RowSource<Rows> rest(entry().view(), Rows(rowsOf({1, 2, 3}), {rowColumns[1], rowColumns[2]}, &other));
    MergedSource merged(entry().view(), {&whole, &rest});
    Oid asked = entry();
    for (const char *next : {"1.2.1.1.1", "1.2.1.1.2", "1.2.1.1.3", "1.2.1.2.1", "1.2.1.2.2"}) {
        merged.beginPacket();
        Variable variable;
        variable.asked = asked.view();
        merged.getNext({&variable, 1}, entry().view());
        ASSERT_EQ(text(variable.name.view()), next);
        EXPECT_EQ(other.next, variable.name.view()[entry().size()] == 1 ? 0u : other.next);
        asked = variable.name;
    }
    EXPECT_EQ(other.next, 2u);
    EXPECT_EQ(one.next, 4u);
}

} // namespace
} // namespace ipmib::host::testing
