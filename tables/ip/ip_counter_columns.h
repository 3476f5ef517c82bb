// SPDX-License-Identifier: BSD-3-Clause
// The columns of ipSystemStatsTable and ipIfStatsTable, which have the same numbers. A row has no instance of what
// nobody counts.
#pragma once

#include "tables/ip/ip_rows.h"

#include <vector>

namespace ipmib::tables
{

struct CounterRow {
    host::SubId ifIndex; // 0 for the system
    IpmibIpCounters counters;
    std::uint64_t wanted; // of the counters, by bits; the others may be missing
};

using CounterColumn = host::RowColumn<CounterRow>;

// All of them, ascending. What a column needs is the counter's bit.
static_assert(IPMIB_IP_COUNTERS <= 32);
std::span<const CounterColumn> counterColumns();
// Those with these numbers.
std::vector<CounterColumn> counterColumns(std::span<const host::SubId> numbers);

} // namespace ipmib::tables
