// SPDX-License-Identifier: BSD-3-Clause
// The type code under which an interface can be selected.
#pragma once

#include "links/link_table.h"

namespace ipmib::platform
{

// One of the 36 codes of the standard selection, so that every interface can be selected.
std::uint8_t typeCode(const Link &link);

} // namespace ipmib::platform
