// SPDX-License-Identifier: BSD-3-Clause
// What shells complete. Their scripts ask the program itself, with the words of the command line, so that they know
// every command, view, option, column, object and interface that it knows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ipmib::cli
{

// The word by which the scripts ask: behind it stand the command line's words, the last of which is being written.
inline constexpr std::string_view completionQuestion = "__complete";

// What shells the program has a script for.
std::vector<std::string> shellNames();
// Throws host::UsageError for another one.
const char *completionScript(const std::string &shell);

// Writes one candidate in a line, with a tab and what it is behind it. `pluginDirectory` is where plug-ins lie.
void writeCandidates(std::vector<std::string> words, const std::string &pluginDirectory);

} // namespace ipmib::cli
