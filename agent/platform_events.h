// SPDX-License-Identifier: BSD-3-Clause
// The platform's descriptor in the library's wait.
#pragma once

#include <ipmib/platform_hooks.h>

namespace ipmib::agent
{

class PlatformEvents
{
  public:
    // Null stands for a platform that needs no driving.
    explicit PlatformEvents(const IpmibPlatformHooks *platform);
    ~PlatformEvents();
    PlatformEvents(const PlatformEvents &) = delete;
    PlatformEvents &operator=(const PlatformEvents &) = delete;

  private:
    int descriptor_ = -1;
};

} // namespace ipmib::agent
