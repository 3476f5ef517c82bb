// SPDX-License-Identifier: BSD-3-Clause
// Looks up a master's name while the event loop goes on.
#pragma once

#include "agent/agentx/master_address.h"

#include <sys/types.h>

#include <functional>
#include <string>

namespace ipmib::agent::agentx
{

// The C library's resolver waits for servers that do not answer, and cannot be told to stop; a process can.
class NameLookup
{
  public:
    // Exactly one of them is called, in the event loop, unless the lookup is cancelled.
    struct Listener {
        std::function<void(const Place &)> found;
        std::function<void(const std::string &reason)> failed;
    };

    explicit NameLookup(Listener listener);
    ~NameLookup();
    NameLookup(const NameLookup &) = delete;
    NameLookup &operator=(const NameLookup &) = delete;

    // Forgets a lookup that is under way. Throws std::system_error.
    void begin(const MasterAddress &address);
    void cancel();

  private:
    void take();

    Listener listener_;
    pid_t process_ = -1;
    int answer_ = -1;
};

} // namespace ipmib::agent::agentx
