// SPDX-License-Identifier: BSD-3-Clause
// ipmibd as the master of other programs: a sub-agent of Debian's, and one that hangs.

#include "e2e/master_under_test.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>

namespace ipmib::e2e
{

namespace
{

constexpr const char *subAgentProgram = "/usr/sbin/snmpd";
constexpr const char *lldpProgram = "/usr/sbin/lldpd";
const std::string ownInstance = "1.3.6.1.2.1.4.25.0";
const std::string subAgentsInstance = "1.3.6.1.2.1.25.1.1.0"; // hrSystemUptime

class AgentxMasterTest : public AgentTest
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        AgentTest::SetUp();
    }

    void startMaster(const std::string &more = "")
    {
        startAgent(everybody + "master agentx\nagentXSocket " + socketPath() + "\nagentXPerms 0660 0755\n" + more);
    }

    // One that does not come to serve.
    Result startSecond(const std::string &configuration) const
    {
        return runAgent({agentProgram, "--platform", scriptedPlatform, "-f", "-Lo", "-C", "-c",
                         writeFile("second.conf", configuration), "udp:127.0.0.1:1199"});
    }

    // snmpd in its other role, with a table that is always there.
    std::unique_ptr<Command> startSubAgent()
    {
        Environment own = environment();
        own["SNMP_PERSISTENT_DIR"] = path("sub-agent-persistent");
        const std::string modules = "hr_system";
        auto subAgent = std::make_unique<Command>(
            Words{subAgentProgram, "-X", "-f", "-Lo", "-C", "-c",
                  writeFile("sub-agent.conf", "agentXSocket " + socketPath() + "\n"), "-I", modules},
            own);
        EXPECT_TRUE(eventually([this] { return isThere(subAgentsInstance); })) << subAgent->output();
        return subAgent;
    }

    Result get(const std::string &instance, const std::string &seconds) const
    {
        return run({"snmpget", "-v2c", "-c", "public", "-On", "-t", seconds, "-r", "0", address(), instance},
                   environment());
    }

    bool isThere(const std::string &instance) const
    {
        const Result result = get(instance, "1");
        return result.status == 0 && result.output.find("No Such") == std::string::npos;
    }

    std::string socketPath() const { return path("sockets/master"); }
};

// Debian's snmpd is there wherever the tests beside it run; the other sub-agent has a package of its own.
#define NEEDS_PROGRAM(program)                                                                                         \
    if (access(program, X_OK) != 0) {                                                                                  \
        GTEST_SKIP() << program << " is not installed";                                                                \
    }

TEST_F(AgentxMasterTest, NobodyIsAMasterWithoutSayingSo)
{
    startAgent(everybody + "agentXSocket " + socketPath() + "\n");
    struct stat status {
    };
    EXPECT_NE(stat(socketPath().c_str(), &status), 0);
    stopAgent();
}

TEST_F(AgentxMasterTest, TheSocketHasItsPermissionsAndIsTakenFromNobody)
{
    startMaster();
    struct stat socket {
    };
    ASSERT_EQ(stat(socketPath().c_str(), &socket), 0);
    EXPECT_EQ(socket.st_mode & 07777, 0660U);
    struct stat folder {
    };
    ASSERT_EQ(stat(path("sockets").c_str(), &folder), 0);
    EXPECT_EQ(folder.st_mode & 07777, 0755U);
    const Result refused = startSecond(everybody + "master agentx\nagentXSocket " + socketPath() + "\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.errors.find("agentx: cannot be a master at " + socketPath() + ": there is one already"),
              std::string::npos)
        << refused.errors;
    writeFile("test.conf", everybody);
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    EXPECT_EQ(timesLogged("other listening addresses take a restart; listening where it began"), 1U);
    stopAgent();
}

TEST_F(AgentxMasterTest, ASocketThatCannotBeMadeIsAnError)
{
    const Result refused = startSecond(everybody + "master agentx\nagentXSocket /proc/master\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.errors.find("agentx: cannot be a master at /proc/master: "), std::string::npos) << refused.errors;
}

TEST_F(AgentxMasterTest, LldpdsTablesAreServedBesideOurs)
{
    NEEDS_PROGRAM(lldpProgram);
    startMaster();
    const Words own = walk("snmpbulkwalk", publicV2, {}, "1.3.6.1.2.1.4");
    mkdir("/run/lldpd", 0755); // its jail, which its package makes at boot
    const std::string lldpMib = "1.0.8802.1.1.2";
    Command lldpd({lldpProgram, "-d", "-r", "-x", "-X", socketPath(), "-u", path("lldpd.socket"), "-S", "a gate"},
                  environment());
    ASSERT_TRUE(eventually([&] { return isThere(lldpMib + ".1.3.4.0"); })) << lldpd.output() << lldpd.errors();
    const Words theirs = walk("snmpbulkwalk", publicV2, {}, lldpMib);
    EXPECT_TRUE(holds(theirs, ".1.0.8802.1.1.2.1.3.4.0 = STRING: \"a gate\""));
    EXPECT_EQ(walk("snmpwalk", publicV2, {}, lldpMib), theirs);
    EXPECT_EQ(identifiersOf(walk("snmpbulkwalk", publicV2, {}, "1.3.6.1.2.1.4")), identifiersOf(own));
    const Words capabilities = walk("snmpbulkwalk", publicV2, {}, "1.3.6.1.2.1.1.9.1.3");
    EXPECT_TRUE(std::ranges::any_of(capabilities,
                                    [](const std::string &row) { return row.find("lldpd") != std::string::npos; }));
    lldpd.signal(SIGTERM);
    lldpd.wait();
    EXPECT_TRUE(eventually([&] { return !isThere(lldpMib + ".1.3.4.0"); }));
    stopAgent();
}

TEST_F(AgentxMasterTest, ASubAgentThatHangsHoldsUpWhoeverAsksForItsRowsAlone)
{
    NEEDS_PROGRAM(subAgentProgram);
    startMaster("agentXTimeout 600\n");
    const auto subAgent = startSubAgent();
    subAgent->signal(SIGSTOP);
    Command waiting({"snmpget", "-v2c", "-c", "public", "-t", "500", "-r", "0", address(), subAgentsInstance},
                    environment());
    for (int time = 0; time < 5; ++time) {
        EXPECT_TRUE(isThere(ownInstance));
    }
    EXPECT_EQ(kill(waiting.pid(), 0), 0);
    EXPECT_EQ(waiting.output(), "");
    subAgent->signal(SIGCONT);
    EXPECT_EQ(waiting.wait(), 0);
    EXPECT_NE(waiting.output().find("Timeticks"), std::string::npos);
    stopAgent();
}

TEST_F(AgentxMasterTest, ASubAgentThatReadsNoRequestsIsLetGo)
{
    NEEDS_PROGRAM(subAgentProgram);
    startMaster("agentXTimeout 600\n");
    const auto subAgent = startSubAgent();
    subAgent->signal(SIGSTOP);
    // GET of hrSystemUptime.0 with the community "public", version 2c: more of them than a socket holds.
    constexpr std::array<std::uint8_t, 42> question = {0x30, 0x28, 0x02, 0x01, 0x01, 0x04, 0x06, 'p',  'u',  'b',  'l',
                                                       'i',  'c',  0xA0, 0x1B, 0x02, 0x01, 0x07, 0x02, 0x01, 0x00, 0x02,
                                                       0x01, 0x00, 0x30, 0x10, 0x30, 0x0E, 0x06, 0x0A, 0x2B, 0x06, 0x01,
                                                       0x02, 0x01, 0x19, 0x01, 0x01, 0x00, 0x00, 0x05, 0x00};
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port());
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string letGo = "agentx: a sub-agent does not take its requests, closing the connection";
    constexpr int most = 20000;
    for (int sent = 0; sent < most && timesLogged(letGo) == 0; ++sent) {
        sendto(descriptor, question.data(), question.size(), 0, reinterpret_cast<const sockaddr *>(&place),
               sizeof place);
        if (sent % 100 == 0) { // so that none of them is lost on the way
            ASSERT_EQ(get(ownInstance, "20").status, 0);
        }
    }
    close(descriptor);
    EXPECT_EQ(timesLogged(letGo), 1U);
    EXPECT_TRUE(isThere(ownInstance));
    EXPECT_FALSE(isThere(subAgentsInstance));
    subAgent->signal(SIGKILL);
    stopAgent();
}

TEST_F(AgentxMasterTest, ASubAgentThatDoesNotAnswerIsGivenUp)
{
    NEEDS_PROGRAM(subAgentProgram);
    startMaster("agentXTimeout 1\nagentXRetries 0\n");
    const auto subAgent = startSubAgent();
    subAgent->signal(SIGSTOP);
    const Result unanswered = get(subAgentsInstance, "30");
    EXPECT_NE(unanswered.errors.find("genError"), std::string::npos) << unanswered.errors;
    EXPECT_EQ(get(subAgentsInstance, "20").output,
              "." + subAgentsInstance + " = No Such Object available on this agent at this OID\n");
    EXPECT_TRUE(isThere(ownInstance));
    subAgent->signal(SIGKILL);
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
