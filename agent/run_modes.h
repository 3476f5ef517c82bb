// SPDX-License-Identifier: BSD-3-Clause
// What ipmibd can be told to do. Each throws std::exception with one line for the user when it cannot begin.
#pragma once

#include "options.h"

namespace ipmib::agent
{

// Serves until it is told to stop. Throws std::exception with one line for the user when it cannot begin.
void serveStandalone(const Options &options);

// Serves until it is told to stop, whether or not there is a master. Throws std::exception with one line for the user
// when it cannot begin.
void serveAsSubagent(const Options &options);

// Prints each table with its owner. False when something is wrong, which the log says. Throws std::exception with one
// line for the user when it does not even come to that.
bool check(const Options &options);

} // namespace ipmib::agent
