// SPDX-License-Identifier: BSD-3-Clause
// The rows of a simulated device's tables, and their orders.
#pragma once

#include "addresses/packed_address.h"
#include "core/codes.h"
#include "neighbour_rows.h"
#include "ordered_table.h"

#include <ipmib/platform_ip.h>

#include <compare>
#include <cstdint>

namespace ipmib::simulated
{

using platform::Neighbour;
using platform::NeighbourKey;
using platform::NeighbourRows;
using platform::OrderedTable;
using platform::PackedAddress;
using platform::PrefixKey;

inline constexpr std::uint32_t ticksPerSecond = 100; // of sysUpTime
inline constexpr std::uint16_t largestDatagram = 65535;

// A lifetime in seconds, which may begin anew again and again.
struct Lifetime {
    std::uint32_t seconds = platform::infiniteLifetime;
    std::uint32_t renewedEvery = 0; // seconds; 0: never

    // What is left so many seconds after the device's start.
    std::uint32_t left(std::uint32_t elapsed) const
    {
        if (seconds == platform::infiniteLifetime) {
            return seconds;
        }
        const std::uint32_t since = renewedEvery == 0 ? elapsed : elapsed % renewedEvery;
        return since < seconds ? seconds - since : 0;
    }
};

// Rows by their key(), which orders rows and keys alike.
template <class Row, class Key>
struct ByKey {
    bool operator()(const Row &a, const Row &b) const { return a.key() < b.key(); }
    bool operator()(const Row &a, const Key &b) const { return a.key() < b; }
    bool operator()(const Key &a, const Row &b) const { return a < b.key(); }
};

struct Address {
    PackedAddress address;
    std::uint32_t ifIndex;
    std::uint32_t origin;   // platform::addressOrigin*
    std::uint32_t state;    // platform::addressState*
    std::uint32_t createdS; // since boot
    std::uint32_t changedS; // since boot
    std::uint8_t length;    // bits of the prefix
    bool anycast;

    const PackedAddress &key() const { return address; }
};
using Addresses = OrderedTable<Address, ByKey<Address, PackedAddress>>;

// Rows of IPv4 are those of platform_ip.h as far as they do not change by themselves.
struct Ipv4Address : IpmibIpAddress {
    std::uint32_t key() const { return address; }
};
using Ipv4Addresses = OrderedTable<Ipv4Address, ByKey<Ipv4Address, std::uint32_t>>;

struct Ipv4PrefixKey {
    std::uint32_t ifIndex;
    std::uint32_t prefix;
    std::uint32_t length; // bits

    friend auto operator<=>(const Ipv4PrefixKey &, const Ipv4PrefixKey &) = default;
};

struct Ipv4Prefix {
    std::uint32_t ifIndex;
    std::uint32_t prefix;
    std::uint32_t length;
    std::uint32_t origin; // ipAddressPrefixOrigin
    Lifetime valid;
    Lifetime preferred;
    bool onLink;
    bool autonomous;

    Ipv4PrefixKey key() const { return {ifIndex, prefix, length}; }
};
using Ipv4Prefixes = OrderedTable<Ipv4Prefix, ByKey<Ipv4Prefix, Ipv4PrefixKey>>;

struct Ipv4RouterKey {
    std::uint32_t address;
    std::uint32_t ifIndex;

    friend auto operator<=>(const Ipv4RouterKey &, const Ipv4RouterKey &) = default;
};

struct Ipv4Router {
    std::uint32_t address;
    std::uint32_t ifIndex;
    std::int32_t preference; // ipDefaultRouterPreference
    Lifetime lifetime;

    Ipv4RouterKey key() const { return {address, ifIndex}; }
};
using Ipv4Routers = OrderedTable<Ipv4Router, ByKey<Ipv4Router, Ipv4RouterKey>>;

struct Prefix {
    PackedAddress prefix;
    std::uint32_t ifIndex;
    std::uint32_t origin; // platform::prefixOrigin*
    Lifetime valid;
    Lifetime preferred;
    std::uint8_t length; // bits
    std::uint8_t flags;  // platform::prefixFlag*

    PrefixKey key() const { return {ifIndex, prefix, length}; }
};
using Prefixes = OrderedTable<Prefix, ByKey<Prefix, PrefixKey>>;

struct RouterKey {
    PackedAddress address;
    std::uint32_t ifIndex;
    friend auto operator<=>(const RouterKey &, const RouterKey &) = default;
};

struct Router {
    PackedAddress address;
    std::uint32_t ifIndex;
    std::uint32_t preference; // platform::gatewayPreference*
    Lifetime lifetime;

    RouterKey key() const { return {address, ifIndex}; }
};
using Routers = OrderedTable<Router, ByKey<Router, RouterKey>>;

} // namespace ipmib::simulated
