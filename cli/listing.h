// SPDX-License-Identifier: BSD-3-Clause
// Writes rows as a table for people, or as a list of objects for programs.
#pragma once

#include "options.h"
#include "selection.h"
#include "text_table.h"
#include "view.h"

#include <string>
#include <vector>

namespace ipmib::cli
{

struct ViewRequest;

// The rows of a view that are of the request's interface.
void listRows(LocalDevice &device, const View &view, const ViewRequest &request, const Sink &sink);

// The places in a line of standard output; TextTable::noLimit when it is no terminal.
std::size_t outputWidth(const Options &options);

// One line about columns that had no room, as short as the width wants it; empty when there were none. `more` is what
// is to be told in front of it.
std::string noteOfLeftOut(const std::vector<std::string> &headings, std::size_t width, const std::string &more = "");

// A list with one object in a line.
class JsonList
{
  public:
    explicit JsonList(std::span<const ListingColumn> columns) : columns_(columns) {}

    void add(const Row &row);
    void finish();

  private:
    std::span<const ListingColumn> columns_;
    bool any_ = false;
};

class Listing
{
  public:
    // Throws host::UsageError when the options name a column that there is not.
    Listing(std::span<const ListingColumn> columns, const Options &options);

    void add(Row row);
    // What the note below the table says in any case.
    void note(std::string more) { more_ = std::move(more); }
    void finish();

  private:
    void write(Row row);

    const bool isForPrograms_;
    std::size_t width_;
    Selection selection_;
    std::vector<Row> unsorted_;
    std::string more_;
    JsonList json_;
    TextTable table_;
};

} // namespace ipmib::cli
