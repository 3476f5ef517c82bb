// SPDX-License-Identifier: BSD-3-Clause
// The values of columns, from the numbers and octets of a row.
#pragma once

#include "host/source.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

namespace ipmib::tables
{

// Nothing for a row that has no such value.
using Cell = std::optional<host::Value>;

inline Cell integer(std::uint64_t number)
{
    return host::Value{host::ValueType::integer32, number & UINT32_MAX, {}, {}};
}

// Stays at the highest number when there is more to show.
inline Cell gauge(std::uint64_t number)
{
    return host::Value{host::ValueType::unsigned32, std::min<std::uint64_t>(number, UINT32_MAX), {}, {}};
}

// Wraps around.
inline Cell counter32(std::uint64_t number)
{
    return host::Value{host::ValueType::counter32, number & UINT32_MAX, {}, {}};
}

inline Cell counter64(std::uint64_t number)
{
    return host::Value{host::ValueType::counter64, number, {}, {}};
}

inline Cell octets(const void *bytes, std::size_t size)
{
    return host::Value{host::ValueType::octets, 0, {static_cast<const std::uint8_t *>(bytes), size}, {}};
}

inline Cell text(const char *string)
{
    return octets(string, std::strlen(string));
}

inline Cell ipAddress(std::span<const std::uint8_t, 4> address)
{
    return host::Value{host::ValueType::ipAddress, 0, address, {}};
}

inline Cell objectId(std::span<const host::SubId> identifier)
{
    return host::Value{host::ValueType::objectId, 0, {}, identifier};
}

inline Cell truth(bool condition)
{
    constexpr std::uint64_t yes = 1;
    constexpr std::uint64_t no = 2;
    return integer(condition ? yes : no);
}

} // namespace ipmib::tables
