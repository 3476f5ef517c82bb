// SPDX-License-Identifier: BSD-3-Clause
// Writes rows as a table for people, or as a list of objects for programs.
#include "listing.h"

#include "local_device.h"
#include "output.h"
#include "view_names.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace ipmib::cli
{

void listRows(LocalDevice &device, const View &view, const ViewRequest &request, const Sink &sink)
{
    const std::size_t place = interfaceColumn(view);
    const bool isFiltered = !request.interface.empty();
    const std::string name =
        isFiltered ? device.interfaceName(device.interfaceIndex(request.interface)) : std::string();
    view.list(device, request.argument, [&](Row row) {
        if (!isFiltered || row[place].text == name) {
            sink(std::move(row));
        }
    });
}

std::size_t outputWidth(const Options &options)
{
    winsize size{};
    if (options.width) {
        return *options.width;
    }
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : TextTable::noLimit;
}

std::string noteOfLeftOut(const std::vector<std::string> &headings, std::size_t width, const std::string &more)
{
    if (headings.empty()) {
        return more;
    }
    std::string names;
    for (const std::string &name : headings) {
        names += (names.empty() ? "" : ", ") + name;
    }
    const std::string before = more.empty() ? "" : more + "; ";
    const std::string count = std::to_string(headings.size()) + (headings.size() == 1 ? " column" : " columns");
    const std::size_t room = width - std::min(width, programPrefixLength);
    for (const std::string &note : {before + "no room for " + names + " (--width 0 shows all)",
                                    before + "no room for " + count + " (--width 0 shows all)"}) {
        if (width == TextTable::noLimit || shownLength(note) <= room) {
            return note;
        }
    }
    return before + count + " left out";
}

void JsonList::add(const Row &row)
{
    Json object = Json::object();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        object[columns_[i].key] = row[i].json;
        if (columns_[i].ageKey != nullptr) {
            object[columns_[i].ageKey] = row[i].age;
        }
    }
    std::fputs(any_ ? ",\n " : "[", stdout);
    std::fputs(object.dump(-1, ' ', false, Json::error_handler_t::replace).c_str(), stdout);
    any_ = true;
}

void JsonList::finish()
{
    std::fputs(any_ ? "]\n" : "[]\n", stdout);
}

Listing::Listing(std::span<const ListingColumn> columns, const Options &options)
    : isForPrograms_(options.json), width_(outputWidth(options)), selection_(columns, options), json_(columns),
      table_(stdout, columns, width_, Palette::ofStandardOutput(options))
{
}

void Listing::add(Row row)
{
    if (!selection_.takes(row)) {
        return;
    }
    if (selection_.sorts()) {
        unsorted_.push_back(std::move(row));
    } else {
        write(std::move(row));
    }
}

void Listing::write(Row row)
{
    if (isForPrograms_) {
        json_.add(row);
    } else {
        table_.add(std::move(row));
    }
}

void Listing::finish()
{
    selection_.sort(unsorted_);
    for (Row &row : unsorted_) {
        write(std::move(row));
    }
    if (isForPrograms_) {
        json_.finish();
        return;
    }
    table_.finish();
    if (const std::string note = noteOfLeftOut(table_.leftOut(), width_, more_); !note.empty()) {
        complain(note);
    }
}

} // namespace ipmib::cli
