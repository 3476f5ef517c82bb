// SPDX-License-Identifier: BSD-3-Clause
// The command line of ipmibctl.
#pragma once

#include "host/command_line.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ipmib::cli
{

// Of IP, of which views show rows.
enum class Version { both, ipv4, ipv6 };

struct Options {
    enum class Action { run, help, version };

    Action action = Action::run;
    std::vector<std::string> words; // the command and its arguments
    bool json = false;
    std::optional<std::size_t> width; // places in a line, 0: no limit; else those of the terminal
    Version version = Version::both;
    unsigned intervalMs = 1'000; // of watch
    unsigned count = 0;          // of watch; 0: until it is interrupted
    host::PluginOptions plugin;
};

// Throws host::UsageError.
Options parseOptions(int argc, char *const *argv);

extern const char *const helpText;

} // namespace ipmib::cli
