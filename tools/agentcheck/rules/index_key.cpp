// SPDX-License-Identifier: BSD-3-Clause
// Reads indexes.
#include "index_key.h"

#include <algorithm>
#include <stdexcept>

namespace ipmib::agentcheck
{

std::size_t IndexKey::place(std::string_view column) const
{
    const auto found =
        std::ranges::find(columns, column, [](const MibTreeNode *node) { return std::string_view(node->pszName); });
    if (found == columns.end()) {
        throw std::logic_error(std::string(column) + " is no part of the index");
    }
    return static_cast<std::size_t>(found - columns.begin());
}

std::optional<IndexKey> readIndex(const MibTreeNode &column, host::OidView instance)
{
    IndexKey key{indexOf(column), {}, {}};
    for (const MibTreeNode *part : key.columns) {
        key.parts.push_back(*host::indexPart(*part));
    }
    return host::readKey(key.parts, instance, key.values) ? std::optional(key) : std::nullopt;
}

std::optional<std::size_t> lengthOf(std::uint32_t addressType)
{
    switch (addressType) {
    case unknownAddress:
        return 0;
    case ipv4:
        return 4;
    case ipv6:
        return 16;
    case ipv4z:
        return 8;
    case ipv6z:
        return 20;
    default:
        return std::nullopt;
    }
}

bool isLinkLocal(std::span<const std::uint8_t> address)
{
    return address.size() >= 16 && address[0] == 0xfe && (address[1] & 0xc0) == 0x80;
}

std::uint32_t zoneOf(std::span<const std::uint8_t> address)
{
    std::uint32_t zone = 0;
    for (const std::uint8_t octet : address.last(4)) {
        zone = zone << 8 | octet;
    }
    return zone;
}

bool isSameInBits(std::span<const std::uint8_t> left, std::span<const std::uint8_t> right, std::size_t bits)
{
    for (std::size_t bit = 0; bit < bits; ++bit) {
        const auto mask = static_cast<std::uint8_t>(0x80 >> bit % 8);
        if ((left[bit / 8] & mask) != (right[bit / 8] & mask)) {
            return false;
        }
    }
    return true;
}

} // namespace ipmib::agentcheck
