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
        beginWithFirst();
    }
}

void TextTable::finish()
{
    if (!begun_) {
        beginWithFirst();
    }
}

void TextTable::beginWithFirst()
{
    begin(first_);
    for (const Row &row : first_) {
        write(row);
    }
    first_.clear();
}

void TextTable::begin(const std::vector<Row> &likely)
{
    begun_ = true;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        shown_.push_back(i);
        std::size_t width = shownLength(columns_[i].heading);
        for (const Row &row : likely) {
            width = std::max(width, shownLength(row[i].text));
        }
        widths_.push_back(width);
    }
    dropColumns();
    writeHeadings();
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
    Row headings(columns_.size());
    for (const std::size_t column : shown_) {
        headings[column].text = columns_[column].heading;
    }
    write(headings);
}

void TextTable::write(const Row &row)
{
    std::string line;
    std::size_t blanks = 0; // that are written when something follows them
    for (const std::size_t column : shown_) {
        const std::string &text = row[column].text;
        const std::size_t padding = widths_[column] - std::min(widths_[column], shownLength(text));
        const bool isRight = columns_[column].align == Align::right;
        blanks += isRight ? padding : 0;
        if (!text.empty()) {
            line += std::string(blanks, ' ') + palette_.painted(row[column].tone, text);
            blanks = 0;
        }
        blanks += (isRight ? 0 : padding) + gap;
    }
    std::fprintf(out_, "%s\n", line.c_str());
}

} // namespace ipmib::cli
