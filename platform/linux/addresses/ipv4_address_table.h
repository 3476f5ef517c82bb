// SPDX-License-Identifier: BSD-3-Clause
// The IPv4 addresses of this network namespace by address, and what follows from them: broadcast addresses and the
// prefixes of interfaces.
#pragma once

#include "addresses/deadline.h"
#include "core/kernel_table.h"
#include "ordered_table.h"

#include <compare>

namespace ipmib::platform
{

struct Ipv4Address {
    std::uint32_t address;
    std::uint32_t ifIndex;
    std::uint32_t peer;      // of an address without one: its own
    std::uint32_t broadcast; // 0 for none
    std::uint32_t flags;     // IFA_F_*
    std::uint32_t created;   // 1/100 s since boot
    std::uint32_t changed;   // 1/100 s since boot
    Deadline preferredUntil;
    Deadline validUntil;
    std::uint8_t length; // bits of the prefix
    std::uint8_t scope;  // RT_SCOPE_*

    // The prefix is that of the peer where there is one: that is where the kernel finds neighbours.
    std::uint32_t prefix() const;
    // What a datagram to everybody on the link goes to.
    std::uint32_t broadcastAddress() const { return broadcast != 0 ? broadcast : UINT32_MAX; }

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

// The first bits of an address, with zeros behind them; of 0 to 32 bits.
std::uint32_t maskedIpv4(std::uint32_t address, unsigned length);

// Of an RTM_NEWADDR or RTM_DELADDR message; false when it is not about an IPv4 address. Now is in seconds since boot.
bool parseIpv4Address(const nlmsghdr &message, std::uint32_t now, Ipv4Address &address);

class Ipv4AddressTable : public KernelTable
{
  public:
    struct PrefixKey {
        std::uint32_t ifIndex;
        std::uint32_t prefix;
        std::uint32_t length; // bits; more than 32 in a key stands behind every length that there is
        friend auto operator<=>(const PrefixKey &, const PrefixKey &) = default;
    };

    // Of an address that stands several times, the first one by interface and then by length of the prefix. Null for
    // none; pointers are good until the table changes.
    const Ipv4Address *find(std::uint32_t address) const;
    const Ipv4Address *after(std::uint32_t address) const;
    // The same for broadcast addresses: the address that has it.
    const Ipv4Address *findBroadcast(std::uint32_t broadcast) const;
    const Ipv4Address *afterBroadcast(std::uint32_t broadcast) const;

    // Behind the key, or at it; false for none.
    bool prefixAtOrAfter(const PrefixKey &key, PrefixKey &found) const;
    bool prefixAfter(const PrefixKey &key, PrefixKey &found) const;
    // Calls visit(address) for each one with the prefix.
    template <class Visit>
    void eachIn(const PrefixKey &prefix, Visit visit) const
    {
        byPrefix_.eachFrom(AtPrefix{prefix, {}}, [&](const AtPrefix &at) {
            if (at.prefix != prefix) {
                return false;
            }
            visit(*rows_.find(at.key));
            return true;
        });
    }
    bool hasAny(std::uint32_t ifIndex) const;
    std::size_t size() const { return rows_.size(); }
    // Differs after each change.
    std::uint64_t version() const { return version_; }

    const char *name() const override { return "IPv4 addresses"; }
    std::vector<unsigned> groups() const override { return {RTNLGRP_IPV4_IFADDR}; }
    RtnetlinkRequest dump(std::size_t which) override;
    void applyDump(const nlmsghdr &message, Generation generation) override;
    bool sweep(Generation generation) override;
    void applyChange(const nlmsghdr &message) override;

  private:
    struct ByKey {
        using Key = Ipv4Address::Key;
        bool operator()(const Ipv4Address &a, const Ipv4Address &b) const { return a.key() < b.key(); }
        bool operator()(const Ipv4Address &a, const Key &b) const { return a.key() < b; }
        bool operator()(const Key &a, const Ipv4Address &b) const { return a < b.key(); }
    };
    // Other orders of the same rows.
    struct AtPrefix {
        PrefixKey prefix;
        Ipv4Address::Key key;
        friend auto operator<=>(const AtPrefix &, const AtPrefix &) = default;
    };
    struct AtBroadcast {
        std::uint32_t broadcast;
        std::uint32_t ifIndex;
        Ipv4Address::Key key;
        friend auto operator<=>(const AtBroadcast &, const AtBroadcast &) = default;
    };
    static AtPrefix prefixOf(const Ipv4Address &row);
    static AtBroadcast broadcastOf(const Ipv4Address &row) { return {row.broadcast, row.ifIndex, row.key()}; }
    void put(const Ipv4Address &row, Generation generation);
    void leaveOrders(const Ipv4Address &row);

    using Rows = OrderedTable<Ipv4Address, ByKey>;
    Rows rows_;
    OrderedTable<AtPrefix, std::less<>> byPrefix_;
    OrderedTable<AtBroadcast, std::less<>> byBroadcast_; // those that have one
    std::uint64_t version_ = 0;
};

} // namespace ipmib::platform
