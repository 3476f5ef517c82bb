// SPDX-License-Identifier: BSD-3-Clause
// Reads the routes that a scenario lists or has made by the number.
#pragma once

#include "device/device.h"
#include "scenario/value.h"

namespace ipmib::simulated
{

// A list of routes; the device has all its interfaces.
void readRoutes(const Value &value, Device &device);

} // namespace ipmib::simulated
