// SPDX-License-Identifier: BSD-3-Clause
// What the rows of both versions of IP have in common in a scenario.
#pragma once

#include "core/codes.h"
#include "device/rows.h"
#include "scenario/value.h"

namespace ipmib::simulated
{

inline constexpr std::uint32_t latestMoment = UINT32_MAX / 100; // seconds since boot; managers are told hundredths

inline constexpr Word neighbourTypes[] = {{"dynamic", static_cast<std::uint32_t>(platform::NeighbourType::dynamic)},
                                          {"static", static_cast<std::uint32_t>(platform::NeighbourType::fixed)},
                                          {"local", static_cast<std::uint32_t>(platform::NeighbourType::local)},
                                          {"invalid", static_cast<std::uint32_t>(platform::NeighbourType::invalid)}};
inline constexpr Word neighbourStates[] = {
    {"reachable", static_cast<std::uint32_t>(platform::NeighbourState::reachable)},
    {"stale", static_cast<std::uint32_t>(platform::NeighbourState::stale)},
    {"delay", static_cast<std::uint32_t>(platform::NeighbourState::delay)},
    {"probe", static_cast<std::uint32_t>(platform::NeighbourState::probe)},
    {"invalid", static_cast<std::uint32_t>(platform::NeighbourState::invalid)},
    {"unknown", static_cast<std::uint32_t>(platform::NeighbourState::unknown)},
    {"incomplete", static_cast<std::uint32_t>(platform::NeighbourState::incomplete)}};

// Calls visit(value) for each value of the list with this name, if there is one.
template <class Visit>
void eachOf(Object &object, const char *name, Visit visit)
{
    if (const auto list = object.find(name)) {
        list->each(visit);
    }
}

// A lifetime of this name, which "renewed" begins anew.
Lifetime readRenewed(Object &object, const char *name, std::uint32_t longest = platform::infiniteLifetime - 1);
// "valid", "preferred" and "renewed" of a prefix.
void readLifetimes(Object &object, Lifetime &valid, Lifetime &preferred);
// "mac" of a neighbour.
void readLinkLayer(Object &object, Neighbour &neighbour);

} // namespace ipmib::simulated
