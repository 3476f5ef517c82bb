// SPDX-License-Identifier: BSD-3-Clause
// The columns of the interface tables: which there are, and what each shows of an interface.
#pragma once

#include "varbind.h"

#include <ipmib/platform_interfaces.h>

#include <span>

namespace ipmib::agent
{

struct InterfaceRow {
    IpmibInterface interface;
    IpmibInterfaceTraffic traffic; // read for the columns that need it
};

struct InterfaceColumn {
    host::SubId number;
    bool needsTraffic;
    host::Value (*value)(const InterfaceRow &);
};

// In ascending order.
extern const std::span<const InterfaceColumn> ifTableColumns;
extern const std::span<const InterfaceColumn> ifXTableColumns;

// A moment of the monotonic clock as sysUpTime showed it; 0 for 0 and for what was before this agent's start.
host::Value uptimeAt(std::uint64_t milliseconds);

} // namespace ipmib::agent
