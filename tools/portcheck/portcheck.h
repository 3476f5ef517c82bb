// SPDX-License-Identifier: BSD-3-Clause
// Checks whether a platform keeps the promises that the module's tables rest on.
#pragma once

#include "findings.h"

#include "host/plugin.h"

#include <chrono>

namespace ipmib::portcheck
{

struct Options {
    host::PluginOptions plugin;
    std::chrono::milliseconds patience{10000}; // with one call
    std::chrono::milliseconds clockTime{1100}; // the platform's clock is watched so long; 0 to leave it
};

// Loads the platform and the module in a process of their own, which may hang or die. Throws host::PluginError when
// the platform's library cannot be opened at all.
Report checkPlatform(const Options &options);

} // namespace ipmib::portcheck
