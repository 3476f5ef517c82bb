// SPDX-License-Identifier: BSD-3-Clause
// ipmibd as a sub-agent of the agent that already runs.
#pragma once

#include "options.h"

namespace ipmib::agent
{

// Serves until it is told to stop, whether or not there is a master. Throws std::exception with one line for the user
// when it cannot begin.
void serveAsSubagent(const Options &options);

} // namespace ipmib::agent
