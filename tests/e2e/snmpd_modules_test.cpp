// SPDX-License-Identifier: BSD-3-Clause
// snmpd without the modules that the packaged setting leaves out: what they served is ours, and nothing reads the
// interfaces again and again.

#include "e2e/master_under_test.h"

#include <chrono>
#include <fstream>
#include <regex>
#include <thread>

namespace ipmib::e2e
{

namespace
{

// Twice what snmpd lets pass between two readings of the interfaces, and more than it does between two of the
// processor.
constexpr std::chrono::seconds silence{6};
constexpr std::uint64_t interfaceCount = 61;

std::string modulesOfTheSetting()
{
    const std::string setting = contentOf(IPMIB_SNMPD_SETTING);
    std::smatch found;
    const std::regex modules("\nExecStart=/.* -I -smux,mteTrigger,mteTriggerConf(,\\S+)");
    return std::regex_search(setting, found, modules) ? found[1].str() : "";
}

// How often the process has read from a file.
std::uint64_t readsOf(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/io");
    std::uint64_t reads = 0;
    for (std::string word; file >> word;) {
        if (word == "syscr:") {
            file >> reads;
        }
    }
    return reads;
}

bool isScalar(const Identifier &instance)
{
    constexpr std::size_t length = 9; // mib-2, group, object, 0
    return instance.size() == length && instance.back() == 0;
}

class SnmpdModulesTest : public MasterTest
{
  protected:
    void SetUp() override
    {
        MasterTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        ASSERT_NE(modules_, "");
        std::string commands; // a pair is there already, and the loopback
        for (std::uint64_t pair = 0; pair < (interfaceCount - 3) / 2; ++pair) {
            const std::string left = "l" + std::to_string(pair);
            const std::string right = "r" + std::to_string(pair);
            commands += "link add " + left + " type veth peer name " + right + "\n";
            commands += "link set " + left + " up\nlink set " + right + " up\n";
        }
        network()->run("ip -batch " + writeFile("interfaces", commands));
    }

    // Whether it reads something of each interface while nobody asks.
    bool readsTheInterfaces()
    {
        const std::uint64_t before = readsOf(master().pid());
        EXPECT_NE(before, 0U);
        std::this_thread::sleep_for(silence);
        return readsOf(master().pid()) - before >= interfaceCount;
    }

    // Of the groups whose tables are ours, all but sockets.
    static std::set<Identifier> oursOf(const Words &rows)
    {
        const std::set<std::uint64_t> groups = {2, 4, 5, 6, 7, 31};
        const std::set<std::pair<std::uint64_t, std::uint64_t>> others = {{6, 13}, {6, 19}, {6, 20}, {7, 5}, {7, 7}};
        std::set<Identifier> ours = identifiersOf(rows);
        constexpr std::size_t group = 6; // behind mib-2
        std::erase_if(ours, [&](const Identifier &row) {
            return !groups.contains(row[group]) || others.contains({row[group], row[group + 1]});
        });
        return ours;
    }

    const std::string modules_ = modulesOfTheSetting();
};

TEST_F(SnmpdModulesTest, WithThemItReadsTheInterfacesAgainAndAgain)
{
    startMaster();
    EXPECT_FALSE(rows().empty()); // asked once
    EXPECT_TRUE(eventually([this] { return readsTheInterfaces(); }));
}

TEST_F(SnmpdModulesTest, WithoutThemASubAgentServesTheTablesAndBothAreSilent)
{
    const Words simulated = {"--platform", std::string("simulated:") + IPMIB_SCENARIO};
    startAgent(everybody, simulated);
    const std::set<Identifier> own = oursOf(walk("snmpbulkwalk", publicV2, {}, "1.3.6.1.2.1"));
    EXPECT_GT(own.size(), 500U);
    stopAgent();
    startMaster("", modules_);
    startSubagent("serve all take\n", simulated);
    EXPECT_TRUE(eventually([this] { return isThere("1.3.6.1.2.1.4.30.1.5.2"); })) << agent().output();
    const std::set<Identifier> through = oursOf(rows());
    for (const Identifier &row : through) { // of scalars that the scenario leaves out snmpd has its own
        EXPECT_TRUE(own.contains(row) || isScalar(row)) << "added: " << testing::PrintToString(row);
    }
    for (const Identifier &row : own) {
        EXPECT_TRUE(through.contains(row)) << "lost: " << testing::PrintToString(row);
    }
    stopSubagent();
    startSubagent("serve all take\n");
    EXPECT_TRUE(eventually([this] { return isThere(interfaceRow); })) << agent().output();
    EXPECT_FALSE(rows().empty());
    EXPECT_FALSE(readsTheInterfaces());
    EXPECT_TRUE(sleepsThrough(agent().pid()));
    stopSubagent();
}

TEST_F(SnmpdModulesTest, WithoutThemTheObjectServesTheTablesAndIsSilent)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "snmpd has no sanitizer, and so cannot load what has one";
#endif
    startMaster(std::string("dlmod ipmib ") + IPMIB_SNMPD_OBJECT + "\nipmibServe all take\n", modules_);
    const Words with = rows();
    for (const char *table : {"2.1", "2.2", "4.1", "4.20", "4.30", "4.31.1", "4.31.3", "4.32", "4.34", "4.35", "4.36",
                              "5.1", "5.29", "6.1", "7.1", "31.1.1", "31.1.5"}) {
        EXPECT_FALSE(rowsBelow(with, std::string(".1.3.6.1.2.1.") + table).empty()) << table;
    }
    EXPECT_FALSE(readsTheInterfaces());
}

} // namespace

} // namespace ipmib::e2e
