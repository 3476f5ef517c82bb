// SPDX-License-Identifier: BSD-3-Clause
// The configuration's line `routes NUMBER`: at most so many rows of routes.
#pragma once

#include "config_line.h"

#include <ipmib/platform_hooks.h>

#include <cstdint>
#include <optional>
#include <string>

namespace ipmib::agent
{

class RouteLimit
{
  public:
    static constexpr const char *directive = "routes"; // in ipmibd.conf

    // From here on the library hands the lines to it, as it does for ServeSettings.
    RouteLimit(const char *fileType, const char *word);

    // Once, before anything is served: a platform is told before it follows routes.
    void handTo(const IpmibPlatformHooks *platform) const;

    // Reads a line without the directive. Returns what is wrong with it, or nothing.
    std::string read(const std::string &line);

  private:
    std::optional<std::uint64_t> most_;
    ConfigLine<RouteLimit> line_;
};

} // namespace ipmib::agent
