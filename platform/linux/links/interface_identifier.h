// SPDX-License-Identifier: BSD-3-Clause
// The interface identifier of a link: the lower 64 bits of the addresses that it forms by itself.
#pragma once

#include "links/ip6_link.h"
#include "links/link_table.h"

#include <array>

namespace ipmib::platform
{

using InterfaceIdentifier = std::array<std::uint8_t, 8>;

// From the token that the administrator set, else from the link-local address (16 bytes, null when there is none), else
// from the link-layer address. All zero for a link that has none of them yet.
InterfaceIdentifier interfaceIdentifier(const Link &link, const Ip6Link &ip6, const std::uint8_t *linkLocal);

} // namespace ipmib::platform
