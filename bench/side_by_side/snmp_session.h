// SPDX-License-Identifier: BSD-3-Clause
// A manager that costs little: one session of the SNMP library in this process, requests sent without waiting for the
// answers to earlier ones. Version 2c, community "public". What fails is thrown as std::runtime_error.
#pragma once

#include <net-snmp/net-snmp-config.h>
// The library's headers want their configuration first.
#include <net-snmp/net-snmp-includes.h>

#include <chrono>
#include <exception>
#include <functional>
#include <string>
#include <vector>

namespace ipmib::bench
{

using Clock = std::chrono::steady_clock;
using Identifier = std::vector<oid>;

class SnmpSession
{
  public:
    using Handler = std::function<void(const netsnmp_pdu &)>;

    // The peer as for snmpget: udp:127.0.0.1:1161.
    explicit SnmpSession(const std::string &peer);
    ~SnmpSession();
    SnmpSession(const SnmpSession &) = delete;
    SnmpSession &operator=(const SnmpSession &) = delete;

    // Sends a request of these names; the handler is called from dispatch() when its answer is there, if ever. What it
    // throws comes out of dispatch().
    void send(int command, const std::vector<Identifier> &names, Handler handler, long repetitions = 0);
    // Takes answers in until then.
    void dispatch(Clock::time_point until);
    // Sends and waits for the answer, at most so long; false without one.
    bool ask(int command, const std::vector<Identifier> &names, const Handler &handler, long repetitions = 0,
             std::chrono::seconds patience = std::chrono::seconds(60));

  private:
    static int receive(int operation, netsnmp_session *, int, netsnmp_pdu *pdu, void *magic);
    bool dispatchOnce(Clock::time_point until);

    void *handle_ = nullptr;
    int descriptor_ = -1;
    std::exception_ptr failure_;
};

inline Identifier nameOf(const netsnmp_variable_list &variable)
{
    return {variable.name, variable.name + variable.name_length};
}

inline bool isException(const netsnmp_variable_list &variable)
{
    return variable.type == SNMP_NOSUCHOBJECT || variable.type == SNMP_NOSUCHINSTANCE ||
           variable.type == SNMP_ENDOFMIBVIEW;
}

inline bool isWithin(const Identifier &name, const Identifier &root)
{
    return name.size() > root.size() && std::equal(root.begin(), root.end(), name.begin());
}

// "1.3.6.1", with or without a dot in front.
Identifier parseIdentifier(const std::string &text);

} // namespace ipmib::bench
