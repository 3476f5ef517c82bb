// SPDX-License-Identifier: BSD-3-Clause
// A read-only table of an agent's own, served in the agent library, whose answers come from a platform's hooks.
#pragma once

#include "net_snmp.h"

#include "host/resolver.h"

#include <ipmib/platform_hooks.h>

#include <span>

namespace ipmib::agent
{

class RegisteredTable
{
  public:
    // The root is the table's entry. The platform must outlive the table. Throws std::runtime_error when the library
    // refuses the registration.
    RegisteredTable(const IpmibPlatformHooks &platform, const char *name, host::OidView root);
    virtual ~RegisteredTable();
    RegisteredTable(const RegisteredTable &) = delete;
    RegisteredTable &operator=(const RegisteredTable &) = delete;

  protected:
    // What is asked for is the part of the identifier behind the root. Left without an answer, the library asks the
    // registration that follows; it repeats GETBULK's questions itself.
    virtual void get(std::span<const oid> asked, netsnmp_request_info &request) const = 0;
    virtual void getNext(std::span<const oid> asked, netsnmp_request_info &request) const = 0;

    host::OidView root() const { return root_; }

  private:
    static int handle(netsnmp_mib_handler *handler, netsnmp_handler_registration *, netsnmp_agent_request_info *info,
                      netsnmp_request_info *requests);
    std::span<const oid> behindRoot(const netsnmp_variable_list &variable) const;

    const IpmibPlatformHooks &platform_;
    host::OidView root_;
    netsnmp_handler_registration *registration_;
};

} // namespace ipmib::agent
