// SPDX-License-Identifier: BSD-3-Clause
// What an ipmibd with these options would serve, without serving it.
#pragma once

#include "options.h"

namespace ipmib::agent
{

// Prints each table with its owner. False when something is wrong, which the log says. Throws std::exception with one
// line for the user when it does not even come to that.
bool check(const Options &options);

} // namespace ipmib::agent
