// SPDX-License-Identifier: BSD-3-Clause
// What a caller's interface selection holds: which type codes, which groups and which conditions.
#include "links/selection.h"

#include "links/link_type.h"

namespace ipmib::platform
{

namespace
{
constexpr std::uint32_t byType = 5;         // the one kind of selection
constexpr std::uint32_t withNeighbours = 2; // all links can have IPv6 neighbours: a static entry needs no resolution
constexpr std::uint32_t existing = 8;       // holds of all links that the kernel lists
} // namespace

bool Selection::begin(std::uint32_t kind)
{
    *this = Selection{};
    return kind == byType;
}

bool Selection::addType(std::uint32_t code)
{
    if (code >= 256) {
        return false;
    }
    types_[code / 64] |= std::uint64_t{1} << (code % 64);
    return true;
}

bool Selection::addGroup(std::uint32_t group)
{
    allTypes_ = allTypes_ || group == withNeighbours;
    return group == withNeighbours;
}

bool Selection::addCondition(std::uint32_t condition)
{
    return condition == existing;
}

bool Selection::holds(const Link &link) const
{
    const std::uint8_t code = typeCode(link);
    return allTypes_ || ((types_[code / 64] >> (code % 64)) & 1) != 0;
}

const Link *Selection::after(const LinkTable &links, std::uint32_t ifIndex) const
{
    const Link *link = links.after(ifIndex);
    while (link != nullptr && !holds(*link)) {
        link = links.after(link->ifIndex);
    }
    return link;
}

} // namespace ipmib::platform
