// SPDX-License-Identifier: BSD-3-Clause
// What the service knows outlives what its operator does to it: SNMPv3 users, and the count of starts.

#include "e2e/service_under_test.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace ipmib::e2e
{

namespace
{

class StateTest : public ServiceTest
{
};

TEST_F(StateTest, ARunWithoutDefaultConfigurationNeitherReadsNorWritesIt)
{
    startService(createsAlice);
    expectAlice();
    endService();
    const std::string kept = contentOf(stateFile());
    EXPECT_EQ(boots(), "engineBoots 1");

    startAgent(letsAliceIn);
    EXPECT_NE(snmp("snmpget", aliceV3, {hopLimit}).status, 0) << "a user of the service";
    stopAgent();
    EXPECT_EQ(contentOf(stateFile()), kept);

    startService();
    expectAlice();
    endService();
    EXPECT_EQ(boots(), "engineBoots 2");
}

TEST_F(StateTest, FoldersForTheConfigurationAloneDoNotHideIt)
{
    startService(createsAlice);
    endService();
    setEnvironment("SNMPCONFPATH", path(""));
    startService();
    expectAlice();
    endService();
    EXPECT_EQ(boots(), "engineBoots 2");
}

// Else a user would be read in one place, and lost in another.
TEST_F(StateTest, TheConfigurationDoesNotMoveIt)
{
    writeFile("snmp.conf", "persistentDir " + path("elsewhere") + "\n");
    startService(createsAlice);
    endService();
    startService();
    expectAlice();
    endService();
    EXPECT_EQ(boots(), "engineBoots 2");
    EXPECT_FALSE(std::filesystem::exists(path("elsewhere/ipmibd.conf")));
}

TEST_F(StateTest, AUserOfAReloadOutlivesACrash)
{
    startService();
    writeFile("ipmibd.conf", letsAliceIn + createsAlice);
    reload();
    expectAlice();
    agent().signal(SIGKILL);
    agent().wait();
    startService();
    expectAlice();
    endService();
}

TEST_F(StateTest, AStartThatFailsBeforeItIsReadLeavesItAlone)
{
    startService(createsAlice);
    endService();
    writeFile("ipmibd.conf", letsAliceIn);
    EXPECT_EQ(runAgent(agentWords({"-f", "-Lo", "--refuse"})).status, 1);
    startService();
    expectAlice();
    endService();
}

TEST_F(StateTest, ARunByRootLeavesItToTheOwnerOfItsFolder)
{
    std::filesystem::create_directory(path("persistent"));
    constexpr uid_t another = 65534;
    if (chown(path("persistent").c_str(), another, another) != 0) {
        GTEST_SKIP() << "needs the right to give files away";
    }
    startService(createsAlice);
    endService();
    struct stat status {
    };
    ASSERT_EQ(stat(stateFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, another);
    EXPECT_EQ(status.st_gid, another);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST_F(StateTest, WhatCannotBeReadIsToldAndLeftAlone)
{
    std::filesystem::create_directories(stateFile());
    startService();
    EXPECT_EQ(timesLogged("cannot read " + stateFile() +
                          ": Is a directory; no state is kept, and SNMPv3 users of earlier runs are not known"),
              1u);
    endService();
    EXPECT_TRUE(std::filesystem::is_directory(stateFile()));
}

TEST_F(StateTest, WhatIsNotWhatWasWrittenIsTold)
{
    startService(createsAlice);
    endService();
    const std::string whole = contentOf(stateFile());
    const std::pair<std::string, std::string> cases[] = {
        {"", "is empty"},
        {whole.substr(0, whole.size() / 2), "is not whole"},
        {whole.substr(0, whole.size() / 2) + std::string(100, '\0'), "is damaged"},
    };
    for (const auto &[content, complaint] : cases) {
        writeFile("persistent/ipmibd.conf", content);
        startService();
        EXPECT_EQ(timesLogged(stateFile() + " " + complaint + "; SNMPv3 users of earlier runs may be missing"), 1u)
            << agent().output();
        endService();
    }
    writeFile("persistent/ipmibd.conf", whole + createsAlice); // as an administrator may
    startService();
    EXPECT_EQ(agent().output().find("may be missing"), std::string::npos);
    expectAlice();
    endService();
}

// Left by the library's own way to write when it was interrupted.
TEST_F(StateTest, AnInterruptedWriteOfAnEarlierVersionIsReadToo)
{
    startService(createsAlice);
    endService();
    std::filesystem::rename(stateFile(), path("persistent/ipmibd.0.conf"));
    writeFile("persistent/ipmibd.conf", "# net-snmp (or ucd-snmp) persistent data file.\n");
    startService();
    expectAlice();
    EXPECT_FALSE(std::filesystem::exists(path("persistent/ipmibd.0.conf")));
    endService();
}

class FullDiskTest : public StateTest
{
  protected:
    void SetUp() override
    {
        StateTest::SetUp();
        if (unshare(CLONE_NEWNS) != 0 || mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
            GTEST_SKIP() << "needs the right to mount a small file system";
        }
        std::filesystem::create_directory(path("persistent"));
        ASSERT_EQ(mount("none", path("persistent").c_str(), "tmpfs", 0, "size=64k"), 0);
    }
    void TearDown() override
    {
        umount2(path("persistent").c_str(), MNT_DETACH);
        StateTest::TearDown();
    }
    void fill()
    {
        std::ofstream file(path("persistent/filler"));
        while (file << 'x' << std::flush) {
        }
    }
    void makeRoom() { std::filesystem::remove(path("persistent/filler")); }
    std::string complaint() const
    {
        return "cannot write " + stateFile() + ": No space left on device; it stays as it was";
    }
};

TEST_F(FullDiskTest, AtTheEnd)
{
    startService();
    writeFile("ipmibd.conf", letsAliceIn + createsAlice);
    reload();
    writeFile("ipmibd.conf", letsAliceIn + "createUser bob\n");
    fill();
    reload();
    endService();
    EXPECT_EQ(timesLogged(complaint()), 2u) << "once at the reload, once at the end";
    makeRoom();
    startService();
    expectAlice();
    endService();
}

TEST_F(FullDiskTest, AtTheStart)
{
    startService(createsAlice);
    endService();
    fill();
    startService();
    EXPECT_EQ(timesLogged(complaint()), 1u);
    expectAlice();
    makeRoom();
    endService(); // there is room now
    EXPECT_EQ(boots(), "engineBoots 2");
    startService();
    expectAlice();
    endService();
}

} // namespace

} // namespace ipmib::e2e
