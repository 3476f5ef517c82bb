// SPDX-License-Identifier: BSD-3-Clause
// What the service functions share.
#pragma once

#include "platform.h"

#include <ipmib/message.h>
#include <ipmib/platform.h>

namespace ipmib::platform
{

// Results of services: 0, or one of the results of row lookups.
constexpr std::uint32_t success = 0;
constexpr std::uint32_t notFound = RC_NOT_FOUND;
constexpr std::uint32_t noMore = RC_NO_MORE;

} // namespace ipmib::platform
