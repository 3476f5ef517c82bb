// SPDX-License-Identifier: BSD-3-Clause
// Rows as an aligned table that fits a width.
#include "text_table.h"

#include <algorithm>
#include <numeric>

namespace ipmib::cli
{
namespace
{

constexpr std::size_t rowsToMeasure = 500;
constexpr std::size_t gap = 2; // between columns

} // namespace

std::size_t shownLength(const std::string &text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; // not one that continues a character
    }));
}

void TextTable::add(Row row)
{
    if (begun_) {
        write(row);
        return;
    }
    first_.push_back(std::move(row));
    if (first_.size() == rowsToMeasure) {
        begin();
    }
}

void TextTable::finish()
{
    if (!begun_) {
        begin();
    }
}

void TextTable::begin()
{
    begun_ = true;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        shown_.push_back(i);
        std::size_t width = shownLength(columns_[i].heading);
        for (const Row &row : first_) {
            width = std::max(width, shownLength(row[i].text));
        }
        widths_.push_back(width);
    }
    dropColumns();
    writeHeadings();
    for (const Row &row : first_) {
        write(row);
    }
    first_.clear();
}

void TextTable::dropColumns()
{
    while (width_ != noLimit && totalWidth() > width_ && shown_.size() > 1) {
        // Of two of the same rank the one on the right goes; the first one tells what a row is of.
        const auto last = std::max_element(shown_.rbegin(), shown_.rend() - 1, [this](std::size_t a, std::size_t b) {
            return columns_[a].rank < columns_[b].rank;
        });
        leftOut_.emplace_back(columns_[*last].heading);
        shown_.erase(last.base() - 1);
    }
}

std::size_t TextTable::totalWidth() const
{
    return std::accumulate(shown_.begin(), shown_.end(), gap * (shown_.size() - 1),
                           [this](std::size_t sum, std::size_t column) { return sum + widths_[column]; });
}

void TextTable::writeHeadings()
{
    std::vector<std::string> texts;
    for (const std::size_t column : shown_) {
        texts.emplace_back(columns_[column].heading);
    }
    writeLine(texts);
}

void TextTable::write(const Row &row)
{
    std::vector<std::string> texts;
    for (const std::size_t column : shown_) {
        texts.push_back(row[column].text);
    }
    writeLine(texts);
}

void TextTable::writeLine(const std::vector<std::string> &texts)
{
    std::string line;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::size_t width = widths_[shown_[i]];
        const std::string padding(width - std::min(width, shownLength(texts[i])), ' ');
        line += i == 0 ? "" : std::string(gap, ' ');
        line += columns_[shown_[i]].align == Align::right ? padding + texts[i] : texts[i] + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    std::fprintf(out_, "%s\n", line.c_str());
}

} // namespace ipmib::cli
