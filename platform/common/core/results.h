// SPDX-License-Identifier: BSD-3-Clause
// Results of services: 0, or one of the results of row lookups.
#pragma once

#include <ipmib/message.h>

#include <cstdint>

namespace ipmib::platform
{

constexpr std::uint32_t success = 0;
constexpr std::uint32_t notFound = RC_NOT_FOUND;
constexpr std::uint32_t noMore = RC_NO_MORE;

} // namespace ipmib::platform
