// SPDX-License-Identifier: BSD-3-Clause
// The routes of the scripted platform, which take a while to be read.
#pragma once

#include <ipmib/platform_routes.h>

namespace ipmib::e2e
{

extern const IpmibRouteHooks scriptedRoutes;

// They have been read when somebody has asked so often whether they have.
void readRoutesAfter(unsigned long questions);

} // namespace ipmib::e2e
