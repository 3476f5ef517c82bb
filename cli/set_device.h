// SPDX-License-Identifier: BSD-3-Clause
// Changes of a simulated device that an ipmibd serves, by way of its local socket.
#pragma once

#include "options.h"

#include <string>
#include <vector>

namespace ipmib::cli
{

// The words behind "set-device". Returns an exit status; what is refused has been complained about. Throws
// host::UsageError for words that it does not understand, std::runtime_error when the agent cannot be reached.
int setDevice(const Options &options, const std::vector<std::string> &words);

// What these words change, as lines of the socket: the context, a tab, and the change.
std::vector<std::string> changesOf(const std::vector<std::string> &words, const std::string &context);

} // namespace ipmib::cli
