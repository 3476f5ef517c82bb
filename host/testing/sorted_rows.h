// SPDX-License-Identifier: BSD-3-Clause
// Rows in C++ that a test lists, with columns that some of them lack.
#pragma once

#include "../row_source.h"
#include "identifiers.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace ipmib::host::testing
{

// Each kind is a type, as the rows of a table are: what indexes look like is known when it is compiled.
inline constexpr SubIdRange numberShape[] = {anyIfIndex};
inline constexpr SubIdRange widestShape[] = {{}, {3, UINT32_MAX}};
inline constexpr SubIdRange addressShape[] = {anyIfIndex, only(4), anyOctet, anyOctet, anyOctet, anyOctet};
inline constexpr SubIdRange octetsShape[] = {anyIfIndex, lengthUpTo(3), anyOctet, anyOctet, anyOctet};
inline constexpr SubIdRange betweenShape[] = {lengthUpTo(2), anyOctet, anyOctet, {2, 5}};

struct SortedRow {
    Identifier instance;
    bool isWhole; // else it has vanished when its last column is asked for
};

template <std::size_t N, const SubIdRange (&ranges)[N]>
class SortedRows
{
  public:
    using Row = SortedRow;
    using Index = std::array<SubId, N>;
    static constexpr IndexShape shape = ranges;
    // How often they were asked for a row.
    struct Calls {
        unsigned find = 0;
        unsigned next = 0;
    };

    // The rows must outlive it, in any order.
    SortedRows(const std::vector<Row> &rows, std::vector<RowColumn<Row>> columns, Calls *calls = nullptr)
        : rows_(rows), columns_(std::move(columns)), calls_(calls)
    {
        std::ranges::sort(rows_, {}, &Row::instance);
    }

    std::span<const RowColumn<Row>> columns() const { return columns_; }
    bool find(const Index &index, Row &row) const
    {
        if (calls_ != nullptr) {
            ++calls_->find;
        }
        const auto found = std::ranges::find_if(rows_, [&](const Row &each) { return indexOf(each) == index; });
        return found != rows_.end() && (row = *found, true);
    }
    bool next(const Index *behind, Row &row) const
    {
        if (calls_ != nullptr) {
            ++calls_->next;
        }
        const auto found = std::ranges::find_if(
            rows_, [&](const Row &each) { return behind == nullptr || std::is_gt(compare(indexOf(each), *behind)); });
        return found != rows_.end() && (row = *found, true);
    }
    Index indexOf(const Row &row) const
    {
        Index index;
        readIndex(shape, row.instance, index);
        return index;
    }
    bool complete(Row &row, unsigned) const { return row.isWhole; }

  private:
    std::vector<Row> rows_;
    std::vector<RowColumn<Row>> columns_;
    Calls *calls_;
};

} // namespace ipmib::host::testing
