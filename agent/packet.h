// SPDX-License-Identifier: BSD-3-Clause
// When a packet of requests begins, for whoever answers part of it.
#pragma once

#include "net_snmp.h"

#include <ipmib/platform_hooks.h>

namespace ipmib::agent
{

// Tells the platform, which may be null, that a packet begins, unless it has been told already of this one.
void beginPacketOnce(const IpmibPlatformHooks *platform, netsnmp_agent_request_info *info);

} // namespace ipmib::agent
