// SPDX-License-Identifier: BSD-3-Clause
// What a scenario has to say beside its model of a device, so that a walk of it is the one that was recorded.
#pragma once

#include "object_tree.h"
#include "walks/recording.h"

#include <string>
#include <vector>

namespace ipmib::cli
{

struct Differences {
    Recording unknown;   // objects of which no table knows
    Recording differing; // those which a table does not have, or with another value
    // Identifiers of tables, columns and instances that the walk does not have.
    std::vector<std::vector<std::uint32_t>> lacking;
    std::size_t lackingInstances = 0;
};

Differences differencesOf(const Recording &wanted, const Recording &have, const ObjectTree &tree);

} // namespace ipmib::cli
