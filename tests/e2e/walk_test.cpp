// SPDX-License-Identifier: BSD-3-Clause
// Every way of walking gives the same rows, in increasing order, and ends by itself.

#include "e2e/agent_under_test.h"
#include "e2e/objects.h"
#include "e2e/rows.h"

#include <algorithm>

namespace ipmib::e2e
{

namespace
{

// All but the one that is never the same.
Words withoutUptime(Words rows)
{
    std::erase_if(rows, [](const std::string &row) { return row.starts_with(".1.3.6.1.2.1.1.3.0 "); });
    return rows;
}

constexpr const char *icmp = "1.3.6.1.2.1.5";

class WalkTest : public AgentTest
{
};

TEST_F(WalkTest, AllWaysGiveTheSameRows)
{
    startAgent();
    const auto all = [this](const std::string &program, const Words &who, const Words &options) {
        return withoutUptime(walk(program, who, options, mib2));
    };
    const Words rows = all("snmpwalk", publicV2, {});
    expectIncreasing(rows);
    EXPECT_EQ(all("snmpbulkwalk", publicV2, {"-Cr1"}), rows);
    EXPECT_EQ(all("snmpbulkwalk", publicV2, {"-Cr7"}), rows);
    EXPECT_EQ(all("snmpbulkwalk", publicV2, {"-Cr50"}), rows);
    EXPECT_EQ(all("snmpwalk", aliceV3, {}), rows);
    EXPECT_EQ(all("snmpbulkwalk", aliceV3, {"-Cr50"}), rows);
    stopAgent();
}

TEST_F(WalkTest, OverTcpAsOverUdp)
{
    startAgent(everybody + "agentaddress " + address("tcp") + "\n");
    const Words rows = walk("snmpwalk", publicV2, {}, icmp);
    const Result tcp = runAgent({"snmpwalk", "-v2c", "-c", "public", "-On", address("tcp"), icmp});
    Words tcpRows = linesOf(tcp.output);
    ASSERT_GE(tcpRows.size(), rows.size());
    tcpRows.resize(rows.size());
    EXPECT_EQ(tcpRows, rows);
    stopAgent();
}

TEST_F(WalkTest, EveryTableOfTheDeviceIsThere)
{
    startAgent();
    const Words rows = walk("snmpbulkwalk", publicV2, {}, mib2);
    for (const char *row : {
             ".1.3.6.1.2.1.4.26.0 = INTEGER: 64",
             ".1.3.6.1.2.1.4.30.1.5.1 = INTEGER: 1",
             ".1.3.6.1.2.1.4.31.1.1.4.2 = Counter64: 4294967303",
             ".1.3.6.1.2.1.4.31.3.1.3.1.3 = Counter32: 103",
             ".1.3.6.1.2.1.5.29.1.2.2 = Counter32: 12",
             ".1.3.6.1.2.1.5.30.1.3.2.128 = Counter32: 5",
             ".1.3.6.1.2.1.5.30.1.4.2.129 = Counter32: 5",
         }) {
        EXPECT_TRUE(holds(rows, row)) << row;
    }
    for (const char *entry : {"4.32.1", "4.34.1", "4.35.1", "4.37.1", "4.39.1"}) {
        const std::string beginning = std::string(".1.3.6.1.2.1.") + entry + ".";
        EXPECT_TRUE(std::ranges::any_of(rows, [&](const std::string &row) { return row.starts_with(beginning); }))
            << entry;
    }
    stopAgent();
}

TEST_F(WalkTest, Version1LeavesOutWhatItCannotCarry)
{
    startAgent();
    Words rows = withoutUptime(walk("snmpwalk", publicV2, {}, mib2));
    const auto is64 = [](const std::string &row) { return row.find("Counter64") != std::string::npos; };
    EXPECT_TRUE(std::ranges::any_of(rows, is64));
    std::erase_if(rows, is64);
    EXPECT_EQ(withoutUptime(walk("snmpwalk", publicV1, {}, mib2)), rows);
    stopAgent();
}

TEST_F(WalkTest, AViewThatHidesPartOfATableHidesItFromEveryWalk)
{
    startAgent(everybody + R"(
com2sec limited 127.0.0.1 limited
group limited v2c limited
view half included .1.3.6.1.2.1.5
view half excluded .1.3.6.1.2.1.5.30.1.3.2.128
view half excluded .1.3.6.1.2.1.5.29.1.3
access limited "" any noauth exact half none none
)");
    const Words limited = {"-v2c", "-c", "limited"};
    Words rows = walk("snmpwalk", publicV2, {}, icmp);
    const std::size_t all = rows.size();
    std::erase_if(rows, [](const std::string &row) {
        return row.starts_with(".1.3.6.1.2.1.5.30.1.3.2.128 ") || row.starts_with(".1.3.6.1.2.1.5.29.1.3.");
    });
    EXPECT_EQ(rows.size(), all - 2);
    EXPECT_EQ(walk("snmpwalk", limited, {}, mib2), rows);
    EXPECT_EQ(walk("snmpbulkwalk", limited, {"-Cr1"}, mib2), rows);
    EXPECT_EQ(walk("snmpbulkwalk", limited, {"-Cr50"}, mib2), rows);
    stopAgent();
}

TEST_F(WalkTest, ColumnsSideBySideGoOnBeyondTheirTables)
{
    startAgent();
    // The first column ends within the second repetition, and with it the tree for the last one.
    const Result result = snmp("snmpbulkget", publicV2,
                               {"-Cn1", "-Cr2", "1.3.6.1.2.1.5.29.1.2", "1.3.6.1.2.1.5.29.1.4",
                                "1.3.6.1.2.1.5.30.1.4.2.145", "1.3.6.1.2.1.31.1.1.1.19.3"});
    const std::string end = "No more variables left in this MIB View (It is past the end of the MIB tree)";
    EXPECT_EQ(linesOf(result.output),
              (Words{".1.3.6.1.2.1.5.29.1.2.2 = Counter32: 12", ".1.3.6.1.2.1.5.29.1.4.2 = Counter32: 0",
                     ".1.3.6.1.2.1.5.30.1.4.2.200 = Counter32: 0", ".1.3.6.1.2.1.31.1.5.0 = Timeticks: (0) 0:00:00.00",
                     ".1.3.6.1.2.1.5.29.1.5.2 = Counter32: 0", ".1.3.6.1.2.1.31.1.1.1.1.1 = STRING: \"lo\"",
                     ".1.3.6.1.2.1.31.1.5.0 = " + end}));
    stopAgent();
}

// The machine's own kernel: what it counts changes while it is looked at, so only the identifiers are compared, and not
// those of UDP endpoints: each walk has a socket of its own.
TEST_F(WalkTest, TheLinuxPlatformIsWalkedInEveryWayAlike)
{
    startAgent(everybody, {"--platform", "linux"});
    const auto identifiers = [&](const std::string &program, const Words &options) {
        std::vector<Identifier> ids;
        for (const std::string &row : walk(program, publicV2, options, mib2)) {
            if (!row.starts_with("." + mib2 + ".7.5.") && !row.starts_with("." + mib2 + ".7.7.")) {
                ids.push_back(identifierOf(row));
            }
        }
        return ids;
    };
    const std::vector<Identifier> ids = identifiers("snmpwalk", {});
    EXPECT_GT(ids.size(), 40u);
    EXPECT_EQ(std::ranges::adjacent_find(ids, std::ranges::greater_equal()), ids.end()) << "not increasing";
    EXPECT_EQ(identifiers("snmpbulkwalk", {"-Cr1"}), ids);
    EXPECT_EQ(identifiers("snmpbulkwalk", {"-Cr50"}), ids);
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
