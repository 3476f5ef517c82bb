// SPDX-License-Identifier: BSD-3-Clause
// Writes rows as a table for people, or as a list of objects for programs.
#pragma once

#include "options.h"
#include "text_table.h"
#include "view.h"

namespace ipmib::cli
{

// The places in a line of standard output; TextTable::noLimit when it is no terminal.
std::size_t outputWidth(const Options &options);

class Listing
{
  public:
    Listing(std::span<const Column> columns, const Options &options);

    void add(Row row);
    void finish();

  private:
    std::span<const Column> columns_;
    bool json_;
    bool any_ = false;
    TextTable table_;
};

} // namespace ipmib::cli
