// SPDX-License-Identifier: BSD-3-Clause
// Checks of the simulated platform with a mistake in it.
#pragma once

#include "portcheck.h"

#include <cstdlib>
#include <string>

namespace ipmib::portcheck
{

// With a call, before it is given up. One that hangs costs a test as much; a machine with other work may stall for a
// while.
constexpr std::chrono::milliseconds patienceWithMistakes{4000};
constexpr std::chrono::milliseconds patienceWithRightOnes{30000};

// A platform by its path, as it is.
inline Report checkRight(const std::string &platform, bool clockStands = false,
                         std::chrono::milliseconds patience = patienceWithRightOnes)
{
    Options options;
    options.plugin.platform = platform;
    options.plugin.module = IPMIB_MODULE;
    options.clockTime = {};
    options.patience = patience;
    if (clockStands) {
        options.plugin.platformOptions = {{"at", "0"}};
    }
    return checkPlatform(options);
}

// The simulated one with the mistake (see faulty_platform.cpp), "" for none. Its clock stands.
inline Report checkWith(const std::string &mistake, bool isNoticed = true)
{
    setenv("MISTAKE", mistake.c_str(), 1);
    return checkRight(std::string(IPMIB_FAULTY_PLATFORM) + ":" + IPMIB_DEVICE, true,
                      isNoticed && !mistake.empty() ? patienceWithMistakes : patienceWithRightOnes);
}

} // namespace ipmib::portcheck
