// SPDX-License-Identifier: BSD-3-Clause
// Reads what a scenario says of IPv4.
#pragma once

#include "device/device.h"
#include "scenario/value.h"

namespace ipmib::simulated
{

// Of an interface: whether IPv4 runs there, "ipv4Addresses", "ipv4Prefixes", "ipv4Neighbours", "ipv4Routers" and
// "ipv4RetransmitTime".
void readIpv4Of(Object &object, Interface &interface, Device &device);

// Of the device: "forwarding", "defaultTtl", "reasmTimeout".
void readIpv4Settings(const Value &value, IpmibIpSettings &settings);

} // namespace ipmib::simulated
