// SPDX-License-Identifier: BSD-3-Clause
// The command line of ipmibd: snmpd's flags where both have the same thing to say.
#pragma once

#include "host/command_line.h"

#include <string>
#include <string_view>
#include <vector>

namespace ipmib::agent
{

struct Options {
    enum class Action { run, check, help, version };

    Action action = Action::run;
    bool foreground = false;
    bool loggingChosen = false;        // -L was given, and has taken effect
    bool defaultConfiguration = true;  // false: -C
    std::string configuration;         // -c, as it was given
    std::string pidFile;               // -p
    std::string master;                // -x
    std::string ask;                   // --ask
    std::string deviceSocket;          // --device-socket
    std::vector<std::string> listenOn; // the arguments
    host::PluginOptions plugin;
};

// Throws host::UsageError. Log destinations (-L) take effect while they are read, since the library itself parses them.
Options parseOptions(int argc, char *const *argv);

// The files of a comma list, as -c takes it.
std::vector<std::string> splitList(std::string_view list);

extern const char *const helpText;

} // namespace ipmib::agent
