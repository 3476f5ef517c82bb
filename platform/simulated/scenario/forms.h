// SPDX-License-Identifier: BSD-3-Clause
// Texts of a scenario that have a form: addresses, prefixes, link-layer addresses, lifetimes.
#pragma once

#include "device/interface.h"
#include "scenario/value.h"

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

} // namespace ipmib::simulated
