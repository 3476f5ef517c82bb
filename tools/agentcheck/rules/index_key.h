// SPDX-License-Identifier: BSD-3-Clause
// The index of a row, read as the catalogue declares it, and the internet addresses in it.
#pragma once

#include "../objects.h"

#include "host/row_key.h"

#include <optional>
#include <string_view>

namespace ipmib::agentcheck
{

// InetAddressType
enum AddressType : std::uint32_t { unknownAddress = 0, ipv4 = 1, ipv6 = 2, ipv4z = 3, ipv6z = 4, dnsName = 16 };

struct IndexKey {
    std::span<const MibTreeNode *const> columns; // of the index
    host::IndexParts parts;
    host::RowKey values;

    // Of the column with this name, which is part of the index.
    std::size_t place(std::string_view column) const;
    std::uint32_t number(std::string_view column) const { return values.number(place(column)); }
    std::span<const std::uint8_t> octets(std::string_view column) const { return values.octets(place(column)); }
};

// Empty when the instance is none of the entry that the column belongs to.
std::optional<IndexKey> readIndex(const MibTreeNode &column, host::OidView instance);

// How many octets an address has; empty where its type leaves it open.
std::optional<std::size_t> lengthOf(std::uint32_t addressType);
bool isLinkLocal(std::span<const std::uint8_t> address);
// The last four octets of 20.
std::uint32_t zoneOf(std::span<const std::uint8_t> address);
// Whether the first so many bits are the same; both have them.
bool isSameInBits(std::span<const std::uint8_t> left, std::span<const std::uint8_t> right, std::size_t bits);

} // namespace ipmib::agentcheck
