// SPDX-License-Identifier: BSD-3-Clause
// Reads one interface of a scenario.
#pragma once

#include "device/device.h"
#include "scenario/value.h"

namespace ipmib::simulated
{

// Adds it to the device, with all that is listed on it.
void readInterface(const Value &value, Device &device);

} // namespace ipmib::simulated
