// SPDX-License-Identifier: BSD-3-Clause
// Recorded objects in the form of snmprec files: a line for each, "IDENTIFIER|TAG|VALUE", with an x behind the tag when
// the value is in hexadecimal digits.
#pragma once

#include "support/walk/recorded_object.h"

namespace ipmib::support
{

// Throws WalkError.
RecordedObject parseSnmprec(std::string_view line);
// Octets that are not printable ASCII become hexadecimal.
std::string snmprecLine(const RecordedObject &object);

} // namespace ipmib::support
