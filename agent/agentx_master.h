// SPDX-License-Identifier: BSD-3-Clause
// Other programs' tables beside ours: the library's AgentX master, on sockets at which no sub-agent is waited for.
#pragma once

#include "library_sessions.h"

#include <string>
#include <vector>

namespace ipmib::agent
{

class AgentxMaster
{
  public:
    // Listens at each of these, written as for snmpd's agentXSocket, with the permissions that the configuration says.
    // Throws std::runtime_error that names the address and the reason, also when another master is there.
    explicit AgentxMaster(const std::vector<std::string> &addresses);

    // Where the configuration wants a master; nowhere unless it says "master agentx".
    static std::vector<std::string> addressesOfConfiguration();
    // To be called before the configuration is read again, since the library keeps what it has read.
    static void forgetConfiguration();

  private:
    void open(const std::string &address);

    LibrarySessions sessions_;
};

} // namespace ipmib::agent
