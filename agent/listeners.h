// SPDX-License-Identifier: BSD-3-Clause
// The addresses on which SNMP packets are received.
#pragma once

#include "net_snmp.h"

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
    ~Listeners();
    Listeners(const Listeners &) = delete;
    Listeners &operator=(const Listeners &) = delete;

  private:
    void open(const std::string &address);
    void close();

    std::vector<netsnmp_session *> sessions_;
};

} // namespace ipmib::agent
