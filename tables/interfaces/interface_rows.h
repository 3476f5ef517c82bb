// SPDX-License-Identifier: BSD-3-Clause
// The rows of a table that has one for each interface, and the branch of the IF-MIB's newer objects.
#pragma once

#include "tables/values.h"

#include "host/row_source.h"
#include "host/sys_up_time.h"

#include <ipmib/platform_interfaces.h>

namespace ipmib::tables
{

inline constexpr host::SubId ifMibObjects[] = {1, 3, 6, 1, 2, 1, 31, 1};

struct InterfaceRow {
    IpmibInterface interface;
    IpmibInterfaceTraffic traffic; // read for the columns that need it
    const host::SysUpTime *upTime;
    bool notified; // of its going up and down
};

using InterfaceColumn = host::RowColumn<InterfaceRow>;
inline constexpr unsigned traffic = 1; // what a column may need

class InterfaceRows
{
  public:
    using Row = InterfaceRow;
    using Index = std::array<host::SubId, 1>;
    static constexpr host::SubIdRange shape[1] = {host::anyIfIndex};

    InterfaceRows(const IpmibInterfaceHooks &interfaces, const host::SysUpTime &upTime,
                  std::span<const InterfaceColumn> columns, const bool *notified = nullptr)
        : interfaces_(interfaces), upTime_(upTime), columns_(columns), notified_(notified)
    {
    }

    std::span<const InterfaceColumn> columns() const { return columns_; }
    bool find(const Index &index, Row &row) const;
    bool next(const Index *behind, Row &row) const;
    Index indexOf(const Row &row) const { return {row.interface.if_index}; }
    bool complete(Row &row, unsigned) const { return interfaces_.traffic(row.interface.if_index, &row.traffic) == 0; }

  private:
    const IpmibInterfaceHooks &interfaces_;
    const host::SysUpTime &upTime_;
    std::span<const InterfaceColumn> columns_;
    const bool *notified_; // null for tables that do not tell
};

inline bool InterfaceRows::find(const Index &index, Row &row) const
{
    row.upTime = &upTime_;
    row.notified = notified_ != nullptr && *notified_;
    return interfaces_.find(index[0], &row.interface) == 0;
}

inline bool InterfaceRows::next(const Index *behind, Row &row) const
{
    row.upTime = &upTime_;
    row.notified = notified_ != nullptr && *notified_;
    return interfaces_.next(behind == nullptr ? 0 : (*behind)[0], &row.interface) == 0;
}

} // namespace ipmib::tables
