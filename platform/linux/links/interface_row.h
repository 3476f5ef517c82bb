// SPDX-License-Identifier: BSD-3-Clause
// What other tables than the module's show of a link, and the type code under which it can be selected.
#pragma once

#include "links/link_table.h"

#include <ipmib/platform_interfaces.h>

namespace ipmib::platform
{

// One of the 36 codes of the standard selection, so that every interface can be selected.
std::uint8_t typeCode(const Link &link);

// All but the speed. Texts are those of the link.
void describe(const Link &link, IpmibInterface &interface);

// The IANA number of the link's kind, beyond the codes under which interfaces can be selected.
std::uint32_t interfaceType(const Link &link);

std::uint32_t operStatus(const Link &link);

} // namespace ipmib::platform
