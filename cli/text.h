// SPDX-License-Identifier: BSD-3-Clause
// Values as people write them.
#pragma once

#include "colour.h"

#include "host/resolver.h"

#include <ipmib/mib_tree.h>

#include <cstdint>
#include <span>
#include <string>

namespace ipmib::cli
{

class LocalDevice;

// 16 bytes, or 20 with a zone: "2001:db8::1", "fe80::1%eth0".
std::string addressText(const LocalDevice &device, std::span<const std::uint8_t> octets);
Tone toneOfAddress(std::span<const std::uint8_t> octets);
// "02:00:5e:00:53:01"
std::string hexText(std::span<const std::uint8_t> octets);
// "00:12:30", "9d 23:59:55"
std::string durationText(std::uint64_t seconds);
// "30s", "1.5s", "150ms"
std::string millisecondsText(std::uint64_t milliseconds);
// Three digits of it: "0", "0.25", "948", "1.21k", "61.0M"
std::string rateText(double perSecond);
// The label of an enumeration's number, or empty.
std::string labelText(const MibSyntax &syntax, std::uint64_t number);

} // namespace ipmib::cli
