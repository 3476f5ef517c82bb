// SPDX-License-Identifier: BSD-3-Clause
// Which rows have come, gone or changed between two looks, and which of them are shown.
#include "changes.h"
#include "selection.h"

#include <gtest/gtest.h>

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn followedColumns[] = {
    {"ADDRESS", "address", Align::left, 0, Role::key},
    {"STATE", "state"},
    {"OCTETS IN", "octetsIn", Align::right, 1, Role::time},
};

Row row(const char *address, const char *state, int octets)
{
    return {textCell(address), textCell(state), Cell{std::to_string(octets), octets, {}}};
}

std::vector<std::string> told(const std::vector<Row> &rows)
{
    std::vector<std::string> lines;
    for (const Row &each : rows) {
        std::string line;
        for (std::size_t i = 1; i < each.size(); ++i) { // the time stands first
            line += (i == 1 ? "" : " ") + each[i].text;
        }
        lines.push_back(line);
    }
    return lines;
}

TEST(Changes, areToldFromTheSecondLookOn)
{
    Changes changes(followedColumns);
    ASSERT_EQ(changes.columns().size(), 4u) << "when, what, and the columns that do not pass by themselves";
    EXPECT_TRUE(changes.update({row("a", "up", 1), row("b", "up", 1)}).empty());
    EXPECT_TRUE(changes.update({row("a", "up", 2), row("b", "up", 3)}).empty()) << "time passes";
    EXPECT_EQ(told(changes.update({row("b", "down", 3), row("c", "up", 0)})),
              (std::vector<std::string>{"changed b down", "new c up", "gone a up"}));
    EXPECT_EQ(told(changes.update({})), (std::vector<std::string>{"gone b down", "gone c up"}));
    EXPECT_EQ(told(changes.update({row("a", "up", 2)})), (std::vector<std::string>{"new a up"}));
}

TEST(Selection, rowsThatHoldTheTextsInTheOrderOfAColumn)
{
    Options options;
    options.filters = {"STATE=u", "eth"};
    options.sort = "octets";
    const Selection selection(followedColumns, options);
    EXPECT_TRUE(selection.takes(row("eth1", "up", 1)));
    EXPECT_FALSE(selection.takes(row("eth1", "down", 1)));
    EXPECT_FALSE(selection.takes(row("lan1", "up", 1)));
    std::vector<Row> rows = {row("eth2", "up", 5), row("eth10", "up", 50), {textCell("-"), textCell("-"), emptyCell()}};
    selection.sort(rows);
    EXPECT_EQ(rows.front()[0].text, "eth10");
    EXPECT_EQ(rows.back()[0].text, "-") << "what has no value comes last";
    options.sort = "Address";
    Selection(followedColumns, options).sort(rows);
    EXPECT_EQ(rows[1][0].text, "eth2") << "eth2 before eth10";
    options.sort = "octetIn";
    EXPECT_THROW(Selection(followedColumns, options), host::UsageError);
}

} // namespace
} // namespace ipmib::cli
