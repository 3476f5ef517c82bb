// SPDX-License-Identifier: BSD-3-Clause
// Serves a catalogue's tables inside an agent that is built on the net-snmp library, whichever agent that is.
#pragma once

#include "context_server.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ipmib::agent
{

class Frontend : public ContextServer
{
  public:
    // Has the library wait for the platform's descriptor, too. The catalogue, whose tables are handed to it, and the
    // instances must outlive the front end.
    Frontend(host::Catalogue &catalogue, host::Instances &instances);
    ~Frontend() override;
    Frontend(const Frontend &) = delete;
    Frontend &operator=(const Frontend &) = delete;

    // Called after each piece of the platform's own work.
    void whenPlatformHasWorked(std::function<void()> done);

    // Serves what lies below this place of the table. Returns the library's answer, MIB_REGISTERED_OK and others.
    // Throws std::runtime_error when the table's source cannot begin.
    int add(const host::ServedTable &table, host::OidView root, int priority);
    void remove(host::OidView root, int priority);

    void serve(const std::vector<const host::ServedTable *> &tables, const Context &context) override;
    void leave(const std::string &context) override;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace ipmib::agent
