// SPDX-License-Identifier: BSD-3-Clause
// The rows of a table that has one for each interface.

#include "interfaces/interface_rows.h"

#include <algorithm>

namespace ipmib::agent
{

namespace
{

// What a sub-identifier is compared with; the library's may be wider than an ifIndex.
constexpr oid widest = UINT32_MAX;

} // namespace

bool InterfaceRows::find(std::span<const oid> index, Row &row) const
{
    return index.size() == 1 && index[0] <= widest &&
           interfaces_.find(static_cast<host::SubId>(index[0]), &row.interface) == 0;
}

bool InterfaceRows::after(std::span<const oid> index, Row &row) const
{
    const oid behind = index.empty() ? 0 : std::min(index[0], widest);
    return interfaces_.next(static_cast<host::SubId>(behind), &row.interface) == 0;
}

std::optional<host::Value> InterfaceRows::value(const Column &column, Row &row) const
{
    if (column.needsTraffic && interfaces_.traffic(row.interface.if_index, &row.traffic) != 0) {
        return std::nullopt;
    }
    return column.value(row);
}

} // namespace ipmib::agent
