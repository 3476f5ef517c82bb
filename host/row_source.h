// SPDX-License-Identifier: BSD-3-Clause
// Rows in C++ as a source: a table, or scalars, which are the columns of one row with the instance 0.
#pragma once

#include "byte_store.h"
#include "row_index.h"
#include "source.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <optional>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

namespace ipmib::host
{

// A column of a table whose rows are of this type: one line each, in ascending order.
template <class Row>
struct RowColumn {
    SubId number;
    // Nothing for a row that has none. What the value points to must stay where it is as long as the row.
    std::optional<Value> (*value)(const Row &);
    // What has to be read for it beyond the row itself, in numbers of the rows' own; 0 for nothing.
    unsigned needs = 0;
};

// What the rows of a table have to say. `Index` is an array with a place for each of `shape`.
template <class Rows>
concept TableRows = requires(const Rows &rows, typename Rows::Row &row, const typename Rows::Index &index)
{
    {
        Rows::shape
        } -> std::convertible_to<IndexShape>;
    {
        rows.columns()
        } -> std::convertible_to<std::span<const RowColumn<typename Rows::Row>>>;
    // Fills the row with this index; false when there is none.
    {
        rows.find(index, row)
        } -> std::same_as<bool>;
    // Fills the first row behind an index that need not be anybody's, or of all for null; false when there is none.
    {
        rows.next(&index, row)
        } -> std::same_as<bool>;
    {
        rows.indexOf(row)
        } -> std::same_as<typename Rows::Index>;
};

// Rows that read more of themselves for some columns; false when the row has vanished meanwhile.
template <class Rows>
concept CompletedRows = requires(const Rows &rows, typename Rows::Row &row, unsigned needs)
{
    {
        rows.complete(row, needs)
        } -> std::same_as<bool>;
};

// Rows that cost something only while they are served; throws std::runtime_error.
template <class Rows>
concept StartedRows = requires(const Rows &rows)
{
    rows.start();
};

// Rows that take a while to be read once they have been started.
template <class Rows>
concept AwaitedRows = requires(const Rows &rows)
{
    {
        rows.areRead()
        } -> std::same_as<bool>;
};

// Which row and which column an identifier means, and what follows it. There is one row at hand at a time.
class RowSourceBase : public Source
{
  public:
    std::vector<Oid> objects() const override;
    void get(std::span<Variable> variables) override;
    void getNext(std::span<Variable> variables, OidView region) override;
    bool lowestBehind(OidView asked, Oid &lowest) override;

  protected:
    RowSourceBase(OidView root, IndexShape shape) : root_(root), shape_(shape) {}

    virtual std::span<const SubId> columns() const = 0;
    virtual bool find(OidView index) = 0;
    // The first row of all when there is no index.
    virtual bool next(const OidView *behind) = 0;
    virtual void readIndexOfRow(std::span<SubId> index) const = 0;
    virtual std::optional<Value> value(std::size_t column) = 0;

  private:
    // A variable on its way: the column that is tried, and the instance there that it asks for, or behind.
    struct Pending {
        Variable *variable;
        std::size_t column;
        OidView instance;
        bool inclusive;
    };
    using Places = std::array<SubId, maxIndexPlaces>;
    enum class Found : std::uint8_t { row, noneBehind, noneAtAll };

    void startNext(Variable &variable, OidView region);
    bool takeRow();
    Found findNext(const Pending &from);
    void answerNext(Pending pending, Found found, OidView region);
    void setValue(Variable &variable, const Value &value);
    OidView rowIndex() const { return OidView(rowIndex_).first(shape_.size()); }

    Oid root_; // of the entry, or the group of scalars
    IndexShape shape_;
    Places rowIndex_{}; // of the row at hand
    ByteStore store_;   // the values' octets and identifiers
    std::vector<Pending> pending_;
    std::vector<Pending> rest_;
    std::vector<Pending> row_; // those that ask for one row
};

template <TableRows Rows>
class RowSource final : public RowSourceBase
{
  public:
    // The root is the table's entry, or the node above scalars.
    RowSource(OidView root, Rows rows) : RowSourceBase(root, Rows::shape), rows_(std::move(rows))
    {
        static_assert(std::tuple_size_v<Index> <= maxIndexPlaces);
        for (const auto &column : rows_.columns()) {
            numbers_.push_back(column.number);
        }
    }

    void start() override
    {
        if constexpr (StartedRows<Rows>) {
            rows_.start();
        }
    }

    bool areRead() const override
    {
        if constexpr (AwaitedRows<Rows>) {
            return rows_.areRead();
        }
        return true;
    }

  private:
    using Index = typename Rows::Index;

    static Index indexFrom(OidView places)
    {
        Index index;
        std::copy_n(places.begin(), index.size(), index.begin());
        return index;
    }

    std::span<const SubId> columns() const override { return numbers_; }
    bool find(OidView index) override { return rows_.find(indexFrom(index), row_); }
    bool next(const OidView *behind) override
    {
        if (behind == nullptr) {
            return rows_.next(nullptr, row_);
        }
        const Index index = indexFrom(*behind);
        return rows_.next(&index, row_);
    }
    void readIndexOfRow(std::span<SubId> index) const override
    {
        const Index own = rows_.indexOf(row_);
        std::copy_n(own.begin(), own.size(), index.begin());
    }
    std::optional<Value> value(std::size_t number) override
    {
        const auto &column = rows_.columns()[number];
        if constexpr (CompletedRows<Rows>) {
            if (column.needs != 0 && !rows_.complete(row_, column.needs)) {
                return std::nullopt;
            }
        }
        return column.value(row_);
    }

    Rows rows_;
    typename Rows::Row row_{};
    std::vector<SubId> numbers_;
};

// Scalars as the columns of one row. A group has
//   Row, columns()   as the rows of a table
//   read(row)        fills the row; false when there is none, and so no scalar
template <class Group>
class ScalarRows
{
  public:
    using Row = typename Group::Row;
    using Index = std::array<SubId, 1>;
    static constexpr SubIdRange shape[1] = {only(0)};

    explicit ScalarRows(Group group) : group_(std::move(group)) {}

    void start() const requires requires(const Group &group) { group.start(); }
    {
        group_.start();
    }
    bool areRead() const
    {
        if constexpr (AwaitedRows<Group>) {
            return group_.areRead();
        }
        return true;
    }
    std::span<const RowColumn<Row>> columns() const { return group_.columns(); }
    bool find(const Index &, Row &row) const { return group_.read(row); }
    bool next(const Index *behind, Row &row) const { return behind == nullptr && group_.read(row); }
    Index indexOf(const Row &) const { return {0}; }

  private:
    Group group_;
};

} // namespace ipmib::host
