// SPDX-License-Identifier: BSD-3-Clause
// What all programs with a platform and a module have in common: command line, exit status, standard descriptors.
#pragma once

#include "plugin.h"

#include <getopt.h>

#include <stdexcept>
#include <string>

namespace ipmib::host
{

// What programs exit with.
enum ExitStatus { exitSuccess = 0, exitFailure = 1, exitUsage = 2 };

// To be called first in a program: opens /dev/null on those of the descriptors 0 to 2 that are closed, so that nothing
// else gets their numbers. What is written there fails as before. Throws std::system_error.
void occupyStandardDescriptors();

// The long options by which a platform and a module are chosen, for a program's table of long options, and the first
// number that is left for those of the program.
enum { platformOption = 256, moduleOption, firstProgramOption };
inline constexpr option pluginOptions[] = {
    {"platform", required_argument, nullptr, platformOption},
    {"module", required_argument, nullptr, moduleOption},
};

// Takes what getopt_long has answered when it is none of the program's own options: those above, and any other long
// option, "--name" or "--name=value", which is handed to the platform. Throws UsageError for what is wrong; the string
// of short options begins with a colon, so that a missing argument is told apart.
void takePluginOption(int answer, char *const *argv, PluginOptions &options);

} // namespace ipmib::host
