// SPDX-License-Identifier: BSD-3-Clause
// Whether what is left of a datagram begins with a whole netlink message.
#pragma once

#include <libmnl/libmnl.h>

#include <cstdint>

namespace ipmib::platform
{

// The library's own check takes a length from 2 GiB on for a negative one, and lets it pass.
inline bool holdsMessage(const nlmsghdr *message, int left)
{
    return mnl_nlmsg_ok(message, left) && message->nlmsg_len <= static_cast<std::uint32_t>(left);
}

} // namespace ipmib::platform
