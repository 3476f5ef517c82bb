// SPDX-License-Identifier: BSD-3-Clause
// The fixture of tests beside an agent that already runs: Debian's snmpd, with nothing of this machine's configuration,
// and ipmibd as its sub-agent or inside it.
#pragma once

#include "e2e/agent_under_test.h"
#include "e2e/rows.h"

#include <functional>

namespace ipmib::e2e
{

// True as soon as the condition holds; false when it does not come to hold.
bool eventually(const std::function<bool()> &condition);

class MasterTest : public AgentTest
{
  protected:
    void SetUp() override;
    void TearDown() override;

    // Starts snmpd at address(), and waits until it answers.
    void startMaster(const std::string &configuration = "", const std::string &withoutModules = "");
    // Ends it with SIGKILL.
    void killMaster();
    // Lets it read its configuration, with these lines, again.
    void reconfigureMaster(const std::string &configuration);
    Command &master() { return *master_; }
    std::string masterLog() const;

    // Starts ipmibd beside it on this machine's own data, or on a platform.
    void startSubagent(const std::string &configuration = "", const Words &options = {});
    Words subagentWords(const Words &options) const;
    // Writes its configuration anew and has it read.
    void reconfigureSubagent(const std::string &configuration);
    // Ends it; everything must have gone well.
    void stopSubagent();

    // The rows that the master gives away, by GETBULK, in order.
    Words rows(const std::string &root = "1.3.6.1.2.1") const;
    bool isThere(const std::string &instance) const;
    // Those that are not the same at any two moments anyway: sockets, processes, and what the master counts of itself.
    static Words steady(Words rows);

    std::string socketPath() const { return path("master"); }

  private:
    std::string masterConfiguration(const std::string &more) const;

    std::unique_ptr<Command> master_;
};

// What `auto` promises: every instance is still there, or another one that says the same, and what the master lacks is
// new.
void expectAdditionsAlone(const Words &before, const Words &after);

inline constexpr const char *interfaceRow = "1.3.6.1.2.1.4.30.1.5.1"; // of the loopback, which the master has not

} // namespace ipmib::e2e
