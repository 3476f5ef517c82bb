// SPDX-License-Identifier: BSD-3-Clause
// Where a master is, as people write it.

#include "agent/agentx/master_address.h"

#include "host/command_line.h"

#include <gtest/gtest.h>

#include <sys/un.h>

namespace ipmib::agent::agentx
{

namespace
{

std::string complaintAbout(const std::string &text)
{
    try {
        parseAddress(text);
    } catch (const host::UsageError &error) {
        return error.what();
    }
    return "";
}

TEST(AgentxAddress, Paths)
{
    EXPECT_EQ(parseAddress("/var/agentx/master").path, "/var/agentx/master");
    EXPECT_EQ(parseAddress("unix:/var/agentx/master").path, "/var/agentx/master");
    EXPECT_EQ(parseAddress("unix:here").path, "here");
    EXPECT_TRUE(parseAddress("/x").isLocal());
}

TEST(AgentxAddress, HostsAndPorts)
{
    const MasterAddress plain = parseAddress("tcp:localhost:7050");
    EXPECT_FALSE(plain.isLocal());
    EXPECT_EQ(plain.family, AF_INET);
    EXPECT_EQ(plain.host, "localhost");
    EXPECT_EQ(plain.port, "7050");
    EXPECT_EQ(parseAddress("tcp:192.0.2.1").port, "705");
    const MasterAddress six = parseAddress("tcp6:[2001:db8::1]:7050");
    EXPECT_EQ(six.family, AF_INET6);
    EXPECT_EQ(six.host, "2001:db8::1");
    EXPECT_EQ(six.port, "7050");
    EXPECT_EQ(parseAddress("tcp6:[::1]").port, "705");
}

TEST(AgentxAddress, WhatIsWrongIsNamed)
{
    const std::string forms = "an AgentX master is at a path, unix:PATH, tcp:HOST:PORT or tcp6:[ADDRESS]:PORT";
    EXPECT_EQ(complaintAbout("master"), "-x master: " + forms);
    EXPECT_EQ(complaintAbout("udp:127.0.0.1:705"), "-x udp:127.0.0.1:705: " + forms);
    EXPECT_EQ(complaintAbout("unix:"), "-x unix:: the path is missing");
    EXPECT_EQ(complaintAbout("tcp::705"), "-x tcp::705: the host is missing");
    for (const std::string port : {"", "x", "0", "65536", "1000000000000", "70 5"}) {
        EXPECT_EQ(complaintAbout("tcp:host:" + port),
                  "-x tcp:host:" + port + ": the port must be a number from 1 to 65535");
    }
    const std::string longest = "/" + std::string(sizeof(sockaddr_un{}.sun_path) - 2, 'x');
    EXPECT_EQ(complaintAbout(longest), "");
    EXPECT_EQ(complaintAbout(longest + "x"), "-x " + longest + "x: the path is too long for a socket");
}

} // namespace

} // namespace ipmib::agent::agentx
