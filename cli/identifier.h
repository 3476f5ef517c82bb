// SPDX-License-Identifier: BSD-3-Clause
// Object identifiers as people write them: ipNetToPhysicalState[lan0][ipv6][2001:db8::1].
#pragma once

#include "local_device.h"

#include "host/oid.h"

#include <string>

namespace ipmib::cli
{

// Reads numbers (1.3.6.1, .1.3.6.1), a name with numbers behind it (ip.35), or a name with parts of an index in
// brackets. Throws host::UsageError.
host::Oid parseIdentifier(LocalDevice &device, const std::string &text);

std::string identifierText(const LocalDevice &device, host::OidView oid);
// "1.3.6.1"
std::string numbersText(host::OidView oid);

// Whether the object holds the number of an interface.
bool isInterfaceNumber(const MibTreeNode &node);

} // namespace ipmib::cli
