// SPDX-License-Identifier: BSD-3-Clause
// The older IPv4 tables (ipAddrTable, ipNetToMediaTable) of an agent that has nobody beside it to serve them.
#pragma once

#include <ipmib/platform_hooks.h>

#include <memory>

namespace ipmib::agent
{

class Ipv4Tables
{
  public:
    // Registers them with what the platform, which must outlive them, knows; nothing when it is null or knows nothing
    // of IPv4. Throws std::runtime_error when the platform or the library refuses.
    explicit Ipv4Tables(const IpmibPlatformHooks *platform);
    ~Ipv4Tables();
    Ipv4Tables(const Ipv4Tables &) = delete;
    Ipv4Tables &operator=(const Ipv4Tables &) = delete;

  private:
    class Served;
    std::unique_ptr<Served> served_;
};

} // namespace ipmib::agent
