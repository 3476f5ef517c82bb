// SPDX-License-Identifier: BSD-3-Clause
// The command line of ipmibctl.
#pragma once

#include "host/command_line.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ipmib::cli
{

// Of IP, of which views show rows.
enum class Version { both, ipv4, ipv6 };

enum class Colour { automatic, always, never };

struct Options {
    enum class Action { run, help, version };

    Action action = Action::run;
    std::vector<std::string> words; // the command and its arguments
    bool json = false;
    Colour colour = Colour::automatic;
    bool colourChosen = false;        // on the command line
    std::optional<std::size_t> width; // places in a line, 0: no limit; else those of the terminal
    Version version = Version::both;
    std::string sort;                 // the column that rows are sorted by; empty: they stay in the table's order
    std::vector<std::string> filters; // that all have to hold
    unsigned intervalMs = 1'000;      // of watch
    unsigned count = 0;               // of watch; 0: until it is interrupted
    std::string context;              // empty for the one without a name
    std::string socket;               // of an ipmibd whose device is changed
    host::PluginOptions plugin;
};

// Throws host::UsageError.
Options parseOptions(int argc, char *const *argv);

struct OptionText {
    const char *name; // without dashes; null for one that has a letter alone
    char letter;      // 0: none
    int argument;     // as getopt_long has it
    int code;         // what getopt_long answers
    const char *argumentName;
    const char *text; // with line feeds where --help breaks it
};
std::span<const OptionText> optionTexts();

} // namespace ipmib::cli
