// SPDX-License-Identifier: BSD-3-Clause
// The main link-local address of a link.
#pragma once

#include "core/rtnetlink.h"

#include <array>
#include <optional>

namespace ipmib::platform
{

using Ip6Address = std::array<std::uint8_t, 16>;

// Whether an address has the scope of one link: fe80::/10, and ::1, the link-local address of the loopback interface.
bool isLinkLocal(const Ip6Address &address);

// The first address of link-local scope that has passed duplicate address detection.
std::optional<Ip6Address> mainLinkLocal(Rtnetlink &socket, std::uint32_t ifIndex);

} // namespace ipmib::platform
