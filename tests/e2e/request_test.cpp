// SPDX-License-Identifier: BSD-3-Clause
// Single requests: what is not there, what cannot be written, who may ask, and what a packet is.

#include "e2e/agent_under_test.h"
#include "e2e/objects.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <span>

namespace ipmib::e2e
{

namespace
{

class RequestTest : public AgentTest
{
};

TEST_F(RequestTest, WhatIsNotThereIsToldApart)
{
    startAgent();
    const Result result = snmp(
        "snmpget", publicV2,
        {"1.3.6.1.2.1.5.30.1.3.2.128", "1.3.6.1.2.1.5.30.1.3.2.141", "1.3.6.1.2.1.5.31.1", "1.3.6.1.2.1.5.29.1.99.2"});
    EXPECT_EQ(linesOf(result.output),
              (Words{".1.3.6.1.2.1.5.30.1.3.2.128 = Counter32: 5",
                     ".1.3.6.1.2.1.5.30.1.3.2.141 = No Such Instance currently exists at this OID",
                     ".1.3.6.1.2.1.5.31.1 = No Such Object available on this agent at this OID",
                     ".1.3.6.1.2.1.5.29.1.99.2 = No Such Object available on this agent at this OID"}));
    stopAgent();
}

TEST_F(RequestTest, NothingIsWritableForAnybody)
{
    startAgent();
    const char *names[] = {"1.3.6.1.2.1.4.25.0", "1.3.6.1.2.1.5.29.1.2.2", "1.3.6.1.2.1.1.5.0",
                           "1.3.6.1.6.3.15.1.2.2.1.5.1"};
    for (const char *name : names) {
        for (const Words &who : {publicV2, writerV2, aliceV3}) {
            const Result result = snmp("snmpset", who, {name, "i", "1"});
            EXPECT_EQ(result.status, 2);
            EXPECT_NE(result.errors.find("Reason: notWritable"), std::string::npos) << name << result.errors;
            EXPECT_NE(result.errors.find(std::string("Failed object: .") + name), std::string::npos) << result.errors;
        }
        // The one word that version 1 has for it.
        const Result old = snmp("snmpset", publicV1, {name, "i", "1"});
        EXPECT_NE(old.errors.find("(noSuchName)"), std::string::npos) << name << old.errors;
    }
    stopAgent();
}

TEST_F(RequestTest, StrangersGetNoAnswer)
{
    startAgent();
    for (const char *program : {"snmpget", "snmpset"}) {
        Words arguments = {"1.3.6.1.2.1.4.25.0"};
        if (std::string(program) == "snmpset") {
            arguments.insert(arguments.end(), {"i", "1"});
        }
        const Result stranger = snmp(program, {"-v2c", "-c", "stranger", "-t", "1"}, arguments);
        EXPECT_NE(stranger.errors.find("Timeout"), std::string::npos) << stranger.errors;
    }
    stopAgent();
}

TEST_F(RequestTest, UsersProveWhoTheyAre)
{
    startAgent();
    EXPECT_EQ(snmp("snmpget", aliceV3, {"1.3.6.1.2.1.4.26.0"}).output, ".1.3.6.1.2.1.4.26.0 = INTEGER: 64\n");
    Words wrong = aliceV3;
    wrong.at(8) = "somebody else's";
    EXPECT_NE(snmp("snmpget", wrong, {"1.3.6.1.2.1.4.26.0"}).errors.find("Authentication failure"), std::string::npos);
    const Words open = {"-v3", "-l", "noAuthNoPriv", "-u", "alice"};
    for (const char *program : {"snmpget", "snmpset"}) {
        Words arguments = {"1.3.6.1.2.1.4.26.0"};
        if (std::string(program) == "snmpset") {
            arguments.insert(arguments.end(), {"i", "1"});
        }
        const Result refused = snmp(program, open, arguments);
        EXPECT_NE(refused.errors.find("authorizationError"), std::string::npos) << refused.errors;
    }
    stopAgent();
}

TEST_F(RequestTest, OnePacketBeginsOnce)
{
    const std::string line = "scripted platform: a packet begins";
    startAgent(everybody, {"--log-packets"});
    EXPECT_EQ(timesLogged(line), 0u);
    snmp("snmpget", publicV2, {"1.3.6.1.2.1.4.26.0", "1.3.6.1.2.1.5.29.1.2.2", "1.3.6.1.2.1.5.29.1.3.2"});
    EXPECT_EQ(timesLogged(line), 1u);
    snmp("snmpbulkget", publicV2, {"-Cr50", "1.3.6.1.2.1.4", "1.3.6.1.2.1.5"});
    EXPECT_EQ(timesLogged(line), 2u);
    snmp("snmpgetnext", publicV2, {"1.3.6.1.2.1.4", "1.3.6.1.2.1.5"});
    EXPECT_EQ(timesLogged(line), 3u);
    stopAgent();
}

class DatagramClient
{
  public:
    explicit DatagramClient(std::uint16_t port) : descriptor_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = htons(port);
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connect(descriptor_, reinterpret_cast<const sockaddr *>(&place), sizeof place);
        const timeval patience{10, 0};
        setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }
    ~DatagramClient() { close(descriptor_); }
    DatagramClient(const DatagramClient &) = delete;
    DatagramClient &operator=(const DatagramClient &) = delete;

    void send(std::span<const std::uint8_t> bytes) const
    {
        EXPECT_EQ(::send(descriptor_, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    }
    bool receives() const
    {
        char answer[2048];
        return recv(descriptor_, answer, sizeof answer, 0) > 0;
    }

    bool hasMore() const
    {
        char answer[1];
        return recv(descriptor_, answer, sizeof answer, MSG_DONTWAIT) > 0;
    }

  private:
    int descriptor_;
};

// Nothing that is read for the first of them is older than the last.
TEST_F(RequestTest, PacketsThatWaitedTogetherBeginTogether)
{
    const std::string line = "scripted platform: a packet begins";
    startAgent(everybody, {"--log-packets"});
    const DatagramClient one(port());
    const DatagramClient other(port());
    agent().signal(SIGSTOP);
    for (int i = 0; i < 2; ++i) {
        one.send(getHopLimit);
        other.send(getHopLimit);
    }
    agent().signal(SIGCONT);
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(one.receives());
        EXPECT_TRUE(other.receives());
    }
    EXPECT_EQ(timesLogged(line), 1u);
    one.send(getHopLimit);
    EXPECT_TRUE(one.receives());
    EXPECT_EQ(timesLogged(line), 2u);
    stopAgent();
}

// Neither does the first one begin for the others when it is not answered.
TEST_F(RequestTest, PacketsThatWaitedBehindOneThatIsDroppedBeginWithTheFirstThatIsNot)
{
    startAgent(everybody, {"--log-packets"});
    const DatagramClient client(port());
    agent().signal(SIGSTOP);
    client.send({getHopLimit, 7});
    client.send(getHopLimit);
    client.send(getHopLimit);
    agent().signal(SIGCONT);
    EXPECT_TRUE(client.receives());
    EXPECT_TRUE(client.receives());
    EXPECT_EQ(timesLogged("scripted platform: a packet begins"), 1u);
    stopAgent();
}

// More than are taken out at once, and none is lost or answered twice.
TEST_F(RequestTest, ABurstIsAnsweredWhole)
{
    startAgent();
    const DatagramClient client(port());
    agent().signal(SIGSTOP);
    for (int i = 0; i < 50; ++i) {
        client.send(getHopLimit);
    }
    agent().signal(SIGCONT);
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(client.receives()) << i;
    }
    EXPECT_FALSE(client.hasMore());
    stopAgent();
}

TEST_F(RequestTest, BrokenPacketsAreDropped)
{
    startAgent();
    const DatagramClient client(port());
    for (std::size_t length = 1; length < sizeof getHopLimit; ++length) {
        client.send({getHopLimit, length});
    }
    for (std::size_t place = 0; place < sizeof getHopLimit; ++place) {
        std::uint8_t broken[sizeof getHopLimit];
        std::copy_n(getHopLimit, sizeof getHopLimit, broken);
        broken[place] ^= 0xFF;
        client.send(broken);
    }
    EXPECT_EQ(snmp("snmpget", publicV2, {"1.3.6.1.2.1.4.26.0"}).output, ".1.3.6.1.2.1.4.26.0 = INTEGER: 64\n");
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
