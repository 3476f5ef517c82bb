// SPDX-License-Identifier: BSD-3-Clause
// The IPv4 rows of the scripted platform.
#pragma once

#include <ipmib/platform_ipv4.h>

namespace ipmib::e2e
{

extern const IpmibIpv4Hooks scriptedIpv4;

} // namespace ipmib::e2e
