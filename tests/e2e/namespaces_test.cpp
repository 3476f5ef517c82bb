// SPDX-License-Identifier: BSD-3-Clause
// Network namespaces as contexts: the same addresses and neighbours in two of them, in different states.

#include "e2e/agent_under_test.h"
#include "e2e/objects.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <thread>

namespace ipmib::e2e
{
namespace
{

const std::string ifAdminStatus = "1.3.6.1.2.1.2.2.1.7";
const std::string neighbours = "1.3.6.1.2.1.4.35.1.4";     // their link-layer addresses
const std::string inReceives = "1.3.6.1.2.1.4.31.1.1.3.2"; // of IPv6, from /proc

const std::string addressPrefixes = "1.3.6.1.2.1.4.32";

std::string statusOf(pid_t process, const std::string &word)
{
    for (const std::string &line : linesOf(contentOf("/proc/" + std::to_string(process) + "/status"))) {
        if (line.starts_with(word + ":\t")) {
            return line.substr(word.size() + 2);
        }
    }
    return "none";
}

Words of(const std::string &context)
{
    return {"-v2c", "-r0", "-t20", "-c", "lab@" + context};
}

class NamespaceTest : public AgentTest
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        AgentTest::SetUp();
    }
    void TearDown() override
    {
        if (network() != nullptr) {
            AgentTest::TearDown();
        }
    }

    Words wordsOf(const std::string &contexts) const
    {
        return {agentProgram,
                "-f",
                "-Lo",
                "-C",
                "-c",
                writeFile("test.conf", "rocommunity public 127.0.0.1\ncontextcommunity lab 127.0.0.1\n" + contexts),
                "--platform",
                "linux",
                address()};
    }
    void start(const std::string &contexts) { startProgram(wordsOf(contexts)); }
    // Where there are no namespaces with a name but those of the test; the commands come before it, and the words
    // before those of the agent.
    void startApart(const std::string &commands, const Words &with = {},
                    const std::string &contexts = "contexts netns all\n")
    {
        Words words = {"unshare",
                       "--mount",
                       "--propagation",
                       "private",
                       "sh",
                       "-c",
                       "mount -t tmpfs tmpfs /run && " + commands + " && exec \"$@\"",
                       "sh"};
        std::ranges::copy(with, std::back_inserter(words));
        std::ranges::copy(wordsOf(contexts), std::back_inserter(words));
        startProgram(words);
    }
    // As the log names it.
    pid_t helper()
    {
        const std::string text = agent().output();
        const std::string before = "opened by ipmib-netns, process ";
        const std::size_t found = text.find(before);
        return found == std::string::npos ? 0 : std::stoi(text.substr(found + before.size()));
    }
    bool eventuallyLogged(const std::string &part)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (agent().output().find(part) == std::string::npos && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return agent().output().find(part) != std::string::npos;
    }
    void ip(const Words &arguments)
    {
        Words words = {"nsenter", "--mount=/proc/" + std::to_string(agent().pid()) + "/ns/mnt", "ip"};
        std::ranges::copy(arguments, std::back_inserter(words));
        const Result result = run(words);
        EXPECT_EQ(result.status, 0) << result.errors;
    }
    // Waits until the context answers, or does not any more.
    bool eventually(const std::string &context, bool isThere) const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < end) {
            const Words names = walk("snmpbulkwalk", publicV2, {"-Oqv"}, vacmContextName);
            if ((std::ranges::find(names, "\"" + context + "\"") != names.end()) == isThere) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }
};

TEST_F(NamespaceTest, SameAddressesAndNeighboursWithDifferentStates)
{
    const netns::Namespace red;
    const netns::Namespace blue;
    for (const netns::Namespace *each : {&red, &blue}) {
        each->run("ip link add lan type veth peer name far && ip link set lan up && ip link set far up");
        each->run("ip address add 2001:db8::1/64 dev lan nodad && ip address add 192.0.2.1/24 dev lan");
    }
    red.run("ip neigh add 192.0.2.9 lladdr 02:00:00:00:00:01 dev lan nud permanent");
    blue.run("ip neigh add 192.0.2.9 lladdr 02:00:00:00:00:02 dev lan nud permanent");
    red.run("ip neigh add 2001:db8::9 lladdr 02:00:00:00:00:03 dev lan nud permanent");
    blue.run("ip neigh add 2001:db8::9 lladdr 02:00:00:00:00:04 dev lan nud permanent");
    start("context red netns " + red.path() + "\ncontext blue netns " + blue.path() + "\n");

    const auto has = [this](const std::string &context, const std::string &octets) {
        const Words rows = walk("snmpbulkwalk", of(context), {"-Ox", "-Oqv"}, neighbours);
        return std::ranges::any_of(rows, [&](const std::string &row) { return row.find(octets) != std::string::npos; });
    };
    EXPECT_TRUE(has("red", "02 00 00 00 00 01") && has("red", "02 00 00 00 00 03"));
    EXPECT_TRUE(has("blue", "02 00 00 00 00 02") && has("blue", "02 00 00 00 00 04"));
    EXPECT_FALSE(has("red", "02 00 00 00 00 02") || has("red", "02 00 00 00 00 04"));
    EXPECT_FALSE(has("blue", "02 00 00 00 00 01") || has("blue", "02 00 00 00 00 03"));
    EXPECT_EQ(walk("snmpbulkwalk", of("red"), {}, ipAddressIfIndex).size(),
              walk("snmpwalk", of("blue"), {}, ipAddressIfIndex).size());
    EXPECT_EQ(snmp("snmpbulkwalk", publicV2, {neighbours}).output.find("STRING"), std::string::npos)
        << "the agent's own namespace has none";

    // What changes in one changes there, at once.
    blue.run("ip link set lan down");
    const Words upThere = walk("snmpwalk", of("red"), {"-Oqv"}, ifAdminStatus);
    const Words downThere = walk("snmpwalk", of("blue"), {"-Oqv"}, ifAdminStatus);
    EXPECT_EQ(std::ranges::count(upThere, "2"), 0);
    EXPECT_EQ(std::ranges::count(downThere, "2"), 1);
    red.run("ip neigh replace 192.0.2.9 lladdr 02:00:00:00:00:05 dev lan nud permanent");
    EXPECT_TRUE(has("red", "02 00 00 00 00 05"));
    EXPECT_FALSE(has("blue", "02 00 00 00 00 05"));
    stopAgent();
}

TEST_F(NamespaceTest, CountersAreThoseOfTheNamespace)
{
    const netns::Namespace busy;
    const netns::Namespace idle;
    busy.run("ping -6 -c 5 -i 0.01 -q ::1");
    start("context busy netns " + busy.path() + "\ncontext idle netns " + idle.path() + "\n");
    const auto received = [this](const std::string &context) {
        return std::stoul(snmp("snmpget", of(context), {"-Oqv", inReceives}).output);
    };
    EXPECT_GE(received("busy"), 10u);
    EXPECT_LT(received("idle"), 10u);
    const unsigned long before = received("idle");
    busy.run("ping -6 -c 20 -i 0.01 -q ::1");
    EXPECT_GE(received("busy"), 50u);
    EXPECT_LT(received("idle"), before + 10u);
    stopAgent();
}

TEST_F(NamespaceTest, NamedOnesComeAndGo)
{
    startApart("ip netns add first && ip -n first link add one type veth peer name two");
    EXPECT_EQ(snmp("snmpget", of("first"), {"-Oqv", sysName}).output, "\"first\"\n");
    EXPECT_EQ(walk("snmpwalk", of("first"), {"-Oqv"}, ifDescr).size(), 3u);
    ip({"netns", "add", "second"});
    ASSERT_TRUE(eventually("second", true));
    EXPECT_EQ(walk("snmpwalk", of("second"), {"-Oqv"}, ifDescr), (Words{"\"lo\""}));
    ip({"netns", "del", "first"});
    ASSERT_TRUE(eventually("first", false));
    EXPECT_NE(snmp("snmpget", {"-v2c", "-r0", "-t1", "-c", "lab@first"}, {sysName}).status, 0);
    ip({"netns", "add", "first"});
    ASSERT_TRUE(eventually("first", true));
    EXPECT_EQ(walk("snmpwalk", of("first"), {"-Oqv"}, ifDescr), (Words{"\"lo\""})) << "it is a new one";
    stopAgent();
}

TEST_F(NamespaceTest, TheFirstOneOfAllIsSeenAndDescriptorsStayLevel)
{
    startApart("true");
    const auto descriptors = [this] {
        const std::filesystem::directory_iterator all("/proc/" + std::to_string(agent().pid()) + "/fd");
        return std::distance(begin(all), end(all));
    };
    auto before = descriptors();
    for (int i = 0; i < 10; ++i) {
        ip({"netns", "add", "again"});
        ASSERT_TRUE(eventually("again", true));
        EXPECT_FALSE(walk("snmpbulkwalk", of("again"), {}, ifDescr).empty());
        ip({"netns", "del", "again"});
        ASSERT_TRUE(eventually("again", false));
        before = i == 0 ? descriptors() : before; // one is kept, of the agent's own namespace
    }
    EXPECT_EQ(descriptors(), before);
    stopAgent();
}

TEST_F(NamespaceTest, OneThatIsNotThereIsSaid)
{
    start("context nowhere netns no-such-namespace\ncontext file netns /etc/hostname\ncontext odd vrf 7\n");
    const std::string text = agent().output();
    EXPECT_NE(text.find("context nowhere: network namespace /run/netns/no-such-namespace: No such file or directory\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("context file: /etc/hostname is no network namespace\n"), std::string::npos) << text;
    EXPECT_NE(text.find("context odd: platform linux shows \"netns NAME\", \"netns PATH\" or \"netns PID\", not "
                        "\"vrf 7\"\n"),
              std::string::npos)
        << text;
    stopAgent();
}

// Started as its service does it: with one right, which is left to the helper.
Words withRights(const std::string &rights)
{
    return {"setpriv", "--securebits=+noroot", "--inh-caps=-all" + rights, "--ambient-caps=-all" + rights,
            "--bounding-set=-all" + rights};
}

TEST_F(NamespaceTest, TheAgentKeepsNoRights)
{
    startApart("ip netns add first", withRights(",+sys_admin"));
    EXPECT_EQ(walk("snmpwalk", of("first"), {"-Oqv"}, ifDescr), (Words{"\"lo\""}));
    for (const char *set : {"CapPrm", "CapInh", "CapAmb"}) {
        EXPECT_EQ(statusOf(agent().pid(), set), "0000000000000000") << set;
    }
    EXPECT_EQ(statusOf(helper(), "CapPrm"), "0000000000200000");
    ip({"netns", "add", "second"});
    ASSERT_TRUE(eventually("second", true)) << agent().output();
    EXPECT_GE(std::stoul(snmp("snmpget", of("second"), {"-Oqv", inReceives}).output), 0u);
    EXPECT_FALSE(walk("snmpbulkwalk", of("second"), {}, addressPrefixes).empty());
    stopAgent();
}

TEST_F(NamespaceTest, WithoutTheRightItIsSaidAndTheRestIsServed)
{
    startApart("ip netns add first", withRights(""));
    EXPECT_EQ(
        timesLogged("context first: network namespace /run/netns/first: Operation not permitted (to enter it takes "
                    "CAP_SYS_ADMIN at the start)"),
        1u)
        << agent().output();
    EXPECT_FALSE(walk("snmpwalk", publicV2, {}, ifDescr).empty());
    stopAgent();
}

TEST_F(NamespaceTest, AKilledHelperIsSaidAndWhatIsOpenGoesOn)
{
    startApart("ip netns add first");
    ASSERT_EQ(walk("snmpwalk", of("first"), {"-Oqv"}, ifDescr).size(), 1u);
    ASSERT_GT(helper(), 0);
    kill(helper(), SIGKILL);
    ASSERT_TRUE(eventuallyLogged("network namespaces: ipmib-netns has ended: those that are shown go on with what they "
                                 "have open, no other is opened until the agent is restarted\n"));
    EXPECT_FALSE(walk("snmpwalk", publicV2, {}, ifDescr).empty());
    ip({"-n", "first", "link", "add", "one", "type", "veth", "peer", "name", "two"});
    EXPECT_EQ(walk("snmpwalk", of("first"), {"-Oqv"}, ifDescr).size(), 3u) << "it is live";
    ip({"netns", "add", "second"});
    EXPECT_TRUE(eventuallyLogged("context second: network namespace /run/netns/second: ipmib-netns has ended, and "
                                 "starts with the agent alone\n"))
        << agent().output();
    ip({"netns", "del", "first"});
    EXPECT_TRUE(eventually("first", false));
    EXPECT_FALSE(walk("snmpwalk", publicV2, {}, ifDescr).empty());
    stopAgent();
}

TEST_F(NamespaceTest, AStoppedHelperIsGivenUp)
{
    startApart("ip netns add first");
    ASSERT_GT(helper(), 0);
    kill(helper(), SIGSTOP);
    ip({"netns", "add", "second"});
    ASSERT_TRUE(eventuallyLogged("network namespaces: ipmib-netns does not answer: those that are shown go on with"));
    EXPECT_FALSE(walk("snmpwalk", publicV2, {}, ifDescr).empty());
    EXPECT_EQ(walk("snmpwalk", of("first"), {"-Oqv"}, ifDescr).size(), 1u);
    EXPECT_FALSE(std::filesystem::exists("/proc/" + std::to_string(helper()))) << "it is not left behind";
    stopAgent();
}

TEST_F(NamespaceTest, AKilledAgentLeavesNoHelper)
{
    startApart("ip netns add first");
    ASSERT_GT(helper(), 0);
    const int ended = static_cast<int>(syscall(SYS_pidfd_open, helper(), 0));
    ASSERT_GE(ended, 0);
    agent().signal(SIGKILL);
    EXPECT_EQ(agent().wait(), -SIGKILL);
    pollfd wait{ended, POLLIN, 0};
    EXPECT_EQ(poll(&wait, 1, 30'000), 1);
    close(ended);
}

TEST_F(NamespaceTest, ANamespaceThatIsAddedToTheConfigurationTakesARestart)
{
    startApart("ip netns add first && ip netns add second", {}, "context one netns first\n");
    EXPECT_EQ(snmp("snmpget", of("one"), {"-Oqv", sysName}).output, "\"first\"\n");
    writeFile("test.conf", "rocommunity public 127.0.0.1\ncontextcommunity lab 127.0.0.1\n"
                           "context one netns first\ncontext two netns second\ncontexts netns all\n");
    agent().signal(SIGHUP);
    EXPECT_TRUE(eventuallyLogged("context two: network namespace /run/netns/second: was not in the configuration when "
                                 "the agent started; restart it\n"))
        << agent().output();
    EXPECT_EQ(timesLogged("contexts netns all: was not in the configuration when the agent started; restart it"), 1u);
    EXPECT_EQ(snmp("snmpget", of("one"), {"-Oqv", sysName}).output, "\"first\"\n");
    stopAgent();
}

} // namespace
} // namespace ipmib::e2e
