// SPDX-License-Identifier: BSD-3-Clause
// A link as the interface tables show it.
#pragma once

#include "links/link_table.h"

#include <ipmib/platform_interfaces.h>

namespace ipmib::platform
{

// All but the speed. Texts are those of the link.
void describe(const Link &link, IpmibInterface &interface);

// The IANA number of the link's kind, beyond the codes under which interfaces can be selected.
std::uint32_t interfaceType(const Link &link);

std::uint32_t operStatus(const Link &link);

} // namespace ipmib::platform
