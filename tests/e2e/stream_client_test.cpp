// SPDX-License-Identifier: BSD-3-Clause
// Clients on streams that do what no good client does: the agent waits for none of them, and answers all others.

#include "e2e/agent_under_test.h"
#include "e2e/objects.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

namespace ipmib::e2e
{

namespace
{

constexpr int patience = 30000; // milliseconds, against a test that hangs

// The question for an agent's engine, which takes no credentials and has an answer that is longer than itself.
constexpr std::uint8_t discovery[] = {0x30, 0x3A, 0x02, 0x01, 0x03, 0x30, 0x0F, 0x02, 0x02, 0x4A, 0x69, 0x02,
                                      0x03, 0x00, 0xFF, 0xE3, 0x04, 0x01, 0x04, 0x02, 0x01, 0x03, 0x04, 0x10,
                                      0x30, 0x0E, 0x04, 0x00, 0x02, 0x01, 0x00, 0x02, 0x01, 0x00, 0x04, 0x00,
                                      0x04, 0x00, 0x04, 0x00, 0x30, 0x12, 0x04, 0x00, 0x04, 0x00, 0xA0, 0x0C,
                                      0x02, 0x02, 0x37, 0xF0, 0x02, 0x01, 0x00, 0x02, 0x01, 0x00, 0x30, 0x00};

class Connection
{
  public:
    explicit Connection(std::uint16_t port, int receiveBuffer = 0)
        : descriptor_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        if (receiveBuffer != 0) {
            setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        }
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = htons(port);
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        isOpen_ = connect(descriptor_, reinterpret_cast<const sockaddr *>(&place), sizeof place) == 0;
    }
    ~Connection() { close(descriptor_); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool isOpen() const { return isOpen_; }
    // Sends without waiting. Returns how much was taken, or -1 with errno.
    ssize_t send(std::span<const std::uint8_t> octets) const
    {
        return ::send(descriptor_, octets.data(), octets.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    // Waits until there is something to read or to write, or the end.
    bool wait(short events) const
    {
        pollfd self{descriptor_, events, 0};
        return poll(&self, 1, patience) == 1;
    }
    // How many octets come next; 0 at the end of the connection, however it came, -1 when nothing comes.
    ssize_t receive() const
    {
        if (!wait(POLLIN)) {
            return -1;
        }
        char octets[4096];
        const ssize_t received = recv(descriptor_, octets, sizeof octets, MSG_DONTWAIT);
        return received < 0 && errno == ECONNRESET ? 0 : received;
    }

  private:
    int descriptor_;
    bool isOpen_;
};

class StreamClientTest : public AgentTest
{
  protected:
    void start(const std::string &settings = "")
    {
        setEnvironment("SNMP_PERSISTENT_DIR", path("persistent"));
        startAgent(everybody + settings, {address("tcp")});
    }
    void expectAnAnswer() { EXPECT_EQ(snmp("snmpget", publicV2, {hopLimit}).output, hopLimitRow); }
    std::size_t timesLoggedWith(const std::string &part) const
    {
        const Words lines = log();
        return static_cast<std::size_t>(std::ranges::count_if(
            lines, [&](const std::string &line) { return line.find(part) != std::string::npos; }));
    }
};

TEST_F(StreamClientTest, WhoDoesNotReadIsLetGo)
{
    start();
    const Connection deaf(port(), 4096);
    ASSERT_TRUE(deaf.isOpen());
    ssize_t sent = 0;
    // The end comes when the agent cannot send; until then it reads, so there is room again and again.
    for (int i = 0; i < 1'000'000 && (sent >= 0 || errno == EAGAIN); ++i) {
        if (sent < 0) {
            ASSERT_TRUE(deaf.wait(POLLOUT)) << "the agent does not go on";
        }
        sent = deaf.send(discovery);
    }
    EXPECT_LT(sent, 0) << "the connection has not ended";
    expectAnAnswer();
    stopAgent();
    EXPECT_EQ(timesLoggedWith("does not take its answers"), 1u);
}

TEST_F(StreamClientTest, ManyConnectionsLeaveDescriptorsForOthers)
{
    const Words program = {"prlimit", "--nofile=60", "--"};
    Words words = agentWords({"-f", "-Lo", "-C", "-c", writeFile("test.conf", everybody), address("tcp")});
    words.insert(words.begin(), program.begin(), program.end());
    startProgram(words);
    std::deque<Connection> idle;
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(idle.emplace_back(port()).isOpen()) << i;
    }
    expectAnAnswer();
    // The last one to come is served, the first is gone.
    EXPECT_EQ(idle.back().send(getHopLimit), static_cast<ssize_t>(sizeof getHopLimit));
    EXPECT_GT(idle.back().receive(), 0);
    EXPECT_EQ(idle.front().receive(), 0);
    EXPECT_TRUE(sleepsThrough(agent().pid()));
    stopAgent();
}

TEST_F(StreamClientTest, TheLimitIsASetting)
{
    start("maxConnections 2\n");
    const Connection first(port());
    const Connection second(port());
    for (const Connection *open : {&second, &first}) { // the second has been silent longer then
        EXPECT_EQ(open->send(getHopLimit), static_cast<ssize_t>(sizeof getHopLimit));
        EXPECT_GT(open->receive(), 0);
    }
    const Connection third(port());
    EXPECT_EQ(second.receive(), 0);
    for (const Connection *open : {&first, &third}) {
        EXPECT_EQ(open->send(getHopLimit), static_cast<ssize_t>(sizeof getHopLimit));
        EXPECT_GT(open->receive(), 0);
    }
    stopAgent();
}

TEST_F(StreamClientTest, IdleConnectionsEnd)
{
    start("connectionIdleTime 1\n");
    const Connection silent(port());
    const Connection slow(port());
    EXPECT_EQ(slow.send(std::span(getHopLimit).first(1)), 1); // not a message yet
    EXPECT_EQ(silent.receive(), 0);
    EXPECT_EQ(slow.receive(), 0);
    expectAnAnswer();
    stopAgent();
}

TEST_F(StreamClientTest, AMessageMayComeInPieces)
{
    start();
    const Connection slow(port());
    for (int round = 0; round < 2; ++round) {
        for (const std::uint8_t &octet : getHopLimit) {
            EXPECT_EQ(slow.send({&octet, 1}), 1);
        }
        EXPECT_GT(slow.receive(), 0);
    }
    stopAgent();
}

TEST_F(StreamClientTest, WhatIsNoMessageEndsTheConnection)
{
    start();
    constexpr std::uint8_t endless[] = {0x30, 0x84, 0x7F, 0xFF, 0xFF, 0xF0};
    constexpr std::uint8_t other[] = {'G', 'E', 'T', ' ', '/'};
    for (const std::span<const std::uint8_t> octets :
         std::initializer_list<std::span<const std::uint8_t>>{endless, other}) {
        const Connection stranger(port());
        EXPECT_EQ(stranger.send(octets), static_cast<ssize_t>(octets.size()));
        EXPECT_EQ(stranger.receive(), 0);
    }
    expectAnAnswer();
    stopAgent();
}

// Whoever leaves before the answer, and whoever sends nonsense, has a few lines of the log a minute.
TEST_F(StreamClientTest, NobodyFillsTheLog)
{
    start();
    std::vector<std::uint8_t> bulk(std::begin(getHopLimit), std::end(getHopLimit));
    bulk[13] = 0xA5;
    bulk[23] = 100; // repetitions
    for (int i = 0; i < 300; ++i) {
        const Connection hasty(port());
        EXPECT_EQ(hasty.send(bulk), static_cast<ssize_t>(bulk.size()));
    }
    std::vector<std::uint8_t> tooLittle(std::begin(discovery), std::end(discovery));
    tooLittle[14] = 0; // leaves 227 octets of room for an answer, fewer than anybody may have
    const int datagrams = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port());
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    for (int i = 0; i < 100; ++i) { // so many have room in the agent's socket
        sendto(datagrams, tooLittle.data(), tooLittle.size(), 0, reinterpret_cast<const sockaddr *>(&place),
               sizeof place);
    }
    close(datagrams);
    expectAnAnswer();
    stopAgent();
    EXPECT_GT(timesLoggedWith("bad msgMaxSize"), 0u);
    EXPECT_LE(log().size(), 40u) << agent().output();
}

TEST_F(StreamClientTest, SettingsThatAreNone)
{
    start("maxConnections 0\nconnectionIdleTime soon\n");
    EXPECT_EQ(timesLoggedWith("maxConnections: needs a number, 1 or more"), 1u);
    EXPECT_EQ(timesLoggedWith("connectionIdleTime: needs a number of seconds, 1 or more"), 1u);
    agent().signal(SIGTERM);
    EXPECT_EQ(agent().wait(), 0);
}

TEST_F(StreamClientTest, TransportsThatWaitForTheirClientsAreRefused)
{
    const Result result =
        runAgent(agentWords({"-f", "-Lo", "-C", "-c", writeFile("test.conf", everybody), address("tlstcp")}));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("cannot listen on " + address("tlstcp")), std::string::npos) << result.errors;
}

} // namespace

} // namespace ipmib::e2e
