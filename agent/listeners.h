// SPDX-License-Identifier: BSD-3-Clause
// The addresses on which SNMP packets are received.
#pragma once

#include "library_sessions.h"

#include <string>
#include <vector>

namespace ipmib::agent
{

class Listeners
{
  public:
    // Listens on these, written as for snmpd; with none, on the loopback addresses as far as the machine has them.
    // Throws std::runtime_error that names the address and the reason.
    explicit Listeners(const std::vector<std::string> &addresses);

    // At this transport, too, which is handed over. Throws std::runtime_error.
    void add(netsnmp_transport *transport, const std::string &address);

  private:
    void open(const std::string &address);

    LibrarySessions sessions_;
};

} // namespace ipmib::agent
