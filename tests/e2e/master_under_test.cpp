// SPDX-License-Identifier: BSD-3-Clause
// The master lives in the test's own network, with its files in the test's own folder.

#include "e2e/master_under_test.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

namespace ipmib::e2e
{

namespace
{

constexpr const char *masterProgram = "/usr/sbin/snmpd";
constexpr const char *masterUpTime = "1.3.6.1.2.1.1.3.0";

} // namespace

bool eventually(const std::function<bool()> &condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < end) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return condition();
}

void MasterTest::SetUp()
{
    if (access(masterProgram, X_OK) != 0) {
        GTEST_SKIP() << masterProgram << " is not installed";
    }
    IPMIB_NEEDS_NAMESPACES();
    AgentTest::SetUp();
    network()->run("ip link add left type veth peer name right; ip link set left up; ip link set right up;"
                   "ip addr add 192.0.2.1/24 dev left; ip -6 addr add 2001:db8::1/64 dev left;"
                   "ip -6 neigh add 2001:db8::2 lladdr 02:00:00:00:00:02 nud permanent dev left");
    network()->waitForLinkLocals({"left", "right"});
}

void MasterTest::TearDown()
{
    master_.reset();
    if (network() != nullptr) {
        AgentTest::TearDown();
    }
}

std::string MasterTest::masterConfiguration(const std::string &more) const
{
    return "rocommunity public 127.0.0.1\nmaster agentx\nagentXSocket " + socketPath() + "\n" + more;
}

void MasterTest::startMaster(const std::string &configuration, const std::string &withoutModules)
{
    Environment own = environment();
    own["SNMP_PERSISTENT_DIR"] = path("master-persistent");
    const std::string without = "-smux,mteTrigger,mteTriggerConf" + withoutModules; // as Debian's unit has it
    master_ = std::make_unique<Command>(Words{masterProgram, "-f", "-Lf", path("master.log"), "-C", "-c",
                                              writeFile("master.conf", masterConfiguration(configuration)), "-I",
                                              without, address()},
                                        own);
    ASSERT_TRUE(eventually([this] { return isThere(masterUpTime); })) << masterLog();
}

void MasterTest::killMaster()
{
    master_->signal(SIGKILL);
    EXPECT_EQ(master_->wait(), -SIGKILL);
}

void MasterTest::reconfigureMaster(const std::string &configuration)
{
    const auto timesRead = [this] {
        const Words lines = linesOf(masterLog());
        return std::ranges::count_if(lines, [](const std::string &line) { return line.ends_with("restarted"); });
    };
    const auto before = timesRead();
    writeFile("master.conf", masterConfiguration(configuration));
    master_->signal(SIGHUP);
    ASSERT_TRUE(eventually([&] { return timesRead() > before; })) << masterLog();
    ASSERT_TRUE(eventually([this] { return isThere(masterUpTime); })) << masterLog();
}

std::string MasterTest::masterLog() const
{
    std::ostringstream content;
    content << std::ifstream(path("master.log")).rdbuf();
    return content.str();
}

Words MasterTest::subagentWords(const Words &options) const
{
    Words words = {agentProgram, "-f", "-Lo", "-C", "-c", path("test.conf"), "-x", socketPath()};
    words.insert(words.end(), options.begin(), options.end());
    return words;
}

void MasterTest::startSubagent(const std::string &configuration, const Words &options)
{
    writeFile("test.conf", configuration);
    startProgram(subagentWords(options));
}

void MasterTest::reconfigureSubagent(const std::string &configuration)
{
    const auto timesConnected = [this] {
        const Words lines = log();
        return std::ranges::count_if(
            lines, [](const std::string &line) { return line.starts_with("agentx: connected to the master"); });
    };
    const auto before = timesConnected();
    writeFile("test.conf", configuration);
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    ASSERT_TRUE(eventually([&] { return timesConnected() > before; })) << agent().output();
}

void MasterTest::stopSubagent()
{
    agent().signal(SIGTERM);
    EXPECT_EQ(agent().wait(), 0);
    EXPECT_EQ(agent().errors(), "");
}

Words MasterTest::rows(const std::string &root) const
{
    Words all = walk("snmpbulkwalk", publicV2, {}, root);
    std::erase_if(all, [](const std::string &line) { return !line.starts_with('.'); }); // further lines of a string
    expectIncreasing(all);
    return all;
}

bool MasterTest::isThere(const std::string &instance) const
{
    const Result result =
        run({"snmpget", "-v2c", "-c", "public", "-On", "-t", "0.5", "-r", "20", address(), instance}, environment());
    return result.status == 0 && result.output.find("No Such") == std::string::npos;
}

Words MasterTest::steady(Words rows)
{
    for (const char *root : {".1.3.6.1.2.1.6.", ".1.3.6.1.2.1.7.", ".1.3.6.1.2.1.25.", ".1.3.6.1.2.1.1.9."}) {
        std::erase_if(rows, [root](const std::string &row) { return row.starts_with(root); });
    }
    return rows;
}

void expectAdditionsAlone(const Words &before, const Words &after)
{
    const std::set<Identifier> identifiers = identifiersOf(after);
    for (const std::string &row : before) {
        if (row.find(".2.16.254.128.") != std::string::npos) {
            continue; // link-local addresses, which ours has with their zone: see lossless_test.cpp
        }
        EXPECT_TRUE(identifiers.contains(identifierOf(row))) << row;
    }
    for (const char *table : {".1.3.6.1.2.1.4.28", ".1.3.6.1.2.1.4.30", ".1.3.6.1.2.1.31.1.2"}) {
        EXPECT_TRUE(rowsBelow(before, table).empty()) << table;
        EXPECT_FALSE(rowsBelow(after, table).empty()) << table;
    }
}

} // namespace ipmib::e2e
