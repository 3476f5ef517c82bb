// SPDX-License-Identifier: BSD-3-Clause
// The prefixes of each interface. The kernel keeps no such table: a prefix is there because an address has it, because
// a route says that it is on the link, or both; what a router advertised of it adds lifetimes and flags. A row is made
// once for all changes of the other tables since the last time that somebody read, so that reading it is no more than
// finding it.
#pragma once

#include "addresses/address_tally.h"
#include "addresses/anycast_table.h"
#include "routes/route_table.h"

namespace ipmib::platform
{

enum class PrefixOrigin : std::uint8_t { other, manual, wellKnown, leased, advertised };

struct Prefix {
    PackedAddress prefix;
    std::uint32_t ifIndex;
    Deadline validUntil;
    Deadline preferredUntil;
    std::uint8_t length; // bits
    PrefixOrigin origin;
    bool onLink;
    bool autonomous;

    PrefixKey key() const { return {ifIndex, prefix, length}; }
};

class PrefixTable
{
  public:
    PrefixTable(const AnycastTable &anycasts, const RouteTable &routes) : anycasts_(anycasts), routes_(routes) {}

    // An address outside fe80::/10 has come (null before), changed or gone (null now).
    void addressChanged(const Ip6Address *before, const Ip6Address *now);
    // Another table has changed at this prefix.
    void update(const PrefixKey &key);
    // A router has advertised a prefix.
    void advertise(const AdvertisedPrefix &prefix);
    // Whether the addresses leave open if a router advertised it.
    bool mayBeAdvertised(const PrefixKey &key) const;
    // An interface went down, and what was advertised there does not count any more.
    void forgetAdvertised(std::uint32_t ifIndex);

    // Makes the rows of all that has changed; what follows answers as of then.
    void settle();
    // Ascending by interface, prefix and length, none inside fe80::/10. Null for none.
    const Prefix *find(const PrefixKey &key) const { return rows_.find(key); }
    const Prefix *atOrAfter(const PrefixKey &key) const { return rows_.atOrAfter(key); }
    const Prefix *after(const PrefixKey &key) const { return rows_.after(key); }
    std::size_t size() const { return rows_.size(); }

    // The length of the prefix that an anycast address belongs to. An address of all routers on a link is the prefix
    // itself with zeros behind it; one that is not has a prefix of its own.
    std::uint8_t anycastLength(const PackedAddress &address, std::uint32_t ifIndex) const;

    static constexpr std::size_t advertisedLimit = 1024; // a router may advertise what it likes

  private:
    struct ByKey {
        static PrefixKey keyOf(const PrefixKey &key) { return key; }
        static PrefixKey keyOf(const Prefix &row) { return row.key(); }
        static PrefixKey keyOf(const AdvertisedPrefix &row) { return row.key; }
        template <class Left, class Right>
        bool operator()(const Left &left, const Right &right) const
        {
            return keyOf(left) < keyOf(right);
        }
    };

    bool derive(const PrefixKey &key, Prefix &row) const;
    void put(const PrefixKey &key);
    void makeRoomForAdvertised();

    const AnycastTable &anycasts_;
    const RouteTable &routes_;
    AddressTally addresses_;
    std::vector<PrefixKey> changed_; // since the rows were made
    OrderedTable<Prefix, ByKey> rows_;
    OrderedTable<AdvertisedPrefix, ByKey> advertised_;
};

} // namespace ipmib::platform
