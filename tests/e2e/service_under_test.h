// SPDX-License-Identifier: BSD-3-Clause
// The fixture of tests that run ipmibd as its service does: with the default configuration, and what it keeps between
// starts.
#pragma once

#include "e2e/agent_under_test.h"
#include "e2e/objects.h"

#include <csignal>

namespace ipmib::e2e
{

inline const std::string createsAlice = R"(createUser alice SHA "alice's auth" AES "alice's priv"
)";
inline const std::string letsAliceIn = "rocommunity public 127.0.0.1\nrouser alice priv\n";

class ServiceTest : public AgentTest
{
  protected:
    // As a service: with the default configuration, which lets alice in and does not create her, and the state.
    void startService(const std::string &more = "")
    {
        writeFile("ipmibd.conf", letsAliceIn + more);
        startProgram(agentWords({"-f", "-Lo"}));
    }
    void endService()
    {
        agent().signal(SIGTERM);
        EXPECT_EQ(agent().wait(), 0) << agent().errors();
    }
    void expectAlice() const { EXPECT_EQ(snmp("snmpget", aliceV3, {hopLimit}).output, hopLimitRow); }
    std::string stateFile() const { return path("persistent/ipmibd.conf"); }
    std::string boots() const
    {
        const std::string text = contentOf(stateFile());
        const std::size_t word = text.find("engineBoots ");
        return word == std::string::npos ? "none" : text.substr(word, text.find('\n', word) - word);
    }
    void reload()
    {
        agent().signal(SIGHUP);
        EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
        EXPECT_EQ(notification(), "READY=1");
    }
};

} // namespace ipmib::e2e
