// SPDX-License-Identifier: BSD-3-Clause
// A sub-agent's life: its master comes late, goes, comes back, hangs, or will not have it.

#include "e2e/master_under_test.h"

#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

namespace ipmib::e2e
{

namespace
{

class SubagentLifeTest : public MasterTest
{
  protected:
    // The scripted device has it too.
    void expectRows()
    {
        EXPECT_TRUE(eventually([this] { return isThere(interfaceRow); })) << agent().output();
    }

    std::string absence(const std::string &reason) const
    {
        return "agentx: no master at " + socketPath() + ": " + reason + "; trying again every second";
    }
};

TEST_F(SubagentLifeTest, AMasterThatComesLaterIsFound)
{
    startSubagent(); // ready although there is nobody
    EXPECT_EQ(timesLogged(absence("No such file or directory")), 1u);
    startMaster();
    expectRows();
    stopSubagent();
}

TEST_F(SubagentLifeTest, ItIsBackWheneverTheMasterIs)
{
    startMaster();
    startSubagent();
    for (unsigned time = 1; time <= 3; ++time) {
        // Killed in the middle of a walk, except for the first time.
        Command walker({"snmpwalk", "-v2c", "-c", "public", "-On", "-t", "1", "-r", "0", address(), "1.3.6.1.2.1.4"},
                       environment());
        if (time > 1) {
            EXPECT_TRUE(eventually([&] { return walker.output().find("1.3.6.1.2.1.4.3") != std::string::npos; }));
        }
        killMaster();
        walker.wait();
        EXPECT_TRUE(eventually([&] { return timesLogged(absence("the master closed the connection")) == time; }))
            << agent().output();
        startMaster();
        expectRows();
    }
    const Words lines = log();
    EXPECT_EQ(
        std::ranges::count_if(
            lines, [](const std::string &line) { return line.starts_with("agentx: our rows replace the master's"); }),
        1) // it was true all the time
        << agent().output();
    EXPECT_EQ(timesLogged(absence("Connection refused")), 0u);
    stopSubagent();
}

TEST_F(SubagentLifeTest, AMasterThatHangsDoesNotKeepItFromEnding)
{
    startMaster();
    startSubagent();
    master().signal(SIGSTOP);
    agent().signal(SIGTERM);
    EXPECT_EQ(agent().wait(), 0);
    master().signal(SIGCONT);
    EXPECT_TRUE(eventually([this] { return !isThere(interfaceRow); }));
}

TEST_F(SubagentLifeTest, AMasterThatHungIsServedAgain)
{
    startMaster();
    master().signal(SIGSTOP);
    startSubagent(); // ready, after some patience
    EXPECT_EQ(timesLogged("agentx: the master at " + socketPath() + " does not answer; waiting"), 1u);
    master().signal(SIGCONT);
    expectRows();
    master().signal(SIGSTOP);
    EXPECT_NE(snmp("snmpget", publicV2, {"-t", "0.5", interfaceRow}).status, 0);
    master().signal(SIGCONT);
    expectRows();
    EXPECT_TRUE(eventually([&] {
        return timesLogged("agentx: connected to the master at " + socketPath() + ", serving 18 of 37 tables") == 1;
    })) << agent().output();
    stopSubagent();
}

TEST_F(SubagentLifeTest, NothingWakesItUpWhileNobodyAsks)
{
    startMaster();
    startSubagent();
    expectRows();
    EXPECT_TRUE(sleepsThrough(agent().pid()));
    stopSubagent();
}

TEST_F(SubagentLifeTest, ItStopsWhileNobodyIsThere)
{
    startSubagent();
    stopSubagent();
}

TEST_F(SubagentLifeTest, ASocketThatItMayNotUseIsReportedWithTheWayOut)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root, to run a program as somebody else";
    }
    startMaster();
    // Where everybody may run it.
    std::filesystem::copy(agentProgram, path("ipmibd"));
    std::filesystem::copy(scriptedPlatform, path("platform.so"));
    std::filesystem::copy(IPMIB_MODULE, path("module.so"));
    ASSERT_EQ(chmod(path("").c_str(), 0755), 0);
    writeFile("test.conf", "");
    const Words somebody = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    const Words program = {path("ipmibd"), "-f",
                           "-Lo",          "-C",
                           "-c",           path("test.conf"),
                           "-x",           socketPath(),
                           "--platform",   path("platform.so"),
                           "--module",     path("module.so")};
    Words words = somebody;
    words.insert(words.end(), program.begin(), program.end());
    Command refused(words, environment());
    const std::string complaint =
        absence("Permission denied (agentXPerms in snmpd.conf says who may use the master's socket)");
    EXPECT_TRUE(eventually([&] { return holds(linesOf(refused.output()), complaint); }))
        << refused.output() << refused.errors();
    ASSERT_EQ(chmod(socketPath().c_str(), 0777), 0);
    expectRows();
    refused.signal(SIGTERM);
    EXPECT_EQ(refused.wait(), 0);
}

TEST_F(SubagentLifeTest, AMasterOverTcp)
{
    const std::string place = "tcp:127.0.0.1:" + std::to_string(port());
    startMaster("agentXSocket " + place + "\n");
    writeFile("test.conf", "");
    const std::string named = "tcp:localhost:" + std::to_string(port());
    startProgram({agentProgram, "-f", "-Lo", "-C", "-c", path("test.conf"), "-x", named});
    expectRows();
    killMaster();
    startMaster("agentXSocket " + place + "\n");
    expectRows();
    stopSubagent();
}

// The resolver would wait for minutes, with everything else.
TEST_F(SubagentLifeTest, ANameServerThatIsSilentHoldsNothingUp)
{
    if (network() == nullptr || unshare(CLONE_NEWNS) != 0 ||
        mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        GTEST_SKIP() << "needs the right to have a name server of its own";
    }
    const std::string servers = writeFile("resolv.conf", "nameserver 127.0.0.1\noptions timeout:30 attempts:5\n");
    const std::string order = writeFile("nsswitch.conf", "hosts: dns\n");
    ASSERT_EQ(mount(servers.c_str(), "/etc/resolv.conf", nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(mount(order.c_str(), "/etc/nsswitch.conf", nullptr, MS_BIND, nullptr), 0);
    const int server = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(53);
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(bind(server, reinterpret_cast<const sockaddr *>(&place), sizeof place), 0);

    writeFile("test.conf", "");
    startProgram({agentProgram, "-f", "-Lo", "-C", "-c", path("test.conf"), "-x", "tcp:master.example:705"});
    pollfd asked{server, POLLIN, 0};
    EXPECT_EQ(poll(&asked, 1, 30000), 1) << "nobody was asked for the name";
    close(server);
    const std::string line = "agentx: the master at tcp:master.example:705 does not answer; waiting";
    EXPECT_EQ(timesLogged(line), 1u) << agent().output();
    stopAgent();
    umount2("/etc/resolv.conf", MNT_DETACH);
    umount2("/etc/nsswitch.conf", MNT_DETACH);
}

TEST_F(SubagentLifeTest, HangUpReadsWhoServesWhat)
{
    startMaster();
    startSubagent("serve all off\n");
    EXPECT_FALSE(isThere(interfaceRow));
    reconfigureSubagent("");
    expectRows();
    reconfigureSubagent("serve ipv6InterfaceTable off\n");
    EXPECT_FALSE(isThere(interfaceRow));
    stopSubagent();
}

TEST_F(SubagentLifeTest, WhatIsNoMasterIsReported)
{
    // An SNMP agent instead of an AgentX master.
    startAgent(everybody + "agentaddress " + address("tcp") + "\n");
    writeFile("sub.conf", "");
    Command subagent(
        {agentProgram, "-f", "-Lo", "-C", "-c", path("sub.conf"), "-x", address("tcp"), "--platform", scriptedPlatform},
        environment());
    const std::string beginning = "agentx: no master at " + address("tcp") + ": ";
    EXPECT_TRUE(eventually([&] { return subagent.output().find(beginning) != std::string::npos; }))
        << subagent.output();
    subagent.signal(SIGTERM);
    EXPECT_EQ(subagent.wait(), 0);
}

TEST_F(SubagentLifeTest, WritesAreRefusedThroughTheMasterToo)
{
    startMaster("rwcommunity private 127.0.0.1\n");
    startSubagent();
    const Result result = snmp("snmpset", writerV2, {interfaceRow, "i", "2"});
    EXPECT_NE(result.errors.find("notWritable"), std::string::npos) << result.errors << result.output;
    expectRows();
    stopSubagent();
}

} // namespace

} // namespace ipmib::e2e
