// SPDX-License-Identifier: BSD-3-Clause
// Values of an agent's own tables.
#pragma once

#include "host/resolver.h"

#include <cstdint>

namespace ipmib::agent
{

inline host::Value integer(std::uint64_t number)
{
    return {host::ValueType::integer32, number, {}, {}};
}

inline host::Value octets(const void *bytes, std::size_t size)
{
    return {host::ValueType::octets, 0, {static_cast<const std::uint8_t *>(bytes), size}, {}};
}

} // namespace ipmib::agent
