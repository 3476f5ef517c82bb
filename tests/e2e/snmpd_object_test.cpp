// SPDX-License-Identifier: BSD-3-Clause
// The object inside snmpd itself: loaded, served from, unloaded.

#include "e2e/master_under_test.h"

#include <algorithm>
#include <fstream>

namespace ipmib::e2e
{

namespace
{

const std::string load = std::string("dlmod ipmib ") + IPMIB_SNMPD_OBJECT + "\n";
const std::string loadScripted = load + "ipmibPlatform " + scriptedPlatform + " \n";

class SnmpdObjectTest : public MasterTest
{
  protected:
    void SetUp() override
    {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "snmpd has no sanitizer, and so cannot load what has one";
#endif
        MasterTest::SetUp();
    }

    bool isMapped() const
    {
        std::ifstream maps("/proc/" + std::to_string(master_pid()) + "/maps");
        const std::string all{std::istreambuf_iterator<char>(maps), {}};
        return all.find("ipmib") != std::string::npos;
    }

    std::size_t descriptors() const
    {
        const std::filesystem::directory_iterator all("/proc/" + std::to_string(master_pid()) + "/fd");
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    pid_t master_pid() const
    {
        return const_cast<SnmpdObjectTest *>(this)->master().pid();
    }
};

TEST_F(SnmpdObjectTest, ByDefaultNothingOfTheMastersDisappears)
{
    startMaster();
    const Words before = steady(rows());
    killMaster();
    startMaster(load);
    const Words after = rows();
    expectAdditionsAlone(before, after);
    EXPECT_EQ(steady(walk("snmpwalk", publicV2, {}, "1.3.6.1.2.1.4.30")), rowsBelow(after, ".1.3.6.1.2.1.4.30"));
}

TEST_F(SnmpdObjectTest, TakenTablesAreExactlyOurs)
{
    startAgent();
    const Words own = walk("snmpbulkwalk", publicV2, {}, "1.3.6.1.2.1");
    stopAgent();
    startMaster(loadScripted + "ipmibServe all take\n");
    const Words all = rows();
    for (const char *table : {"2.1", "2.2", "4.20", "4.22", "4.25", "4.26", "4.30", "4.31.1", "4.31.3", "4.32", "4.34",
                              "4.35", "4.37", "4.39", "5.29", "5.30", "31.1.1", "31.1.5"}) {
        const std::string root = std::string(".1.3.6.1.2.1.") + table;
        EXPECT_FALSE(rowsBelow(own, root).empty()) << table;
        EXPECT_EQ(rowsBelow(all, root), rowsBelow(own, root)) << table;
    }
}

TEST_F(SnmpdObjectTest, UnloadingLeavesTheAgentAsItWas)
{
    startMaster();
    reconfigureMaster(""); // which changes what snmpd serves by itself
    const Words before = steady(rows());
    const std::size_t opened = descriptors();
    for (int time = 0; time < 3; ++time) {
        reconfigureMaster(load + "ipmibServe all take\n");
        EXPECT_TRUE(isThere(interfaceRow));
        EXPECT_TRUE(isMapped());
        reconfigureMaster("");
        EXPECT_FALSE(isThere(interfaceRow));
        EXPECT_FALSE(isMapped());
        EXPECT_TRUE(eventually([&] { return descriptors() == opened; })); // snmpd opens files now and then
    }
    EXPECT_EQ(identifiersOf(steady(rows())), identifiersOf(before));
}

TEST_F(SnmpdObjectTest, ItFollowsTheKernelInTheAgentsLoop)
{
    startMaster(load + "ipmibServe ipAddressTable take\n");
    const std::string added = "1.3.6.1.2.1.4.34.1.3.2.16.32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.9";
    EXPECT_FALSE(isThere(added));
    network()->run("ip -6 addr add 2001:db8::9/64 dev left");
    EXPECT_TRUE(isThere(added));
}

TEST_F(SnmpdObjectTest, MistakesAreLoggedAndTheAgentGoesOn)
{
    startMaster(load + "ipmibServe ipAdressTable take\nipmibServe ipAddressTable maybe\n");
    EXPECT_NE(masterLog().find("line 6: Error: ipmibServe: \"maybe\" is none of auto, take, off"), std::string::npos)
        << masterLog();
    EXPECT_NE(masterLog().find("ipmibServe: there is no table \"ipAdressTable\""), std::string::npos) << masterLog();
    EXPECT_TRUE(isThere(interfaceRow));
    reconfigureMaster(load + "ipmibPlatformOption colour=red\nipmibPlatformOption radvd-conf=/dev/null\n"
                             "ipmibPlatformOption ipv4-accounting=yes\n");
    for (const std::string line :
         {"ipmibPlatformOption: there is no option --colour; those of platform linux are "
          "--ipv4-accounting, --radvd-conf=FILE, --route-tables=LIST and --router-anycast; the line is left aside",
          "ipmibPlatformOption: --ipv4-accounting takes no value, not \"yes\"; the line is left aside"}) {
        EXPECT_NE(masterLog().find(line), std::string::npos) << masterLog();
    }
    EXPECT_TRUE(isThere(interfaceRow));
    reconfigureMaster(load + "ipmibPlatform simulate:x\n");
    EXPECT_NE(
        masterLog().find("ipmib: nothing is served: there is no platform \"simulate\"; there are: linux, simulated"),
        std::string::npos)
        << masterLog();
    EXPECT_FALSE(isThere(interfaceRow));
    reconfigureMaster(load);
    EXPECT_TRUE(isThere(interfaceRow));
}

} // namespace

} // namespace ipmib::e2e
