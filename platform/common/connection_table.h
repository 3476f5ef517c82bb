// SPDX-License-Identifier: BSD-3-Clause
// The connections of one table, up to some hundred thousand of them: small rows in the order of IpmibConnectionKey.
#pragma once

#include "addresses/packed_address.h"
#include "ordered_table.h"

#include <ipmib/platform_connections.h>

#include <compare>
#include <cstdint>
#include <optional>

namespace ipmib::platform
{

struct PackedEnd {
    PackedAddress address;  // IPv4 stands in the upper 32 bits
    std::uint32_t zone = 0; // the last 4 of 20 octets
    std::uint16_t port = 0;
    std::uint8_t typeAndSize = 0; // the type in the upper 3 bits

    // Any address: with port 0 any end at all.
    static PackedEnd any(std::uint16_t port) { return {{}, 0, port, 0}; }
    static PackedEnd ipv4(std::uint32_t address, std::uint16_t port);
    // Zone 0 for none.
    static PackedEnd ipv6(const PackedAddress &address, std::uint32_t zone, std::uint16_t port);
    static PackedEnd of(const IpmibEnd &end);
    void copyTo(IpmibEnd &end) const;

    // What lies behind the size of an address is 0, so this is the order of type, size, octets and port.
    friend std::strong_ordering operator<=>(const PackedEnd &a, const PackedEnd &b);
};

struct ConnectionRow {
    PackedEnd local;
    PackedEnd remote;
    std::uint32_t instance = 0;
    std::uint32_t process : 28 = 0;
    std::uint32_t state : 4 = 0;
};

class ConnectionTable
{
  public:
    // False when it replaced one with its key.
    bool put(const ConnectionRow &row, Generation generation) { return rows_.put(row, generation); }
    // A piece of taking out the rows that were not put with this generation; false when there is more to do.
    bool sweepSome(Generation generation);
    // A piece of taking out all rows; false when there is more to do.
    bool clearSome();

    std::size_t size() const { return rows_.size(); }
    std::size_t memory() const { return rows_.memory(); }
    bool find(const IpmibConnectionKey &key, IpmibConnection &row) const;
    bool next(const IpmibConnectionKey &key, IpmibConnection &row) const;

  private:
    struct Less {
        bool operator()(const ConnectionRow &a, const ConnectionRow &b) const;
    };

    OrderedTable<ConnectionRow, Less> rows_;
    std::optional<ConnectionRow> sweepAt_;
};

} // namespace ipmib::platform
