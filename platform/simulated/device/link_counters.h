// SPDX-License-Identifier: BSD-3-Clause
// Counters of a link, whatever runs over it, by the names of the interface tables' columns.
#pragma once

#include "device/counters.h"

#include <ipmib/platform_interfaces.h>

namespace ipmib::simulated
{

template <>
struct CounterField<IpmibInterfaceTraffic> {
    const char *name;
    std::uint64_t &(*in)(IpmibInterfaceTraffic &record);
};

template <>
std::span<const CounterField<IpmibInterfaceTraffic>> counterFields();

} // namespace ipmib::simulated
