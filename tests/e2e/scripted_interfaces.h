// SPDX-License-Identifier: BSD-3-Clause
// The interfaces of the scripted platform, as the interface tables show them.
#pragma once

#include <ipmib/platform_interfaces.h>

namespace ipmib::e2e
{

extern const IpmibInterfaceHooks scriptedInterfaces;

} // namespace ipmib::e2e
