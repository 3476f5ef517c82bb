// SPDX-License-Identifier: BSD-3-Clause
// The rows of ipNetToMediaTable: one for each IPv4 neighbour of an interface.
#pragma once

#include "ipv4/index_number.h"
#include "ipv4/octets.h"
#include "varbind.h"

#include <ipmib/platform_ipv4.h>

#include <optional>

namespace ipmib::agent
{

// For a RowTable.
class NeighbourRows
{
  public:
    struct Row {
        IpmibIpv4Neighbour platform;
        Ipv4Octets address;
    };
    struct Column {
        host::SubId number;
        host::Value (*value)(const Row &);
    };

    explicit NeighbourRows(const IpmibIpv4Hooks &ipv4) : ipv4_(ipv4) {}

    std::span<const Column> columns() const;
    bool find(std::span<const oid> index, Row &row) const;
    bool after(std::span<const oid> index, Row &row) const;
    std::array<host::SubId, 5> index(const Row &row) const;
    std::optional<host::Value> value(const Column &column, const Row &row) const { return column.value(row); }

  private:
    const IpmibIpv4Hooks &ipv4_;
};

} // namespace ipmib::agent
