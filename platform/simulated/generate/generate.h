// SPDX-License-Identifier: BSD-3-Clause
// Makes many interfaces, addresses, prefixes, neighbours and routers from a few numbers.
#pragma once

#include "device/device.h"
#include "scenario/value.h"

namespace ipmib::simulated
{

// {"interfaces": {"count": 64, "name": "xe"}, "neighbours": 1000000}: the member "generate" of a scenario. The same
// seed makes the same device.
void generate(const Value &value, std::uint32_t seed, Device &device);

} // namespace ipmib::simulated
