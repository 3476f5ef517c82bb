// SPDX-License-Identifier: BSD-3-Clause
// Serves a catalogue's tables inside an agent that is built on the net-snmp library, whichever agent that is.
#pragma once

#include "host/catalogue.h"

#include <memory>
#include <vector>

namespace ipmib::agent
{

class Frontend
{
  public:
    // Has the library wait for the platform's descriptor, too. The catalogue, whose tables are handed to it, must
    // outlive the front end.
    explicit Frontend(host::Catalogue &catalogue);
    ~Frontend();
    Frontend(const Frontend &) = delete;
    Frontend &operator=(const Frontend &) = delete;

    // Serves what lies below this place of the table. Returns the library's answer, MIB_REGISTERED_OK and others.
    // Throws std::runtime_error when the table's source cannot begin.
    int add(const host::ServedTable &table, host::OidView root, int priority);
    void remove(host::OidView root, int priority);

    // Serves whole tables, these and no others. Throws std::runtime_error when the library refuses one.
    void serve(const std::vector<const host::ServedTable *> &tables);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace ipmib::agent
