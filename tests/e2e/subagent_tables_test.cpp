// SPDX-License-Identifier: BSD-3-Clause
// Who serves which table beside a running snmpd, and what a walk through it shows then.

#include "e2e/master_under_test.h"
#include "e2e/objects.h"

#include <algorithm>
#include <sstream>

namespace ipmib::e2e
{

namespace
{

struct Table {
    const char *name;
    std::string identifier;
};

const std::vector<Table> tables = {
    {"ipv6IpForwarding", ".1.3.6.1.2.1.4.25"},
    {"ipv6IpDefaultHopLimit", ".1.3.6.1.2.1.4.26"},
    {"ipv6InterfaceTable", ".1.3.6.1.2.1.4.30"},
    {"ipSystemStatsTable", ".1.3.6.1.2.1.4.31.1"},
    {"ipIfStatsTable", ".1.3.6.1.2.1.4.31.3"},
    {"ipAddressPrefixTable", ".1.3.6.1.2.1.4.32"},
    {"ipAddressTable", ".1.3.6.1.2.1.4.34"},
    {"ipNetToPhysicalTable", ".1.3.6.1.2.1.4.35"},
    {"ipDefaultRouterTable", ".1.3.6.1.2.1.4.37"},
    {"ipv6RouterAdvertTable", ".1.3.6.1.2.1.4.39"},
    {"icmpStatsTable", ".1.3.6.1.2.1.5.29"},
    {"icmpMsgStatsTable", ".1.3.6.1.2.1.5.30"},
    {"ifNumber", ".1.3.6.1.2.1.2.1"},
    {"ifTable", ".1.3.6.1.2.1.2.2"},
    {"ifXTable", ".1.3.6.1.2.1.31.1.1"},
    {"ifTableLastChange", ".1.3.6.1.2.1.31.1.5"},
    {"ipAddrTable", ".1.3.6.1.2.1.4.20"},
    {"ipNetToMediaTable", ".1.3.6.1.2.1.4.22"},
};

// The modules of snmpd that serve some of them; the others are part of what cannot be left out.
constexpr const char *without = ",ipAddressTable,ipAddressPrefixTable,inetNetToMediaTable,ipSystemStatsTable,"
                                "ipIfStatsTable,ipDefaultRouterTable,icmp,ifXTable";
constexpr const char *staying[] = {"ipv6IpForwarding", "ipv6IpDefaultHopLimit", "ifNumber", "ifTable",
                                   "ifTableLastChange"};

const Words scripted = {"--platform", scriptedPlatform};

class SubagentTablesTest : public MasterTest
{
  protected:
    // The rows of the scripted device as ipmibd serves them alone.
    Words rowsOfOurOwn()
    {
        startAgent();
        Words own = walk("snmpbulkwalk", publicV2, {}, mib2);
        stopAgent();
        return own;
    }

    // Of the groups that our tables are in.
    Words rowsThroughMaster() const
    {
        Words all;
        for (const char *group : {"1.3.6.1.2.1.2", "1.3.6.1.2.1.4", "1.3.6.1.2.1.5", "1.3.6.1.2.1.31.1"}) {
            const Words below = rows(group);
            all.insert(all.end(), below.begin(), below.end());
        }
        return all;
    }

    // Of `ipmibd --check`: what stands behind a table's name and identifier.
    static std::string ownerOf(const std::string &table, const Result &check)
    {
        for (const std::string &line : linesOf(check.output)) {
            if (line.starts_with(table + " ")) {
                const std::size_t identifier = line.find_first_not_of(' ', table.size());
                return line.substr(line.find_first_not_of(' ', line.find(' ', identifier)));
            }
        }
        return "none:\n" + check.output + check.errors;
    }

    Result check(const std::string &configuration, const Words &options = {})
    {
        writeFile("check.conf", configuration);
        Words words = {agentProgram, "--check", "-C", "-c", path("check.conf"), "--platform", scriptedPlatform};
        words.insert(words.end(), options.begin(), options.end());
        return runAgent(words);
    }
};

TEST_F(SubagentTablesTest, ByDefaultNothingOfTheMastersDisappears)
{
    startMaster();
    const Words before = steady(rows());
    startSubagent();
    const Words after = rows();
    expectAdditionsAlone(before, after);
    EXPECT_EQ(walk("snmpwalk", publicV2, {}, "1.3.6.1.2.1.4.30"), rowsBelow(after, ".1.3.6.1.2.1.4.30"));
    stopSubagent();
    EXPECT_TRUE(eventually([this] { return !isThere(interfaceRow); }));
    EXPECT_EQ(identifiersOf(steady(rows())), identifiersOf(before));
}

TEST_F(SubagentTablesTest, TakenTablesAreExactlyOurs)
{
    const Words own = rowsOfOurOwn();
    startMaster();
    startSubagent("serve all take\n", scripted);
    const Words all = rowsThroughMaster();
    for (const Table &table : tables) {
        EXPECT_FALSE(rowsBelow(own, table.identifier).empty()) << table.name;
        EXPECT_EQ(rowsBelow(all, table.identifier), rowsBelow(own, table.identifier)) << table.name;
    }
    stopSubagent();
}

TEST_F(SubagentTablesTest, EachTableIsTakenForItself)
{
    const Words own = rowsOfOurOwn();
    startMaster();
    startSubagent("serve all off\n", scripted);
    const Words masters = rowsThroughMaster();
    for (const Table &table : tables) {
        reconfigureSubagent(std::string("serve all off\nserve ") + table.name + " take\n");
        const Words now = rowsThroughMaster();
        for (const Table &other : tables) {
            const bool isTaken = &other == &table;
            EXPECT_EQ(identifiersOf(rowsBelow(now, other.identifier)),
                      identifiersOf(rowsBelow(isTaken ? own : masters, other.identifier)))
                << other.name << " when " << table.name << " is taken";
        }
    }
    stopSubagent();
}

TEST_F(SubagentTablesTest, AMasterWithoutTablesOfItsOwnGetsThemAll)
{
    const Words own = rowsOfOurOwn();
    startMaster("", without);
    startSubagent("", scripted);
    const Words all = rowsThroughMaster();
    for (const Table &table : tables) {
        if (std::ranges::find(staying, std::string(table.name)) == std::end(staying)) {
            EXPECT_EQ(rowsBelow(all, table.identifier), rowsBelow(own, table.identifier)) << table.name;
        }
    }
    stopSubagent();
}

TEST_F(SubagentTablesTest, ARefusedTableIsAnErrorThatNamesIt)
{
    startMaster();
    startSubagent("serve ipAddressTable take\n");
    Command second(subagentWords({"--platform", scriptedPlatform}), environment());
    const std::string refusal = "agentx: ipAddressTable is refused, another sub-agent has it: duplicateRegistration "
                                "(263); end the other, or say \"serve ipAddressTable off\"";
    EXPECT_TRUE(eventually([&] { return holds(linesOf(second.output()), refusal); })) << second.output();
    EXPECT_TRUE(holds(linesOf(second.output()),
                      "agentx: ipv6InterfaceTable is left to another sub-agent, which registered it before"));
    stopSubagent();
    // As soon as it is asked again it has them.
    second.signal(SIGHUP);
    EXPECT_TRUE(eventually([&] { return isThere(interfaceRow); }));
    second.signal(SIGTERM);
    EXPECT_EQ(second.wait(), 0);
}

TEST_F(SubagentTablesTest, TheLogSaysWhatBecomesOfTheMastersRows)
{
    startMaster();
    startSubagent("serve ifTable take\nserve ipNetToPhysicalTable off\n");
    EXPECT_EQ(timesLogged("agentx: connected to the master at " + socketPath() + ", serving 18 of 37 tables"), 1u);
    EXPECT_EQ(timesLogged("agentx: our rows replace the master's (\"serve TABLE off\" leaves it its own): ifTable, "
                          "ipAddrTable, ipNetToMediaTable, ipSystemStatsTable, ipIfStatsTable, ipAddressPrefixTable, "
                          "ipAddressTable, ipv6ScopeZoneIndexTable, ipDefaultRouterTable, icmpStatsTable, "
                          "icmpMsgStatsTable"),
              1u);
    EXPECT_EQ(timesLogged("agentx: left to the master, which has its own (\"serve TABLE take\" replaces it): "
                          "ifNumber, ip, ipRouteTable, ipCidrRouteTable, ipForward, inetCidrRouteTable, "
                          "ipv6IpForwarding, ipv6IpDefaultHopLimit, ipIfStatsTableLastChange, icmp, "
                          "tcp, tcpConnTable, tcpConnectionTable, tcpListenerTable, udp, udpTable, udpEndpointTable, "
                          "ifXTable, ifTableLastChange"),
              1u);
    stopSubagent();
}

TEST_F(SubagentTablesTest, CheckPrintsTheOwnersAndLeavesTheMasterAlone)
{
    startMaster();
    const Words before = steady(rows());
    const Result result = check("sysname gate\nserve ipAddressTable take\nserve ipv6RouterAdvertTable off\n"
                                "serve ipNetToPhysicalTable off\n",
                                {"-x", socketPath()});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(ownerOf("ipv6InterfaceTable", result), "ours");
    EXPECT_EQ(ownerOf("ipIfStatsTable", result), "the master's") << "this platform has no rows of IPv4";
    EXPECT_EQ(ownerOf("ipAddressTable", result), "ours, in place of the master's");
    EXPECT_EQ(ownerOf("ipSystemStatsTable", result), "the master's");
    EXPECT_EQ(ownerOf("ifTable", result), "the master's");
    EXPECT_EQ(ownerOf("ipAddrTable", result), "ours, in place of the master's");
    EXPECT_EQ(ownerOf("ipv6RouterAdvertTable", result), "off");
    EXPECT_EQ(ownerOf("ipNetToPhysicalTable", result), "the master's");
    EXPECT_EQ(identifiersOf(steady(rows())), identifiersOf(before));
    startSubagent("serve ipAddressTable take\n");
    const Result beside = check("serve ipAddressTable take\n", {"-x", socketPath()});
    EXPECT_EQ(beside.status, 0) << beside.errors;
    EXPECT_EQ(beside.errors, "") << "the ipmibd that runs is no fault";
    EXPECT_EQ(ownerOf("ipAddressTable", beside), "ours, of the ipmibd that runs");
    EXPECT_TRUE(isThere(interfaceRow));
    stopSubagent();
}

TEST_F(SubagentTablesTest, CheckCountsWhatWouldBeGainedAndLost)
{
    const std::vector<Table> some = {{"ifTable", ".1.3.6.1.2.1.2.2"},
                                     {"ipAddressTable", ".1.3.6.1.2.1.4.34"},
                                     {"ipv6InterfaceTable", ".1.3.6.1.2.1.4.30"},
                                     {"tcp", ".1.3.6.1.2.1.6"}};
    const auto instancesOf = [](const Words &rows, const Table &table) {
        std::set<Identifier> found = identifiersOf(rowsBelow(rows, table.identifier));
        constexpr std::size_t scalar = 9;
        std::erase_if(found, [&](const Identifier &row) { return table.name[0] == 't' && row.size() != scalar; });
        return found;
    };
    startMaster();
    const Words before = rows();
    writeFile("check.conf", "");
    const Result result = runAgent({agentProgram, "--check", "-C", "-c", path("check.conf"), "-x", socketPath(),
                                    "--ask", "-v2c -c public " + address()});
    EXPECT_EQ(result.status, 0) << result.errors;
    startSubagent("serve all take\n");
    const Words after = rows();
    for (const Table &table : some) {
        const std::set<Identifier> theirs = instancesOf(before, table);
        const std::set<Identifier> ours = instancesOf(after, table);
        const auto missing = [](const std::set<Identifier> &from, const std::set<Identifier> &in) {
            return std::to_string(std::ranges::count_if(from, [&](const auto &row) { return !in.contains(row); }));
        };
        std::istringstream told(ownerOf(table.name, result));
        std::string gained;
        std::string lost;
        told >> gained >> lost;
        EXPECT_EQ(gained, missing(ours, theirs)) << table.name;
        EXPECT_EQ(lost, missing(theirs, ours)) << table.name;
    }
    stopSubagent();
    const Result silent = runAgent({agentProgram, "--check", "-C", "-c", path("check.conf"), "-x", socketPath(),
                                    "--ask", "-v2c -c nobody -t0.1 -r0 " + address()});
    EXPECT_EQ(silent.status, 1);
    EXPECT_NE(silent.errors.find("the agent does not answer what is below 1.3.6.1.2.1.2.1"), std::string::npos)
        << silent.errors;
}

TEST_F(SubagentTablesTest, CheckFailsWithAReason)
{
    const Result absent = check("", {"-x", socketPath()});
    EXPECT_EQ(absent.status, 1);
    EXPECT_EQ(absent.errors, "agentx: no master at " + socketPath() + ": No such file or directory\n");
    const Result wrong = check("serve ipAdressTable take\n");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_TRUE(wrong.errors.starts_with(
        path("check.conf") + ": line 1: Error: serve: there is no table \"ipAdressTable\"; there are all, "))
        << wrong.errors;
    const Result alone =
        check("rocommunity public\nsyscontact me\nsysservices 76\nserve ipAddressTable off\nserve ipAddrTable off\n");
    EXPECT_EQ(alone.status, 0) << alone.errors;
    EXPECT_EQ(ownerOf("ipAddressTable", alone), "off");
    EXPECT_EQ(ownerOf("ipAddrTable", alone), "off");
    EXPECT_EQ(ownerOf("ifXTable", alone), "ours");
    EXPECT_EQ(ownerOf("ipSystemStatsTable", alone), "ours");
}

TEST_F(SubagentTablesTest, AloneATableCanBeOffAndComeBack)
{
    startAgent(everybody + "serve ipNetToPhysicalTable off\nserve ifTable off\n");
    const std::string neighbours = "1.3.6.1.2.1.4.35";
    const std::string interfaces = "1.3.6.1.2.1.2.2";
    const Words alone = walk("snmpbulkwalk", publicV2, {}, mib2);
    EXPECT_TRUE(rowsBelow(alone, "." + neighbours).empty());
    EXPECT_TRUE(rowsBelow(alone, "." + interfaces).empty());
    writeFile("test.conf", everybody);
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    const Words with = walk("snmpbulkwalk", publicV2, {}, mib2);
    EXPECT_FALSE(rowsBelow(with, "." + neighbours).empty());
    EXPECT_FALSE(rowsBelow(with, "." + interfaces).empty());
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
