// SPDX-License-Identifier: BSD-3-Clause
// What a caller's interface selection holds: which type codes, which groups and which conditions.
#include "core/type_selection.h"

namespace ipmib::platform
{

namespace
{
constexpr std::uint32_t byType = 5;         // the one kind of selection
constexpr std::uint32_t withNeighbours = 2; // all interfaces can have IPv6 neighbours: a static one needs no resolution
constexpr std::uint32_t existing = 8;       // holds of all interfaces that a platform lists
} // namespace

bool TypeSelection::begin(std::uint32_t kind)
{
    *this = TypeSelection{};
    return kind == byType;
}

bool TypeSelection::addGroup(std::uint32_t group)
{
    allTypes_ = allTypes_ || group == withNeighbours;
    return group == withNeighbours;
}

bool TypeSelection::addCondition(std::uint32_t condition)
{
    return condition == existing;
}

} // namespace ipmib::platform
