// SPDX-License-Identifier: BSD-3-Clause
// Checks of the simulated platform with a mistake in it.
#pragma once

#include "portcheck.h"

#include <cstdlib>
#include <string>

namespace ipmib::portcheck
{

// A platform by its path, as it is.
inline Report checkRight(const std::string &platform, bool clockStands = false)
{
    Options options;
    options.plugin.platform = platform;
    options.plugin.module = IPMIB_MODULE;
    options.clockTime = {};
    options.patience = std::chrono::milliseconds(1500);
    if (clockStands) {
        options.plugin.platformOptions = {{"at", "0"}};
    }
    return checkPlatform(options);
}

// The simulated one with the mistake (see faulty_platform.cpp), "" for none. Its clock stands.
inline Report checkWith(const std::string &mistake)
{
    setenv("MISTAKE", mistake.c_str(), 1);
    return checkRight(std::string(IPMIB_FAULTY_PLATFORM) + ":" + IPMIB_DEVICE, true);
}

} // namespace ipmib::portcheck
