// SPDX-License-Identifier: BSD-3-Clause
// A sub-agent's session and a master that a test plays, in one thread: what one sends, the other has after `turn`.
#pragma once

#include "agent/agentx/session.h"

#include "host/resolver.h"
#include "host/testing/sorted_table.h"
#include "host/testing/test_module.h"

#include <optional>
#include <span>
#include <vector>

namespace ipmib::agent::agentx
{

// One table, 1.20, with the columns 8 and 9 and the rows 5 and 7. Throws std::runtime_error when the machine refuses.
class SessionBed
{
  public:
    SessionBed();
    ~SessionBed();
    SessionBed(const SessionBed &) = delete;
    SessionBed &operator=(const SessionBed &) = delete;

    // The session connects anew; its first message is the one to read next.
    void connect();
    // Connects, and grants everything that it asks for, under this number.
    void serve(long sessionId);
    // From the master.
    void send(std::span<const std::uint8_t> octets);
    void send(netsnmp_pdu &message);
    // Everything that the session has to do now, alarms aside.
    void turn();
    // The next message to the master; null when there is none.
    Message receive();
    // Whether the session has closed the connection.
    bool isClosed() const { return closed_; }

    Session &session() { return session_; }
    const host::ServedTable &servedTable() const { return catalogue_.tables().front(); }
    std::vector<host::testing::Identifier> instances() const { return table_.instances(); }

  private:
    void read();

    host::testing::TestTree tree_;
    host::testing::SortedTable table_;
    host::testing::TestModule module_;
    host::Resolver resolver_;
    host::Catalogue catalogue_;
    host::SysUpTime upTime_;
    host::Instances instances_{catalogue_, upTime_};
    ServeSettings settings_;
    std::string directory_;
    int listener_;
    int master_ = -1;
    bool closed_ = true;
    Codec codec_;
    std::vector<std::uint8_t> unread_;
    Session session_;
};

} // namespace ipmib::agent::agentx
