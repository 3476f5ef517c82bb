// SPDX-License-Identifier: BSD-3-Clause
// Rights that the start may need, and nothing after it.
#pragma once

namespace ipmib::agent
{

// Gives up the rights to enter namespaces and to look into other processes, for good: before anybody is answered. What
// needs them later is done by a program that the platform has started (see docs/contexts.md).
void letGoOfStartRights();

} // namespace ipmib::agent
