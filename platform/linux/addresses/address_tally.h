// SPDX-License-Identifier: BSD-3-Clause
// What the addresses with a prefix say of it, counted, so that one that comes or goes costs the same beside one other
// and beside thousands.
#pragma once

#include "addresses/address_message.h"
#include "ordered_table.h"

namespace ipmib::platform
{

class AddressTally
{
  public:
    void add(const Ip6Address &address) { count(address, 1); }
    void remove(const Ip6Address &address) { count(address, -1); }

    struct Sum {
        bool any;
        bool manual;
        bool leased;
        bool autoconfigured;
        Deadline validUntil; // the latest, as the next one
        Deadline preferredUntil;
    };
    Sum of(const PrefixKey &prefix) const;

  private:
    enum class Fact : std::uint8_t { manual, leased, autoconfigured, valid, preferred };
    // So many addresses with this prefix have this about them.
    struct Row {
        PrefixKey prefix;
        Fact fact;
        Deadline until; // of the last two facts
        std::uint32_t addresses;
    };
    struct LatestFirst {
        bool operator()(const Row &a, const Row &b) const
        {
            const auto order = a.prefix <=> b.prefix;
            return order != 0 ? order < 0 : a.fact != b.fact ? a.fact < b.fact : a.until > b.until;
        }
    };

    void count(const Ip6Address &address, int difference);
    void count(const PrefixKey &prefix, Fact fact, Deadline until, int difference);
    const Row *latest(const PrefixKey &prefix, Fact fact) const;

    OrderedTable<Row, LatestFirst> rows_;
};

} // namespace ipmib::platform
