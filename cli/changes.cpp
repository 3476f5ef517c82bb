// SPDX-License-Identifier: BSD-3-Clause
#include "changes.h"

#include <ctime>

namespace ipmib::cli
{
namespace
{

std::string timeText(const char *pattern, const std::tm &time)
{
    char text[32];
    return {text, std::strftime(text, sizeof text, pattern, &time)};
}

// People are told local time, programs UTC.
Cell timeCell()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    std::tm utc{};
    localtime_r(&now, &local);
    gmtime_r(&now, &utc);
    return {timeText("%H:%M:%S", local), timeText("%Y-%m-%dT%H:%M:%SZ", utc), {}};
}

bool sameFacts(std::span<const ListingColumn> columns, const Row &a, const Row &b)
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].role == Role::fact && a[i].text != b[i].text) {
            return false;
        }
    }
    return true;
}

} // namespace

Changes::Changes(std::span<const ListingColumn> viewColumns)
    : viewColumns_(viewColumns), columns_{{"TIME", "time"}, {"CHANGE", "change"}}
{
    for (const ListingColumn &column : viewColumns) {
        if (column.role != Role::time) {
            columns_.push_back(column);
        }
    }
}

std::string Changes::keyOf(const Row &row) const
{
    std::string key;
    for (std::size_t i = 0; i < viewColumns_.size(); ++i) {
        key += viewColumns_[i].role == Role::key ? row[i].text + '\0' : "";
    }
    return key;
}

Row Changes::changed(const char *what, Tone tone, const Row &row) const
{
    Row told{timeCell(), textCell(what, tone)};
    for (std::size_t i = 0; i < viewColumns_.size(); ++i) {
        if (viewColumns_[i].role != Role::time) {
            told.push_back(row[i]);
        }
    }
    return told;
}

std::vector<Row> Changes::likely(const std::vector<Row> &rows) const
{
    std::vector<Row> told{Row(columns_.size())};
    told.front()[0] = timeCell();
    told.front()[1] = textCell("changed");
    for (const Row &row : rows) {
        told.push_back(changed("changed", Tone::plain, row));
    }
    return told;
}

std::vector<Row> Changes::update(const std::vector<Row> &rows)
{
    std::vector<Row> told;
    std::map<std::string, Row> now;
    for (const Row &row : rows) {
        const std::string key = keyOf(row);
        const auto before = before_.find(key);
        if (before == before_.end()) {
            told.push_back(changed("new", Tone::good, row));
        } else {
            if (!sameFacts(viewColumns_, before->second, row)) {
                told.push_back(changed("changed", Tone::plain, row));
            }
            before_.erase(before);
        }
        now.emplace(key, row);
    }
    for (const auto &[key, row] : before_) {
        told.push_back(changed("gone", Tone::bad, row));
    }
    before_ = std::move(now);
    return std::exchange(isFirst_, false) ? std::vector<Row>() : told;
}

} // namespace ipmib::cli
