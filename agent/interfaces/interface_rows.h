// SPDX-License-Identifier: BSD-3-Clause
// The rows of a table that has one for each interface.
#pragma once

#include "interfaces/columns.h"
#include "net_snmp.h"

#include <array>
#include <optional>

namespace ipmib::agent
{

// For a RowTable.
class InterfaceRows
{
  public:
    using Row = InterfaceRow;
    using Column = InterfaceColumn;

    InterfaceRows(const IpmibInterfaceHooks &interfaces, std::span<const InterfaceColumn> columns)
        : interfaces_(interfaces), columns_(columns)
    {
    }

    std::span<const Column> columns() const { return columns_; }
    bool find(std::span<const oid> index, Row &row) const;
    bool after(std::span<const oid> index, Row &row) const;
    std::array<host::SubId, 1> index(const Row &row) const { return {row.interface.if_index}; }
    std::optional<host::Value> value(const Column &column, Row &row) const;

  private:
    const IpmibInterfaceHooks &interfaces_;
    std::span<const InterfaceColumn> columns_;
};

} // namespace ipmib::agent
