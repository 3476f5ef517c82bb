// SPDX-License-Identifier: BSD-3-Clause
// IPv4 neighbours among the rows that platforms keep.
#include "ipv4_neighbour.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace ipmib::platform
{
namespace
{

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
