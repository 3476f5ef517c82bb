// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 addresses of this network namespace: the link-local ones by interface, all others by address.
#pragma once

#include "addresses/address_message.h"
#include "core/kernel_table.h"
#include "ordered_table.h"

#include <functional>

namespace ipmib::platform
{

class AddressTable : public KernelTable
{
  public:
    // Called when an address outside fe80::/10 has come (null before), changed or gone (null now).
    using ChangeHandler = std::function<void(const Ip6Address *before, const Ip6Address *now)>;
    void onChange(ChangeHandler handler) { changed_ = std::move(handler); }

    // Outside fe80::/10. Of one that several interfaces have, the one on the lowest ifIndex is found. Pointers are good
    // until announcements are read.
    const Ip6Address *find(const PackedAddress &address) const;
    const Ip6Address *after(const PackedAddress &address) const;
    std::size_t size() const { return globals_.size(); }
    template <class Visit>
    void each(Visit visit) const
    {
        globals_.each(visit);
    }

    // The one that the interface can speak with on its link: its main link-local address, unless that one has not
    // passed duplicate address detection; ::1 on the loopback interface. Null for none.
    const Ip6Address *usableOnLink(std::uint32_t ifIndex) const;
    // The main link-local address of an interface: the one that the kernel prefers as a source, which is the oldest
    // that has passed duplicate address detection; an interface with none of these has its oldest one. Null for none.
    const Ip6Address *linkLocal(std::uint32_t ifIndex) const;

    // Differs after each change.
    std::uint64_t version() const { return version_; }
    // The same of those within fe80::/10.
    std::uint64_t linkLocalVersion() const { return linkLocalVersion_; }

    const char *name() const override { return "addresses"; }
    std::vector<unsigned> groups() const override { return {RTNLGRP_IPV6_IFADDR}; }
    RtnetlinkRequest dump(std::size_t which) override;
    void applyDump(const nlmsghdr &message, Generation generation) override;
    bool sweep(Generation generation) override;
    void applyChange(const nlmsghdr &message) override;

  private:
    struct At {
        PackedAddress address;
        std::uint32_t ifIndex;

        static At of(const At &key) { return key; }
        static At of(const Ip6Address &row) { return {row.address, row.ifIndex}; }
        friend auto operator<=>(const At &, const At &) = default;
    };
    struct ByAddress {
        template <class Left, class Right>
        bool operator()(const Left &left, const Right &right) const
        {
            return At::of(left) < At::of(right);
        }
    };
    struct ByInterface {
        template <class Left, class Right>
        bool operator()(const Left &left, const Right &right) const
        {
            const At a = At::of(left);
            const At b = At::of(right);
            return a.ifIndex != b.ifIndex ? a.ifIndex < b.ifIndex : a.address < b.address;
        }
    };

    void put(const Ip6Address &address, Generation generation);
    void erase(const Ip6Address &address);

    OrderedTable<Ip6Address, ByAddress> globals_;
    OrderedTable<Ip6Address, ByInterface> linkLocals_;
    std::uint64_t version_ = 0;
    std::uint64_t linkLocalVersion_ = 0;
    ChangeHandler changed_;
};

} // namespace ipmib::platform
