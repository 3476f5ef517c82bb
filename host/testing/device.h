// SPDX-License-Identifier: BSD-3-Clause
// Random devices behind the scripted platform, and the rows that the module has to show of them.
#pragma once

#include "identifiers.h"

#include <ipmib/mib_tree.h>

namespace ipmib::host::testing
{

// The names of all columns and scalars that are served, in order.
using Columns = std::vector<Identifier>;
Columns servedColumns(const MibTreeNode &root);

// Puts a device with some interfaces, addresses, prefixes, neighbours and routers in force.
void makeRandomDevice(Random &random);

// All instances that this device has.
Instances instancesOfDevice(const Columns &columns);

// The tables whose get finds rows under more identifiers than a walk shows: it does not look at every part of the
// index.
bool isLenient(OidView name);

} // namespace ipmib::host::testing
