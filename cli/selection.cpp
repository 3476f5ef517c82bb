// SPDX-License-Identifier: BSD-3-Clause
#include "selection.h"

#include "near_names.h"

#include "host/command_line.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

namespace ipmib::cli
{
namespace
{

// "OCTETS IN" and "octetsIn" are the same.
std::string plain(std::string_view name)
{
    std::string text;
    for (const char letter : name) {
        if (std::isalnum(static_cast<unsigned char>(letter)) != 0) {
            text += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        }
    }
    return text;
}

// By its key or its heading, or by the beginning of one that no other has.
std::optional<std::size_t> columnNamed(std::span<const ListingColumn> columns, const std::string &name)
{
    const std::string wanted = plain(name);
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string key = plain(columns[i].key);
        const std::string heading = plain(columns[i].heading);
        if (key == wanted || heading == wanted) {
            return i;
        }
        if (!wanted.empty() && (key.starts_with(wanted) || heading.starts_with(wanted))) {
            found.push_back(i);
        }
    }
    return found.size() == 1 ? std::optional(found.front()) : std::nullopt;
}

std::size_t columnOrRefuse(std::span<const ListingColumn> columns, const char *option, const std::string &name)
{
    if (const auto column = columnNamed(columns, name)) {
        return *column;
    }
    std::vector<std::string> keys;
    std::string all;
    for (const ListingColumn &column : columns) {
        keys.emplace_back(column.key);
        all += (all.empty() ? "" : ", ") + keys.back();
    }
    const std::string meant = didYouMean(name, keys);
    throw host::UsageError(std::string(option) + ": there is no column \"" + name + "\"" +
                           (meant.empty() ? ", but " + all : meant));
}

bool comesBefore(const Cell &a, const Cell &b)
{
    if (a.json.is_null() || b.json.is_null()) {
        return !a.json.is_null();
    }
    if (a.json.is_number() && b.json.is_number()) {
        return a.json > b.json;
    }
    return strverscmp(a.text.c_str(), b.text.c_str()) < 0;
}

double activity(const Row &row)
{
    double sum = 0;
    for (const Cell &cell : row) {
        sum += cell.json.is_number() ? cell.json.get<double>() : 0;
    }
    return sum;
}

} // namespace

Selection::Selection(std::span<const ListingColumn> columns, const Options &options)
{
    for (const std::string &filter : options.filters) {
        const std::size_t equals = filter.find('=');
        if (equals == std::string::npos) {
            filters_.push_back({std::nullopt, filter});
        } else {
            filters_.push_back(
                {columnOrRefuse(columns, "--filter", filter.substr(0, equals)), filter.substr(equals + 1)});
        }
    }
    if (!options.sort.empty()) {
        sort_ = columnOrRefuse(columns, "--sort", options.sort);
    }
}

bool Selection::takes(const Row &row) const
{
    return std::ranges::all_of(filters_, [&row](const Filter &filter) {
        const auto holds = [&filter](const Cell &cell) { return cell.text.find(filter.text) != std::string::npos; };
        return filter.column ? holds(row[*filter.column]) : std::ranges::any_of(row, holds);
    });
}

void Selection::sort(std::vector<Row> &rows) const
{
    if (sort_) {
        std::ranges::stable_sort(
            rows, [column = *sort_](const Row &a, const Row &b) { return comesBefore(a[column], b[column]); });
    }
}

void sortByActivity(std::vector<Row> &rows)
{
    std::ranges::stable_sort(rows, [](const Row &a, const Row &b) { return activity(a) > activity(b); });
}

} // namespace ipmib::cli
