// SPDX-License-Identifier: BSD-3-Clause
// The interface tables (IF-MIB) of an agent that has nobody beside it to serve them.
#pragma once

#include <ipmib/platform_hooks.h>

#include <memory>

namespace ipmib::agent
{

class Interfaces
{
  public:
    // Registers ifNumber, ifTable, ifXTable and ifTableLastChange with what the platform, which must outlive them,
    // knows; nothing when it is null or knows nothing of its interfaces. Throws std::runtime_error when the library
    // refuses.
    explicit Interfaces(const IpmibPlatformHooks *platform);
    ~Interfaces();
    Interfaces(const Interfaces &) = delete;
    Interfaces &operator=(const Interfaces &) = delete;

  private:
    class Served;
    std::unique_ptr<Served> served_;
};

} // namespace ipmib::agent
