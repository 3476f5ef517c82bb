// SPDX-License-Identifier: BSD-3-Clause
// Readers of a scenario's parts: of the file, the device, an interface, and what is listed on it. All throw
// ScenarioError.
#pragma once

#include "device/device.h"
#include "scenario/fleet.h"
#include "scenario/value.h"

#include <string>

namespace ipmib::simulated
{

// Throws ScenarioError: "cannot read it: No such file or directory", "line 3, column 5: ...". A key that stands twice
// in one object is an error.
Json readJsonFile(const std::string &path);
// The same of a text.
Json readJson(std::string_view text);

struct Scenario {
    Device device; // of the file itself
    Fleet fleet;   // those beside it
};

// Throws ScenarioError, with the name of the file in front.
Scenario readScenario(const std::string &path);

// A scenario of one device. What it generates depends on its own seed plus this one. Throws ScenarioError.
Device readDevice(const Json &scenario, std::uint32_t seed);

// Adds it to the device, with all that is listed on it.
void readInterface(const Value &value, Device &device);

// Of an interface: "up", "down" or "gone". False when none of them is said.
bool readOutages(Object &object, Interface &interface);

// The member "type": a word, or the number of a type code.
std::uint8_t readInterfaceType(Object &object);

// "addresses", "prefixes", "neighbours" and "routers" of the interface.
void readRows(Object &object, Interface &interface, Device &device);

// An address that is complete, with its prefix on the interface. False when the device has it already.
bool addAddress(const Address &address, Device &device);

// Of an interface: whether IPv4 runs there, "ipv4Addresses", "ipv4Prefixes", "ipv4Neighbours", "ipv4Routers" and
// "ipv4RetransmitTime".
void readIpv4Of(Object &object, Interface &interface, Device &device);

// Of the device: "forwarding", "defaultTtl", "reasmTimeout".
void readIpv4Settings(const Value &value, IpmibIpSettings &settings);

// Of the device: "objects" and "lacking".
void readRecorded(Object &object, Recorded &recorded);

// A list of routes; the device has all its interfaces.
void readRoutes(const Value &value, Device &device);

// "tcp", "listeners" and "udp"; the device has all its interfaces.
void readConnections(const Value &value, Device &device);

} // namespace ipmib::simulated
