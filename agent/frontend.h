// SPDX-License-Identifier: BSD-3-Clause
// Serves a catalogue's tables inside an agent that is built on the net-snmp library, whichever agent that is.
#pragma once

#include "host/catalogue.h"
#include "host/instances.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ipmib::agent
{

// Under which name managers ask for which instance of the platform.
struct Context {
    std::string name; // empty for the one that everybody asks who names none
    std::size_t instance = host::Instances::first;
};

class Frontend
{
  public:
    // Has the library wait for the platform's descriptor, too. The catalogue, whose tables are handed to it, and the
    // instances must outlive the front end.
    Frontend(host::Catalogue &catalogue, host::Instances &instances);
    ~Frontend();
    Frontend(const Frontend &) = delete;
    Frontend &operator=(const Frontend &) = delete;

    // Called after each piece of the platform's own work.
    void whenPlatformHasWorked(std::function<void()> done);

    // Serves what lies below this place of the table. Returns the library's answer, MIB_REGISTERED_OK and others.
    // Throws std::runtime_error when the table's source cannot begin.
    int add(const host::ServedTable &table, host::OidView root, int priority);
    void remove(host::OidView root, int priority);

    // Serves whole tables in a context, these and no others. Throws std::runtime_error when the library refuses one.
    void serve(const std::vector<const host::ServedTable *> &tables, const Context &context = {});
    // Serves nothing in that context any more, of which there is one.
    void leave(const std::string &context);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace ipmib::agent
