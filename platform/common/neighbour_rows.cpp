// SPDX-License-Identifier: BSD-3-Clause
// Neighbours as platforms keep and report them.
#include "neighbour_rows.h"

#include <endian.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace ipmib::platform
{
namespace
{

constexpr std::uint64_t linkLocalBegin = 0xfe80'0000'0000'0000; // upper halves of fe80::/10
constexpr std::uint64_t linkLocalEnd = 0xfebf'ffff'ffff'ffff;

const Neighbour *onInterface(std::uint32_t ifIndex, const Neighbour *row)
{
    return row != nullptr && row->ifIndex == ifIndex ? row : nullptr;
}

std::uint32_t typeOf(const Neighbour &neighbour)
{
    const bool unresolved = neighbour.state == NeighbourState::invalid || neighbour.state == NeighbourState::incomplete;
    switch (neighbour.type) {
    case NeighbourType::fixed:
        return IPMIB_MEDIA_STATIC;
    case NeighbourType::dynamic:
        return unresolved ? IPMIB_MEDIA_INVALID : IPMIB_MEDIA_DYNAMIC;
    case NeighbourType::invalid:
        return IPMIB_MEDIA_INVALID;
    default:
        return IPMIB_MEDIA_OTHER;
    }
}

} // namespace

NeighbourKey NeighbourKey::of(std::uint32_t ifIndex, const void *address)
{
    std::uint64_t halves[2];
    std::memcpy(halves, address, sizeof halves);
    return {ifIndex, be64toh(halves[0]), be64toh(halves[1])};
}

void NeighbourKey::copyAddress(void *address) const
{
    const std::uint64_t halves[2] = {htobe64(high), htobe64(low)};
    std::memcpy(address, halves, sizeof halves);
}

const Neighbour *afterGlobal(const NeighbourRows &rows, const NeighbourKey &key)
{
    const Neighbour *row = onInterface(key.ifIndex, rows.after(key));
    if (row != nullptr && row->key().isLinkLocal()) {
        row = onInterface(key.ifIndex, rows.after(NeighbourKey{key.ifIndex, linkLocalEnd, ~std::uint64_t{0}}));
    }
    return row;
}

const Neighbour *afterLinkLocal(const NeighbourRows &rows, const NeighbourKey &key)
{
    const NeighbourKey begin{key.ifIndex, linkLocalBegin, 0};
    const Neighbour *row = onInterface(key.ifIndex, key < begin ? rows.atOrAfter(begin) : rows.after(key));
    return row != nullptr && row->key().isLinkLocal() ? row : nullptr;
}

NeighbourEntry entryOf(const Neighbour &neighbour)
{
    NeighbourEntry entry{};
    entry.if_index = ipmib_be32(neighbour.ifIndex);
    neighbour.key().copyAddress(entry.address);
    std::memcpy(entry.link_layer, neighbour.linkLayer, sizeof entry.link_layer);
    entry.type = ipmib_be32(static_cast<std::uint32_t>(neighbour.type));
    entry.state = ipmib_be32(static_cast<std::uint32_t>(neighbour.state));
    entry.last_updated_s = ipmib_be32(neighbour.lastUpdatedS);
    return entry;
}

void describe(const Neighbour &neighbour, IpmibIpv4Neighbour &row)
{
    row = IpmibIpv4Neighbour{};
    row.if_index = neighbour.ifIndex;
    row.address = static_cast<std::uint32_t>(neighbour.low);
    row.type = typeOf(neighbour);
    const auto isZero = [](std::uint8_t octet) { return octet == 0; };
    if (!std::all_of(std::begin(neighbour.linkLayer), std::end(neighbour.linkLayer), isZero)) {
        row.link_layer_size = sizeof neighbour.linkLayer;
        std::memcpy(row.link_layer, neighbour.linkLayer, sizeof neighbour.linkLayer);
    }
}

} // namespace ipmib::platform
