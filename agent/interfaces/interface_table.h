// SPDX-License-Identifier: BSD-3-Clause
// A table with one row for each interface, served in the agent library.
#pragma once

#include "interfaces/columns.h"

#include <ipmib/platform_hooks.h>

namespace ipmib::agent
{

class InterfaceTable
{
  public:
    // The root is the table's entry. The platform, which has interface hooks, must outlive the table. Throws
    // std::runtime_error when the library refuses the registration.
    InterfaceTable(const IpmibPlatformHooks &platform, const char *name, host::OidView root,
                   std::span<const InterfaceColumn> columns);
    ~InterfaceTable();
    InterfaceTable(const InterfaceTable &) = delete;
    InterfaceTable &operator=(const InterfaceTable &) = delete;

  private:
    static int handle(netsnmp_mib_handler *handler, netsnmp_handler_registration *, netsnmp_agent_request_info *info,
                      netsnmp_request_info *requests);
    void get(netsnmp_request_info &request) const;
    void getNext(netsnmp_request_info &request) const;
    // The part of an identifier behind the root.
    std::span<const oid> withinTable(const netsnmp_variable_list &variable) const;
    void answer(const InterfaceColumn &column, InterfaceRow &row, netsnmp_request_info &request) const;

    const IpmibPlatformHooks &platform_;
    const IpmibInterfaceHooks &interfaces_;
    host::OidView root_;
    std::span<const InterfaceColumn> columns_;
    netsnmp_handler_registration *registration_;
};

} // namespace ipmib::agent
