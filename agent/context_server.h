// SPDX-License-Identifier: BSD-3-Clause
// Whoever answers for tables in contexts: an agent that is built on the net-snmp library, or a sub-agent's session.
#pragma once

#include "host/catalogue.h"
#include "host/instances.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ipmib::agent
{

// Under which name managers ask for which instance of the platform.
struct Context {
    std::string name; // empty for the one that everybody asks who names none
    std::size_t instance = host::Instances::first;
};

class ContextServer
{
  public:
    virtual ~ContextServer() = default;

    // Serves whole tables in a context, these and no others. Throws std::runtime_error when one is refused.
    virtual void serve(const std::vector<const host::ServedTable *> &tables, const Context &context) = 0;
    // Serves nothing in that context any more; nothing asks its instance after that.
    virtual void leave(const std::string &context) = 0;

  protected:
    ContextServer() = default;
    ContextServer(const ContextServer &) = default;
    ContextServer &operator=(const ContextServer &) = default;
};

} // namespace ipmib::agent
