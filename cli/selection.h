// SPDX-License-Identifier: BSD-3-Clause
// Which rows are shown, and in which order.
#pragma once

#include "view.h"

#include <optional>
#include <string>
#include <vector>

namespace ipmib::cli
{

class Selection
{
  public:
    // Throws host::UsageError for a column that there is not.
    Selection(std::span<const ListingColumn> columns, const Options &options);

    // Whether all filters hold.
    bool takes(const Row &row) const;
    bool sorts() const { return sort_.has_value(); }
    // Numbers descend, texts ascend, what has no value comes last.
    void sort(std::vector<Row> &rows) const;

  private:
    struct Filter {
        std::optional<std::size_t> column; // none: any
        std::string text;
    };

    std::vector<Filter> filters_;
    std::optional<std::size_t> sort_;
};

// The rows whose numbers add up to most come first.
void sortByActivity(std::vector<Row> &rows);

} // namespace ipmib::cli
