// SPDX-License-Identifier: BSD-3-Clause
// What addresses in their list and link-local ones have in common.
#pragma once

#include "probe.h"

#include <vector>

namespace ipmib::portcheck
{

// "2001:db8::1/64"
std::string addressWithLength(const FullAddressRecord &record);

// Judges what holds for both kinds.
void lookAtAddress(Probe &probe, const std::string &call, const FullAddressRecord &record);

// Of each of the interfaces; how many have one.
std::size_t checkLinkLocalAddresses(Probe &probe, const std::vector<std::uint32_t> &interfaces);

} // namespace ipmib::portcheck
