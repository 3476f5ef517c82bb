// SPDX-License-Identifier: BSD-3-Clause
// What netlink datagrams hold, as far as it can be trusted.
#pragma once

#include <libmnl/libmnl.h>

#include <cerrno>
#include <cstdint>

namespace ipmib::platform
{

// The library's own check takes a length from 2 GiB on for a negative one, and lets it pass.
inline bool holdsMessage(const nlmsghdr *message, int left)
{
    return mnl_nlmsg_ok(message, left) && message->nlmsg_len <= static_cast<std::uint32_t>(left);
}

// The errno of a result, which the kernel tells as 0 or below; EBADMSG for what it never says.
inline int errnoOf(std::int32_t result)
{
    constexpr std::int32_t lowest = -4095;
    return result <= 0 && result >= lowest ? -result : EBADMSG;
}

} // namespace ipmib::platform
