// SPDX-License-Identifier: BSD-3-Clause
// The scenario that says of a device what its walk says, as far as a scenario can.
#pragma once

#include "object_tree.h"
#include "walks/walk_table.h"

#include <nlohmann/json.hpp>

#include <map>

namespace ipmib::cli
{

using OrderedJson = nlohmann::ordered_json;

// What the walk has of each interface, as a member of "interfaces"; by ifIndex.
using ModelledInterfaces = std::map<std::uint32_t, OrderedJson>;

OrderedJson modelOf(const Recording &walk, const ObjectTree &tree);

// The interfaces themselves: names, types, speeds, states.
ModelledInterfaces modelledInterfaces(const Recording &walk);
// What runs over them: addresses and neighbours, prefixes and routers. Adds to the interfaces.
void addAddresses(const Recording &walk, ModelledInterfaces &interfaces);
void addNeighbours(const Recording &walk, ModelledInterfaces &interfaces);
void addPrefixes(const Recording &walk, ModelledInterfaces &interfaces);
void addRouters(const Recording &walk, ModelledInterfaces &interfaces);
// Counters of the interfaces, and of the system as "system" has them.
void addInterfaceCounters(const Recording &walk, const ObjectTree &tree, ModelledInterfaces &interfaces);
void addSystemCounters(const Recording &walk, const ObjectTree &tree, OrderedJson &system);

} // namespace ipmib::cli
