// SPDX-License-Identifier: BSD-3-Clause
// Writes rows as a table for people, or as a list of objects for programs.
#include "listing.h"

#include "output.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace ipmib::cli
{
namespace
{

void writeJson(std::span<const Column> columns, const Row &row)
{
    Json object = Json::object();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        object[columns[i].key] = row[i].json;
    }
    std::fputs(object.dump(-1, ' ', false, Json::error_handler_t::replace).c_str(), stdout);
}

} // namespace

std::size_t outputWidth(const Options &options)
{
    winsize size{};
    if (options.width) {
        return *options.width;
    }
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : TextTable::noLimit;
}

Listing::Listing(std::span<const Column> columns, const Options &options)
    : columns_(columns), json_(options.json), table_(stdout, columns, outputWidth(options))
{
}

void Listing::add(Row row)
{
    if (!json_) {
        table_.add(std::move(row));
        return;
    }
    std::fputs(any_ ? ",\n " : "[", stdout); // one row in a line
    writeJson(columns_, row);
    any_ = true;
}

void Listing::finish()
{
    if (json_) {
        std::fputs(any_ ? "]\n" : "[]\n", stdout);
        return;
    }
    table_.finish();
    if (table_.leftOut().empty()) {
        return;
    }
    std::string names;
    for (const std::string &name : table_.leftOut()) {
        names += (names.empty() ? "" : ", ") + name;
    }
    complain("no room for " + names + " (--width 0 shows all)");
}

} // namespace ipmib::cli
