// SPDX-License-Identifier: BSD-3-Clause
// Parts of a scenario that have a form: addresses, prefixes, link-layer addresses, lifetimes, what rows have in common.
#pragma once

#include "core/codes.h"
#include "device/interface.h"
#include "device/rows.h"
#include "scenario/value.h"

#include <initializer_list>

namespace ipmib::simulated
{

struct Ipv4AddressAndLength {
    std::uint32_t address;
    std::uint8_t length; // bits
};

struct AddressAndLength {
    PackedAddress address;
    std::uint8_t length; // bits
};

// An IPv6 unicast address that a node can have: neither :: nor multicast.
PackedAddress readAddress(const Value &value);
// The same with "/64" behind it.
AddressAndLength readAddressAndLength(const Value &value);
// A prefix: nothing but zeros behind its length.
AddressAndLength readPrefix(const Value &value);
// The same for IPv4.
std::uint32_t readIpv4Address(const Value &value);
Ipv4AddressAndLength readIpv4AddressAndLength(const Value &value);
Ipv4AddressAndLength readIpv4Prefix(const Value &value);
// Of the bits of a prefix: those that an address has in it.
constexpr std::uint32_t ipv4Masked(std::uint32_t address, std::uint8_t length)
{
    return length == 0 ? 0 : address & UINT32_MAX << (32 - length);
}
Mac readMac(const Value &value);
// Seconds, or "infinite".
std::uint32_t readLifetime(const Value &value, std::uint32_t longest = platform::infiniteLifetime - 1);

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

// Fails for a member that the object cannot have beside something else that it has.
void failWithAny(Object &object, std::initializer_list<const char *> names, const char *why);

// A lifetime of this name, which "renewed" begins anew.
Lifetime readRenewed(Object &object, const char *name, std::uint32_t longest = platform::infiniteLifetime - 1);
// "valid", "preferred" and "renewed" of a prefix.
void readLifetimes(Object &object, Lifetime &valid, Lifetime &preferred);
// "mac" of a neighbour.
void readLinkLayer(Object &object, Neighbour &neighbour);

} // namespace ipmib::simulated
