// SPDX-License-Identifier: BSD-3-Clause
// The IPv4 addresses of this network namespace, by address.
#pragma once

#include "core/mirror.h"
#include "ordered_table.h"

#include <compare>

namespace ipmib::platform
{

struct Ipv4Address {
    std::uint32_t address;
    std::uint32_t ifIndex;
    std::uint32_t peer; // of an address without one: its own
    std::uint8_t length;
    bool broadcastBit;

    // An interface may have an address several times, with other prefixes or other peers.
    struct Key {
        std::uint32_t address;
        std::uint32_t ifIndex;
        std::uint8_t length;
        std::uint32_t peer;
        friend auto operator<=>(const Key &, const Key &) = default;
    };
    Key key() const { return {address, ifIndex, length, peer}; }
};

// Of an RTM_NEWADDR or RTM_DELADDR message; false when it is not about an IPv4 address.
bool parseIpv4Address(const nlmsghdr &message, Ipv4Address &address);

class Ipv4AddressTable : public KernelTable
{
  public:
    // Of an address that stands several times, the first one by interface and then by length of the prefix. Null for
    // none; pointers are good until the table changes.
    const Ipv4Address *find(std::uint32_t address) const;
    const Ipv4Address *after(std::uint32_t address) const;
    std::size_t size() const { return rows_.size(); }

    const char *name() const override { return "IPv4 addresses"; }
    std::vector<unsigned> groups() const override { return {RTNLGRP_IPV4_IFADDR}; }
    RtnetlinkRequest dump(std::size_t which) const override;
    void beginRebuild() override { fresh_.clear(); }
    void rebuildWith(const nlmsghdr &message) override;
    void commitRebuild() override;
    void abandonRebuild() override { fresh_.clear(); }
    void apply(const nlmsghdr &message) override;

  private:
    struct ByKey {
        using Key = Ipv4Address::Key;
        bool operator()(const Ipv4Address &a, const Ipv4Address &b) const { return a.key() < b.key(); }
        bool operator()(const Ipv4Address &a, const Key &b) const { return a.key() < b; }
        bool operator()(const Key &a, const Ipv4Address &b) const { return a < b.key(); }
    };

    OrderedTable<Ipv4Address, ByKey> rows_;
    OrderedTable<Ipv4Address, ByKey> fresh_;
};

} // namespace ipmib::platform
