// SPDX-License-Identifier: BSD-3-Clause
// The kinds of interfaces that a scenario can name.
#pragma once

#include "scenario/value.h"

namespace ipmib::simulated
{

// The member "type": a word, or the number of a type code.
std::uint8_t readInterfaceType(Object &object);

} // namespace ipmib::simulated
