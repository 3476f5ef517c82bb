// SPDX-License-Identifier: BSD-3-Clause
// The anycast addresses that this node has joined, those outside fe80::/10. Not every kernel announces them, but every
// one announces the routes that it makes for them: see RouteTable.
#pragma once

#include "addresses/address_message.h"
#include "core/kernel_table.h"
#include "ordered_table.h"

#include <functional>

namespace ipmib::platform
{

class AnycastTable : public KernelTable
{
  public:
    // Called when one was joined or left.
    using ChangeHandler = std::function<void(const PackedAddress &, std::uint32_t ifIndex)>;
    void onChange(ChangeHandler handler) { changed_ = std::move(handler); }

    // Of one that several interfaces have, the one on the lowest ifIndex.
    const Anycast *find(const PackedAddress &address) const;
    const Anycast *after(const PackedAddress &address) const;
    bool has(const PackedAddress &address, std::uint32_t ifIndex) const;
    template <class Visit>
    void each(Visit visit) const
    {
        rows_.each(visit);
    }

    // From the announcement of a route; now is in 1/100 s since boot.
    void joined(const PackedAddress &address, std::uint32_t ifIndex, std::uint32_t now);
    void left(const PackedAddress &address, std::uint32_t ifIndex);

    const char *name() const override { return "anycast addresses"; }
    std::vector<unsigned> groups() const override { return {}; }
    RtnetlinkRequest dump(std::size_t which) override;
    void applyDump(const nlmsghdr &message, Generation generation) override;
    bool sweep(Generation generation) override;
    void applyChange(const nlmsghdr &) override {}

  private:
    struct At {
        PackedAddress address;
        std::uint32_t ifIndex;

        static At of(const At &key) { return key; }
        static At of(const Anycast &row) { return {row.address, row.ifIndex}; }
        friend auto operator<=>(const At &, const At &) = default;
    };
    struct ByAddress {
        template <class Left, class Right>
        bool operator()(const Left &left, const Right &right) const
        {
            return At::of(left) < At::of(right);
        }
    };
    using Rows = OrderedTable<Anycast, ByAddress>;

    void tellChange(const Anycast &row) const
    {
        if (changed_) {
            changed_(row.address, row.ifIndex);
        }
    }

    Rows rows_;
    ChangeHandler changed_;
};

} // namespace ipmib::platform
