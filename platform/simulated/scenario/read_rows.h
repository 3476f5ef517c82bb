// SPDX-License-Identifier: BSD-3-Clause
// Reads what a scenario lists on an interface.
#pragma once

#include "device/device.h"
#include "scenario/value.h"

namespace ipmib::simulated
{

// "addresses", "prefixes", "neighbours" and "routers" of the interface.
void readRows(Object &object, Interface &interface, Device &device);

// An address that is complete, with its prefix on the interface. False when the device has it already.
bool addAddress(const Address &address, Device &device);

} // namespace ipmib::simulated
