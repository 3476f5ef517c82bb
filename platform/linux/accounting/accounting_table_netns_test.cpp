// SPDX-License-Identifier: BSD-3-Clause
// The life of the accounting table beside other tables: start, stop, crash, flush, a second process, a missing right.
#include "accounting/accounting_table.h"
#include "accounting/accounting_test.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <iterator>

namespace ipmib::platform
{

namespace
{

class AccountingTableTest : public AccountingTest
{
  protected:
    std::string ruleset() const { return bed->routerSpace.run("nft list ruleset"); }
    void makeOtherTables() const;
};

// Some other program's tables, with everything that a listing shows.
void AccountingTableTest::makeOtherTables() const
{
    bed->routerSpace.run(
        "nft 'table ip filter { counter c { packets 3 bytes 4; }; set s { type iface_index; flags dynamic; };"
        " chain input { type filter hook input priority filter; policy accept; tcp dport 9 counter drop; }; }'");
    bed->routerSpace.run("nft 'table inet ipmib { chain c { type filter hook forward priority 5; accept; }; }'");
}

// Starts accounting in a process of its own and returns when it counts.
pid_t startInChild(const Ipv4Accounting::Settings &settings)
{
    int ready[2];
    EXPECT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        Ipv4Accounting accounting(settings);
        prctl(PR_SET_PDEATHSIG, SIGKILL); // also when the test itself is killed
        const char verdict = accounting.start().empty() ? 'y' : 'n';
        if (write(ready[1], &verdict, 1) == 1) {
            pause();
        }
        _exit(1);
    }
    char verdict = 'n';
    EXPECT_EQ(read(ready[0], &verdict, 1), 1);
    EXPECT_EQ(verdict, 'y');
    close(ready[0]);
    close(ready[1]);
    return child;
}

void killAndReap(pid_t child)
{
    kill(child, SIGKILL);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
}

} // namespace

TEST_F(AccountingTableTest, WhatIsAskedAtOnceMayBeOfAnyLength)
{
    constexpr std::size_t many = 200; // beyond 16 KiB
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");
    NetfilterSocket socket;
    ASSERT_EQ(socket.open(), 0);
    NftMessages questions = socket.questions();
    for (std::size_t i = 0; i < many; ++i) {
        askForElement(questions, countedSets[i % std::size(countedSets)], static_cast<std::uint32_t>(4711 + i));
    }
    std::vector<int> errors(many, -1);
    EXPECT_EQ(socket.ask(questions, [&](std::size_t index, int error, const nlmsghdr &) { errors[index] = error; }), 0);
    EXPECT_EQ(errors, std::vector<int>(many, ENOENT));
}

TEST_F(AccountingTableTest, TheRulesetIsTheSameBeforeAndAfter)
{
    for (const bool owned : {true, false}) {
        for (const bool others : {false, true}) {
            if (others) {
                makeOtherTables();
            }
            const std::string before = ruleset();
            Ipv4Accounting accounting({.owned = owned});
            ASSERT_EQ(accounting.start(), "");
            EXPECT_NE(ruleset(), before);
            bed->client.send(RouterBed::serverAddress, bed->server, 20, octets);
            accounting.stop();
            EXPECT_EQ(ruleset(), before);
        }
        bed->routerSpace.run("nft flush ruleset");
    }
}

TEST_F(AccountingTableTest, AKilledProcessLeavesNoTableOfItsOwn)
{
    makeOtherTables();
    const std::string before = ruleset();
    const pid_t child = startInChild({.owned = true});
    EXPECT_NE(ruleset(), before);
    killAndReap(child);
    EXPECT_EQ(ruleset(), before);
}

TEST_F(AccountingTableTest, AStaleTableIsReplacedAndOthersAreNotTouched)
{
    makeOtherTables();
    const std::string before = ruleset();
    const pid_t child = startInChild({.owned = false});
    bed->client.send(RouterBed::serverAddress, bed->server, 20, octets);
    killAndReap(child);
    EXPECT_NE(ruleset(), before);

    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");
    expectCounters(accounting, "lan", {});
    bed->client.send(RouterBed::serverAddress, bed->server, 7, octets);
    expectCounters(accounting, "lan", {.received = 7});
    accounting.stop();
    EXPECT_EQ(ruleset(), before);
}

TEST_F(AccountingTableTest, ATableThatIsNotOurMakeIsReplacedWhole)
{
    bed->routerSpace.run("nft 'table ip ipmib_accounting { set in { type ipv4_addr; }; chain received { drop; }; }'");
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");
    accounting.stop();
    EXPECT_EQ(ruleset(), "");
}

TEST_F(AccountingTableTest, ASecondProcessIsRefusedWhileTheFirstCounts)
{
    const pid_t child = startInChild({.owned = true});
    const std::string during = ruleset();
    Ipv4Accounting second;
    EXPECT_EQ(second.start(), "ipv4 accounting: cannot make the nftables table ip ipmib_accounting: it belongs to "
                              "another process");
    EXPECT_EQ(ruleset(), during);
    expectCounters(second, "lan", {});
    killAndReap(child);
    EXPECT_EQ(second.start(), "");
    bed->client.send(RouterBed::serverAddress, bed->server, 3, octets);
    expectCounters(second, "lan", {.received = 3});
}

TEST_F(AccountingTableTest, FlushingTheRulesetDoesNotReachAnOwnedTable)
{
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");
    bed->client.send(RouterBed::serverAddress, bed->server, 20, octets);
    bed->routerSpace.run("nft flush ruleset");
    bed->client.send(RouterBed::serverAddress, bed->server, 20, octets);
    expectCounters(accounting, "lan", {.received = 40});
    EXPECT_TRUE(logged.empty()) << logged.front();
}

TEST_F(AccountingTableTest, AFlushedTableIsMadeAnewAndTheLogSaysSoOnce)
{
    Ipv4Accounting accounting({.owned = false});
    ASSERT_EQ(accounting.start(), "");
    bed->client.send(RouterBed::serverAddress, bed->server, 20, octets);
    bed->routerSpace.run("nft flush ruleset");
    expectCounters(accounting, "lan", {});
    bed->client.send(RouterBed::serverAddress, bed->server, 30, octets);
    expectCounters(accounting, "lan", {.received = 30});
    expectCounters(accounting, "wan", {.forwarded = 30, .sent = 30});
    ASSERT_EQ(logged.size(), 1U);
    EXPECT_NE(logged.front().find("made anew"), std::string::npos) << logged.front();
}

TEST_F(AccountingTableTest, WithoutTheRightToChangeTablesTheStartFailsInOneLine)
{
    const std::string before = ruleset();
    int line[2];
    ASSERT_EQ(pipe(line), 0);
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        Ipv4Accounting accounting;
        const std::string verdict = setresuid(nobody, nobody, nobody) == 0 ? accounting.start() : "still root";
        _exit(write(line[1], verdict.data(), verdict.size()) > 0 ? 0 : 1);
    }
    close(line[1]);
    char verdict[256] = "";
    EXPECT_GT(read(line[0], verdict, sizeof verdict - 1), 0);
    close(line[0]);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_STREQ(verdict, "ipv4 accounting: cannot make the nftables table ip ipmib_accounting: CAP_NET_ADMIN is "
                          "missing");
    EXPECT_EQ(ruleset(), before);
}

} // namespace ipmib::platform
