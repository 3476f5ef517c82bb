// SPDX-License-Identifier: BSD-3-Clause
// Rows as an aligned table that fits a width.
#include "text_table.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn tableColumns[] = {
    {"NAME", "name"},
    {"COUNT", "count", Align::right},
    {"NOTE", "note", Align::left, 1},
    {"LESS", "less", Align::left, 2},
};

struct Written {
    std::string text;
    std::vector<std::string> leftOut;

    std::vector<std::string> lines() const
    {
        std::vector<std::string> all;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            all.push_back(line);
        }
        return all;
    }
};

Written write(const std::vector<std::vector<std::string>> &rows, std::size_t width = TextTable::noLimit)
{
    std::FILE *file = std::tmpfile();
    TextTable table(file, tableColumns, width);
    for (const std::vector<std::string> &row : rows) {
        Row cells;
        for (const std::string &text : row) {
            cells.push_back(textCell(text));
        }
        table.add(cells);
    }
    table.finish();
    Written written{std::string(static_cast<std::size_t>(std::ftell(file)), '\0'), table.leftOut()};
    std::rewind(file);
    EXPECT_EQ(std::fread(written.text.data(), 1, written.text.size(), file), written.text.size());
    std::fclose(file);
    return written;
}

TEST(TextTable, alignsEachColumnAndEndsNoLineWithBlanks)
{
    EXPECT_EQ(write({{"a", "1", "x", "-"}, {"longer", "12345678", "", "end"}}).text, "NAME       COUNT  NOTE  LESS\n"
                                                                                     "a              1  x     -\n"
                                                                                     "longer  12345678        end\n");
}

TEST(TextTable, countsCharactersNotBytes)
{
    EXPECT_EQ(shownLength("├─ é"), 4u);
    const auto lines = write({{"é", "1", "x", "y"}, {"ee", "2", "x", "y"}}).lines();
    EXPECT_EQ(shownLength(lines[1]), shownLength(lines[2]));
}

TEST(TextTable, withoutRowsThereAreHeadings)
{
    EXPECT_EQ(write({}).text, "NAME  COUNT  NOTE  LESS\n");
}

TEST(TextTable, leavesOutTheHighestRankFirstThenFromTheRight)
{
    const std::vector<std::vector<std::string>> rows = {{"abcdef", "1", "note", "less"}};
    EXPECT_EQ(write(rows, 25).leftOut, (std::vector<std::string>{}));
    EXPECT_EQ(write(rows, 24).leftOut, (std::vector<std::string>{"LESS"}));
    EXPECT_EQ(write(rows, 18).leftOut, (std::vector<std::string>{"LESS", "NOTE"}));
    EXPECT_EQ(write(rows, 12).leftOut, (std::vector<std::string>{"LESS", "NOTE", "COUNT"}));
    EXPECT_EQ(write(rows, 1).lines(), (std::vector<std::string>{"NAME", "abcdef"})) << "what a row is of stays";
}

TEST(TextTable, everyLineFitsWhateverTheWidth)
{
    for (std::size_t width = 6; width < 40; ++width) {
        for (const std::string &line : write({{"abcdef", "123", "a note", "less"}}, width).lines()) {
            EXPECT_LE(shownLength(line), width) << line;
        }
    }
}

TEST(TextTable, rowsBehindTheMeasuredOnesAreWrittenInFull)
{
    std::vector<std::vector<std::string>> rows(600, {"a", "1", "x", "y"});
    rows.push_back({"a-very-long-name", "1", "x", "y"});
    const auto lines = write(rows).lines();
    ASSERT_EQ(lines.size(), 602u);
    EXPECT_EQ(lines.back(), "a-very-long-name      1  x     y");
}

} // namespace
} // namespace ipmib::cli
