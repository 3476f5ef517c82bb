// SPDX-License-Identifier: BSD-3-Clause
// From start to stop: configuration and its places, the daemon, its files, signals.

#include "e2e/agent_under_test.h"
#include "e2e/objects.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

namespace ipmib::e2e
{

namespace
{

class LifeTest : public AgentTest
{
};

TEST_F(LifeTest, SignalsEndItCleanly)
{
    for (const int number : {SIGTERM, SIGINT}) {
        startAgent(everybody, {"-p", path("pid")});
        EXPECT_EQ(contentOf(path("pid")), std::to_string(agent().pid()) + "\n");
        agent().signal(number);
        EXPECT_EQ(notification(), "STOPPING=1");
        EXPECT_EQ(agent().wait(), 0);
        EXPECT_FALSE(std::filesystem::exists(path("pid")));
        EXPECT_EQ(timesLogged("scripted platform: stopped"), 1u);
    }
}

TEST_F(LifeTest, AWatchedAgentSaysThatItIsAlive)
{
    setEnvironment("WATCHDOG_USEC", "200000");
    startAgent();
    EXPECT_EQ(notification(), "WATCHDOG=1");
    EXPECT_EQ(notification(), "WATCHDOG=1");
    stopAgent();
}

TEST_F(LifeTest, HangUpReadsTheConfigurationAgain)
{
    const Words other = {"-v2c", "-c", "other", "-t", "1"};
    startAgent();
    EXPECT_NE(snmp("snmpget", other, {hopLimit}).status, 0);
    writeFile("test.conf", "rocommunity other 127.0.0.1\n");
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    EXPECT_EQ(snmp("snmpget", {"-v2c", "-c", "other"}, {hopLimit}).output, hopLimitRow);
    EXPECT_NE(snmp("snmpget", {"-v2c", "-c", "public", "-t", "1"}, {hopLimit}).status, 0);
    EXPECT_EQ(timesLogged("scripted platform: reads its configuration again"), 1u);
    stopAgent();
}

TEST_F(LifeTest, OtherListeningAddressesTakeARestart)
{
    const std::string warning = "other listening addresses take a restart; listening where it began";
    const auto reload = [&](const std::string &more) {
        writeFile("test.conf", everybody + more);
        agent().signal(SIGHUP);
        EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
        EXPECT_EQ(notification(), "READY=1");
    };
    const std::string another = "agentaddress udp:127.0.0.1:" + std::to_string(port() == 65535 ? 65534 : port() + 1);
    startAgent(everybody + another);
    reload(another);
    EXPECT_EQ(timesLogged(warning), 0u) << "nothing has changed";
    reload("");
    EXPECT_EQ(timesLogged(warning), 1u);
    EXPECT_EQ(snmp("snmpget", publicV2, {hopLimit}).output, hopLimitRow);
    reload(another);
    EXPECT_EQ(timesLogged(warning), 1u) << "as it was at the start";
    stopAgent();
}

TEST_F(LifeTest, TheStartCanBeEndedAtAnyTime)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const std::string configuration = writeFile("test.conf", everybody);
    for (const Words &options : {Words{}, Words{"--check"}, Words{"-x", path("nobody")}}) {
        for (const int number : {SIGTERM, SIGINT}) {
            Words words = {agentProgram, "--platform", scriptedPlatform, "--wait-for=" + path("pipe"), "-f",
                           "-C",         "-c",         configuration};
            words.insert(words.end(), options.begin(), options.end());
            Command starting(words, environment());
            const int pipe = open(path("pipe").c_str(), O_WRONLY | O_CLOEXEC); // waits until it is read
            starting.signal(number);
            EXPECT_EQ(starting.wait(), -number);
            close(pipe);
        }
    }
}

TEST_F(LifeTest, AReloadCanBeEndedAtAnyTime)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const auto openPipe = [this] { return open(path("pipe").c_str(), O_WRONLY | O_CLOEXEC); };
    std::thread starter([&] { close(openPipe()); }); // lets the start go on
    startAgent(everybody, {"-p", path("pid"), "--wait-for=" + path("pipe")});
    starter.join();
    EXPECT_TRUE(std::filesystem::exists(path("pid")));
    agent().signal(SIGHUP);
    const int pipe = openPipe();
    agent().signal(SIGTERM);
    EXPECT_EQ(agent().wait(), -SIGTERM);
    EXPECT_FALSE(std::filesystem::exists(path("pid"))) << "what is ours is removed all the same";
    close(pipe);
}

TEST_F(LifeTest, HangUpOpensARotatedLogAnew)
{
    startAgent(everybody, {"-Lf", path("log")});
    std::filesystem::rename(path("log"), path("log.1"));
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    EXPECT_EQ(contentOf(path("log")), "scripted platform: reads its configuration again\n");
    EXPECT_NE(contentOf(path("log.1")).find("reading the configuration again\n"), std::string::npos);
    stopAgent();
}

TEST_F(LifeTest, AConfigurationThatIsGoneIsNotForgotten)
{
    startAgent();
    std::filesystem::remove(path("test.conf"));
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    EXPECT_EQ(snmp("snmpget", publicV2, {hopLimit}).output, hopLimitRow);
    EXPECT_EQ(timesLogged("cannot read the configuration file " + path("test.conf") +
                          ": No such file or directory, keeping the old configuration"),
              1u);
    stopAgent();
}

TEST_F(LifeTest, TheDaemonIsReadyWhenItsStarterReturns)
{
    const Result start =
        startDaemon(agentWords({"-C", "-c", writeFile("test.conf", everybody), "-p", path("pid"), "-Lf", path("log")}));
    EXPECT_EQ(start.status, 0);
    EXPECT_EQ(start.output + start.errors, "");
    EXPECT_EQ(snmp("snmpget", publicV2, {hopLimit}).output, hopLimitRow);
    ASSERT_GT(daemon(), 0);
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(daemon()) + "/cwd"), "/");
    EXPECT_NE(getsid(daemon()), getsid(0));
    endDaemon();
    EXPECT_FALSE(std::filesystem::exists(path("pid")));
    const Words lines = linesOf(contentOf(path("log")));
    EXPECT_EQ(std::ranges::count(lines, "scripted platform: stopped"), 1);
}

// Without -C: the library's search path, which the environment sets to the test's own folders.
TEST_F(LifeTest, TheDefaultConfigurationAndTheCountOfStarts)
{
    writeFile("ipmibd.conf", everybody);
    for (const char *boots : {"1", "2", "3"}) {
        EXPECT_EQ(startDaemon(agentWords({"-p", path("pid"), "-Lf", path("log")})).status, 0);
        EXPECT_EQ(snmp("snmpget", aliceV3, {hopLimit}).output, hopLimitRow);
        endDaemon();
        const std::string kept = contentOf(path("persistent/ipmibd.conf"));
        EXPECT_NE(kept.find(std::string("engineBoots ") + boots + "\n"), std::string::npos) << kept;
        EXPECT_EQ(kept.find("alice's"), std::string::npos) << "a password was kept in the clear";
    }
}

class DefaultAddressTest : public LifeTest
{
  protected:
    void SetUp() override
    {
        LifeTest::SetUp();
        if (network() == nullptr) {
            GTEST_SKIP() << "port 161 needs a network of the test's own";
        }
    }
    // What is listened on when nobody says what.
    Words sockets()
    {
        const Words words = {
            agentProgram, "--platform", scriptedPlatform, "-C", "-c", writeFile("test.conf", everybody), "-p",
            path("pid"),  "-Lf",        path("log")};
        EXPECT_EQ(startDaemon(words).status, 0);
        Words places;
        for (const std::string &line : linesOf(runAgent({"ss", "-Hlnut"}).output)) {
            std::istringstream stream(line);
            std::string transport, state, received, sent, place;
            stream >> transport >> state >> received >> sent >> place;
            places.push_back(transport + " " + place);
        }
        std::ranges::sort(places);
        return places;
    }
};

TEST_F(DefaultAddressTest, IsLoopbackAlone)
{
    EXPECT_EQ(sockets(), (Words{"udp 127.0.0.1:161", "udp [::1]:161"}));
}

TEST_F(DefaultAddressTest, OneLoopbackAddressIsEnough)
{
    network()->sysctl("net/ipv6/conf/all/disable_ipv6", "1");
    EXPECT_EQ(sockets(), Words{"udp 127.0.0.1:161"});
    const std::string log = contentOf(path("log"));
    EXPECT_NE(log.find("cannot listen on udp6:[::1]:161: Cannot assign requested address, going on without it"),
              std::string::npos)
        << log;
}

} // namespace

} // namespace ipmib::e2e
