// SPDX-License-Identifier: BSD-3-Clause
// The lines of the configuration that say who serves what.

#include "serve_settings.h"

#include <gtest/gtest.h>

namespace ipmib::agent
{

namespace
{

const std::vector<host::ServedTable> tables = {{"aTable", {}, {}, {}, {}}, {"another", {}, {}, {}, {}}};

TEST(ServeSettings, WithoutALineEverythingIsAutomatic)
{
    const ServeSettings settings("test", "serve", &tables);
    EXPECT_EQ(settings.of(tables[0]), Serve::automatic);
    EXPECT_EQ(settings.notOff(tables).size(), 2u);
}

TEST(ServeSettings, ATablesOwnLineCountsMoreThanAllWhateverTheirOrder)
{
    for (const bool allFirst : {true, false}) {
        ServeSettings settings("test", "serve", &tables);
        EXPECT_EQ(settings.read(allFirst ? "all off" : "aTable  take "), "");
        EXPECT_EQ(settings.read(allFirst ? "aTable\ttake" : "all off"), "");
        EXPECT_EQ(settings.of(tables[0]), Serve::take);
        EXPECT_EQ(settings.of(tables[1]), Serve::off);
        EXPECT_EQ(settings.notOff(tables), std::vector{&tables[0]});
    }
}

TEST(ServeSettings, TheLastLineOfATableCounts)
{
    ServeSettings settings("test", "serve", &tables);
    settings.read("aTable take");
    settings.read("aTable auto");
    EXPECT_EQ(settings.of(tables[0]), Serve::automatic);
}

TEST(ServeSettings, WhatIsWrongIsNamed)
{
    ServeSettings settings("test", "serve", &tables);
    EXPECT_EQ(settings.read("aTable"), "needs a table, or \"all\", and one of auto, take, off");
    EXPECT_EQ(settings.read("aTable steal"), "\"steal\" is none of auto, take, off");
    EXPECT_EQ(settings.read("aTable take it"), "\"it\" is one word too many");
    EXPECT_EQ(settings.read("atable take"), "there is no table \"atable\"; there are all, aTable, another");
    EXPECT_EQ(settings.of(tables[0]), Serve::automatic);
}

TEST(ServeSettings, NamesMayBeLookedAtLater)
{
    ServeSettings settings("test", "serve", nullptr);
    EXPECT_EQ(settings.read("atable take"), "");
    EXPECT_EQ(settings.read("another take"), "");
    EXPECT_EQ(settings.read("all off"), "");
    EXPECT_EQ(settings.unknownNames(tables), std::vector<std::string>{"atable"});
}

} // namespace

} // namespace ipmib::agent
