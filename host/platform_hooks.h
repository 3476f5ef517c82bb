// SPDX-License-Identifier: BSD-3-Clause
// The hooks of a platform of any age: what it has is used, what it does not know of is null.
#pragma once

#include <ipmib/platform_hooks.h>

namespace ipmib::host
{

class PlatformHooks
{
  public:
    // The record that a platform exports. Throws PluginError when its size says that it is none.
    explicit PlatformHooks(const IpmibPlatformHooks &exported);
    PlatformHooks(const PlatformHooks &) = delete;
    PlatformHooks &operator=(const PlatformHooks &) = delete;

    const IpmibPlatformHooks &get() const { return hooks_; }

  private:
    IpmibPlatformHooks hooks_{};
    IpmibIpHooks ip_{};
    IpmibRouteHooks routes_{};
    IpmibConnectionHooks connections_{};
    IpmibInstanceHooks instances_{};
    IpmibRecordedHooks recorded_{};
    IpmibRehearsalHooks rehearsal_{};
};

} // namespace ipmib::host
