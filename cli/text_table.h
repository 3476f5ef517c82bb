// SPDX-License-Identifier: BSD-3-Clause
// Rows as an aligned table that fits a width. The first rows decide how wide the columns are; later ones are written as
// they come, however many there are.
#pragma once

#include "view.h"

#include <cstdio>
#include <span>
#include <string>
#include <vector>

namespace ipmib::cli
{

class TextTable
{
  public:
    static constexpr std::size_t noLimit = 0;

    TextTable(std::FILE *out, std::span<const ListingColumn> columns, std::size_t width, Palette palette = {})
        : out_(out), columns_(columns), width_(width), palette_(palette)
    {
    }

    // Writes the headings now; columns are as wide as these rows, which are not written, want them.
    void begin(const std::vector<Row> &likely);

    void add(Row row);
    void finish();

    // The headings of columns that had no room.
    const std::vector<std::string> &leftOut() const { return leftOut_; }

  private:
    void beginWithFirst();
    void dropColumns();
    std::size_t totalWidth() const;
    void writeHeadings();
    void write(const Row &row);

    std::FILE *out_;
    std::span<const ListingColumn> columns_;
    std::size_t width_;
    Palette palette_;
    bool begun_ = false;
    std::vector<Row> first_;
    std::vector<std::size_t> shown_;  // places of columns
    std::vector<std::size_t> widths_; // of all columns
    std::vector<std::string> leftOut_;
};

// How many places a text takes on a terminal.
std::size_t shownLength(const std::string &text);

} // namespace ipmib::cli
