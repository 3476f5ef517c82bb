// SPDX-License-Identifier: BSD-3-Clause
// The commands of ipmibctl, in one table: what runs, what --help says, and what shells complete.
#pragma once

#include "local_device.h"
#include "options.h"

#include <span>
#include <string>
#include <vector>

namespace ipmib::cli
{

using Words = std::vector<std::string>;

// Each is given the words behind its own name, writes to standard output, and answers with an exit status. They throw
// host::UsageError for words that they do not understand, std::runtime_error for the rest.
int show(LocalDevice &device, const Options &options, const Words &words);
int watch(LocalDevice &device, const Options &options, const Words &words);
int get(LocalDevice &device, const Options &options, const Words &words);
int walk(LocalDevice &device, const Options &options, const Words &words);
int drawTree(LocalDevice &device, const Options &options, const Words &words);
int exportWalk(LocalDevice &device, const Options &options, const Words &words);
// These bring a device of their own, or need none.
int importWalk(const Options &options, const Words &words);
int writeCompletionScript(const Options &options, const Words &words);

// What may stand behind a command's name.
enum class Operands { views, objects, changes, shells, files, nothing };

struct Usage {
    const char *synopsis;
    const char *text; // with line feeds where --help breaks it
};

struct Command {
    const char *name;
    const char *summary;
    int (*run)(LocalDevice &, const Options &, const Words &); // null for one that is run without the device
    int (*runAlone)(const Options &, const Words &);
    Operands operands;
    std::span<const Usage> usages;
};
std::span<const Command> commands();

// The command that a word names, or begins as no other does; null when it names none. Throws host::UsageError when it
// may be several.
const Command *commandNamed(const std::string &word);
// What to say of a word that is neither a command nor a view.
std::string noSuchCommand(const std::string &word);

std::string helpText();

} // namespace ipmib::cli
