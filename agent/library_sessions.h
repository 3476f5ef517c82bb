// SPDX-License-Identifier: BSD-3-Clause
// Sessions of the library at which this process listens, for as long as this lives.
#pragma once

#include "net_snmp.h"

#include <vector>

namespace ipmib::agent
{

class LibrarySessions
{
  public:
    LibrarySessions() = default;
    ~LibrarySessions()
    {
        for (netsnmp_session *session : sessions_) {
            snmp_close(session);
        }
    }
    LibrarySessions(const LibrarySessions &) = delete;
    LibrarySessions &operator=(const LibrarySessions &) = delete;

    // As snmp_add_full() has returned it.
    void add(netsnmp_session *session) { sessions_.push_back(session); }

  private:
    std::vector<netsnmp_session *> sessions_;
};

} // namespace ipmib::agent
