// SPDX-License-Identifier: BSD-3-Clause
// The interfaces of the scripted platform, as the interface tables show them.
#pragma once

#include <ipmib/platform_interfaces.h>

#include <cstdint>

namespace ipmib::e2e
{

extern const IpmibInterfaceHooks scriptedInterfaces;

// From now on the counters of this one cannot be read.
void letVanish(std::uint32_t ifIndex);

} // namespace ipmib::e2e
