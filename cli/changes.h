// SPDX-License-Identifier: BSD-3-Clause
// Which rows have come, gone or changed between two looks at a view.
#pragma once

#include "view.h"

#include <map>
#include <string>
#include <vector>

namespace ipmib::cli
{

class Changes
{
  public:
    explicit Changes(std::span<const ListingColumn> viewColumns);

    // When and what has changed, then the view's columns but those that pass by themselves.
    std::span<const ListingColumn> columns() const { return columns_; }

    // One row for each change since the look before, in the order of the rows, those that are gone behind them; none at
    // the first look. A row that is gone is told as it was last.
    std::vector<Row> update(const std::vector<Row> &rows);

    // The rows as changes, to see how much room they take.
    std::vector<Row> likely(const std::vector<Row> &rows) const;

  private:
    std::string keyOf(const Row &row) const;
    Row changed(const char *what, Tone tone, const Row &row) const;

    std::span<const ListingColumn> viewColumns_;
    std::vector<ListingColumn> columns_;
    std::map<std::string, Row> before_;
    bool isFirst_ = true;
};

} // namespace ipmib::cli
