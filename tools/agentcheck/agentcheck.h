// SPDX-License-Identifier: BSD-3-Clause
// Checks whether an agent serves the tables of the catalogue as the standards say.
#pragma once

#include "rules/rules.h"

#include <set>

namespace ipmib::agentcheck
{

struct Options {
    Settings settings;
    unsigned packetsPerSecond = 200;
    std::set<std::string> regions; // all when it is empty
};

// Asks the agent of the command line, and writes what it finds to the report, also when it throws NoAnswer.
void checkAgent(const Options &options, const Objects &objects, Report &report);

} // namespace ipmib::agentcheck
