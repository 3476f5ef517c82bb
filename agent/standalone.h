// SPDX-License-Identifier: BSD-3-Clause
// ipmibd as an SNMP agent of its own.
#pragma once

#include "options.h"

namespace ipmib::agent
{

// Serves until it is told to stop. Throws std::exception with one line for the user when it cannot begin.
void serveStandalone(const Options &options);

} // namespace ipmib::agent
