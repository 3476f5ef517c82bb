// SPDX-License-Identifier: BSD-3-Clause
// Starts ipmibd and its clients in a network namespace, or on a free port where none can be made.

#include "e2e/agent_under_test.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace ipmib::e2e
{

const char *const agentProgram = IPMIB_AGENT_PROGRAM;
const char *const controlProgram = IPMIB_CONTROL_PROGRAM;
const char *const scriptedPlatform = IPMIB_SCRIPTED_PLATFORM;
const char *const emptyLibrary = IPMIB_EMPTY_LIBRARY;

const std::string everybody = R"(rocommunity public 127.0.0.1
rwcommunity private 127.0.0.1
createUser alice SHA "alice's auth" AES "alice's priv"
rouser alice priv
)";

namespace
{

constexpr int patienceMilliseconds = 30000;

std::uint16_t freePort()
{
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof place;
    bind(descriptor, reinterpret_cast<const sockaddr *>(&place), size);
    getsockname(descriptor, reinterpret_cast<sockaddr *>(&place), &size);
    close(descriptor);
    return ntohs(place.sin_port);
}

Words operator+(Words left, const Words &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

} // namespace

void AgentTest::SetUp()
{
    if (netns::unavailable().empty()) {
        network_.emplace();
        inside_.emplace(*network_);
    }
    port_ = freePort();
    std::string name = std::filesystem::temp_directory_path() / "ipmib-e2e-XXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    directory_ = name;
    manager_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    path("notify").copy(place.sun_path, sizeof place.sun_path - 1);
    ASSERT_EQ(bind(manager_, reinterpret_cast<const sockaddr *>(&place), sizeof place), 0);
    // Nothing of this machine's configuration, nothing left behind in it.
    environment_ = {{"SNMPCONFPATH", path("") + ":" + path("persistent")},
                    {"SNMP_PERSISTENT_DIR", path("persistent")},
                    {"MIBS", ""}};
}

void AgentTest::TearDown()
{
    agent_.reset();
    endDaemon();
    close(manager_);
    std::filesystem::remove_all(directory_);
}

Words AgentTest::agentWords(const Words &options) const
{
    return Words{agentProgram, "--platform", scriptedPlatform} + options + Words{address()};
}

void AgentTest::startAgent(const std::string &configuration, const Words &options)
{
    const Words fixed = {"-f", "-Lo", "-C", "-c", writeFile("test.conf", configuration)};
    startProgram(agentWords(fixed + options));
}

void AgentTest::startProgram(const Words &words)
{
    Environment environment = environment_;
    environment["NOTIFY_SOCKET"] = path("notify");
    char stale[256];
    while (recv(manager_, stale, sizeof stale, MSG_DONTWAIT) >= 0) { // of a program before this one
    }
    agent_ = std::make_unique<Command>(words, environment);
    ASSERT_EQ(notification(), "READY=1") << agent_->errors();
}

void AgentTest::stopAgent()
{
    agent_->signal(SIGTERM);
    EXPECT_EQ(agent_->wait(), 0);
    EXPECT_EQ(agent_->errors(), "");
    for (const std::string &line : log()) {
        EXPECT_FALSE(line.starts_with("complaint: ")) << line;
    }
}

Result AgentTest::startDaemon(const Words &words)
{
    const Result result = runAgent(words);
    std::ifstream(path("pid")) >> daemon_;
    return result;
}

void AgentTest::endDaemon()
{
    if (daemon_ <= 0) {
        return;
    }
    pollfd end{static_cast<int>(syscall(SYS_pidfd_open, daemon_, 0)), POLLIN, 0};
    kill(daemon_, SIGTERM);
    EXPECT_EQ(poll(&end, 1, patienceMilliseconds), 1) << "the daemon does not end";
    close(end.fd);
    daemon_ = 0;
}

unsigned AgentTest::timesLogged(const std::string &line) const
{
    const Words lines = log();
    return static_cast<unsigned>(std::ranges::count(lines, line));
}

std::string AgentTest::notification()
{
    pollfd sources[] = {{manager_, POLLIN, 0}, {agent_->descriptor(), POLLIN, 0}};
    if (poll(sources, 2, patienceMilliseconds) <= 0 || (sources[0].revents & POLLIN) == 0) {
        return "nothing";
    }
    char text[256];
    const ssize_t length = recv(manager_, text, sizeof text, 0);
    return length < 0 ? "nothing" : std::string(text, static_cast<std::size_t>(length));
}

Result AgentTest::snmp(const std::string &program, const Words &who, const Words &arguments) const
{
    return run(Words{program, "-On", "-t", "20", "-r", "0"} + who + Words{address()} + arguments, environment_);
}

Words AgentTest::walk(const std::string &program, const Words &who, const Words &options, const std::string &root) const
{
    const Result result = snmp(program, who + options, {root});
    EXPECT_EQ(result.status, 0) << program << " " << root << ": " << result.errors;
    Words rows = linesOf(result.output);
    // What the client prints at the end of the tree is no row.
    std::erase_if(rows, [](const std::string &row) {
        return row.find("No more variables left") != std::string::npos || row == "End of MIB";
    });
    return rows;
}

Result AgentTest::runAgent(const Words &words) const
{
    return run(words, environment_);
}

std::string AgentTest::address(const std::string &transport) const
{
    return transport + ":127.0.0.1:" + std::to_string(port_);
}

std::string AgentTest::writeFile(const std::string &name, const std::string &content) const
{
    const std::string file = path(name);
    std::ofstream(file) << content;
    return file;
}

} // namespace ipmib::e2e
