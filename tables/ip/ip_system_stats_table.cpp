// SPDX-License-Identifier: BSD-3-Clause
// ipSystemStatsTable: the row of IPv4, and of that of IPv6 what modules leave out.

#include "tables/ip/ip_counter_columns.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipSystemStatsEntry[] = {1, 3, 6, 1, 2, 1, 4, 31, 1, 1};

constexpr host::SubId systemStatsLeftOutByModules[] = {5,  6,  11, 19, 21, 32, 33, 34, 35, 36, 37,
                                                       38, 39, 40, 41, 42, 43, 44, 45, 46, 47};

template <host::SubId version>
class SystemRows : public VersionIndex<version>
{
  public:
    using Row = CounterRow;
    using typename VersionIndex<version>::Index;

    SystemRows(const IpmibIpHooks &ip, std::vector<CounterColumn> columns) : ip_(ip), columns_(std::move(columns)) {}

    std::span<const CounterColumn> columns() const { return columns_; }
    bool find(const Index &, Row &row) const { return read(row, 0); }
    bool next(const Index *behind, Row &row) const { return behind == nullptr && find({}, row); }
    bool complete(Row &row, unsigned needs) const
    {
        return ((row.counters.counted | row.wanted) & needs) != 0 || read(row, row.wanted | needs);
    }
    Index indexOf(const Row &) const { return {version}; }

  private:
    bool read(Row &row, std::uint64_t wanted) const
    {
        row.counters.counted = row.wanted = wanted;
        return ip_.system_counters(version, &row.counters) == 0;
    }

    const IpmibIpHooks &ip_;
    std::vector<CounterColumn> columns_;
};

template <host::SubId version>
SourcePointer rowOf(const IpmibIpHooks &ip, std::vector<CounterColumn> columns)
{
    using Rows = SystemRows<version>;
    return std::make_unique<host::RowSource<Rows>>(ipSystemStatsEntry, Rows(ip, std::move(columns)));
}

} // namespace

std::vector<SourcePointer> ipSystemStatsTable(const IpmibIpHooks &ip)
{
    std::vector<SourcePointer> sources;
    if (ip.system_counters != nullptr) {
        const auto all = counterColumns();
        sources.push_back(rowOf<IPMIB_IPV4>(ip, {all.begin(), all.end()}));
        sources.push_back(rowOf<IPMIB_IPV6>(ip, counterColumns(systemStatsLeftOutByModules)));
    }
    return sources;
}

} // namespace ipmib::tables
