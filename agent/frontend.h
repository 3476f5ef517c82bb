// SPDX-License-Identifier: BSD-3-Clause
// Serves a plug-in's objects inside an agent that is built on the net-snmp library, whichever agent that is.
#pragma once

#include "served_table.h"

#include "host/plugin.h"

#include <memory>
#include <vector>

namespace ipmib::agent
{

class Frontend
{
  public:
    // Hangs the platform's descriptor in the library's wait. The plug-in must outlive the front end, and so must the
    // tables that are handed to it.
    explicit Frontend(host::Plugin &plugin);
    ~Frontend();
    Frontend(const Frontend &) = delete;
    Frontend &operator=(const Frontend &) = delete;

    // Serves what lies below this place of the table. Returns the library's answer, MIB_REGISTERED_OK and others.
    int add(const ServedTable &table, host::OidView root, int priority);
    void remove(host::OidView root, int priority);

    // Serves whole tables, these and no others. Throws std::runtime_error when the library refuses one.
    void serve(const std::vector<const ServedTable *> &tables);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace ipmib::agent
