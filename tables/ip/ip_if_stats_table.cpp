// SPDX-License-Identifier: BSD-3-Clause
// ipIfStatsTable: the rows of IPv4 where somebody counts it, and of those of IPv6 what modules leave out.

#include "tables/ip/ip_counter_columns.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipIfStatsEntry[] = {1, 3, 6, 1, 2, 1, 4, 31, 3, 1};

constexpr host::SubId ifStatsLeftOutByModules[] = {13, 19, 35, 36, 37, 39, 40, 41, 42, 43, 44, 45, 46, 47};

// A row for each interface whose traffic of this version somebody counts.
template <host::SubId version>
class InterfaceCounterRows
{
  public:
    using Row = CounterRow;
    using Index = std::array<host::SubId, 2>;
    static constexpr host::SubIdRange shape[2] = {host::only(version), host::anyIfIndex};

    InterfaceCounterRows(const IpmibIpHooks &ip, const IpmibInterfaceHooks &interfaces,
                         std::vector<CounterColumn> columns)
        : ip_(ip), interfaces_(interfaces), columns_(std::move(columns))
    {
    }

    std::span<const CounterColumn> columns() const { return columns_; }
    bool find(const Index &index, Row &row) const
    {
        row.ifIndex = index[1];
        return ip_.interface_counters(version, row.ifIndex, &row.counters) == 0;
    }
    bool next(const Index *behind, Row &row) const
    {
        IpmibInterface interface;
        interface.if_index = behind == nullptr ? 0 : (*behind)[1];
        while (interfaces_.next(interface.if_index, &interface) == 0) {
            if (find({version, interface.if_index}, row)) {
                return true;
            }
        }
        return false;
    }
    Index indexOf(const Row &row) const { return {version, row.ifIndex}; }

  private:
    const IpmibIpHooks &ip_;
    const IpmibInterfaceHooks &interfaces_;
    std::vector<CounterColumn> columns_;
};

template <host::SubId version>
SourcePointer rowsOf(const IpmibIpHooks &ip, const IpmibInterfaceHooks &interfaces, std::vector<CounterColumn> columns)
{
    using Rows = InterfaceCounterRows<version>;
    return std::make_unique<host::RowSource<Rows>>(ipIfStatsEntry, Rows(ip, interfaces, std::move(columns)));
}

} // namespace

std::vector<SourcePointer> ipIfStatsTable(const IpmibIpHooks &ip, const IpmibInterfaceHooks &interfaces)
{
    std::vector<SourcePointer> sources;
    if (ip.interface_counters != nullptr) {
        const auto all = counterColumns();
        sources.push_back(rowsOf<IPMIB_IPV4>(ip, interfaces, {all.begin(), all.end()}));
        sources.push_back(rowsOf<IPMIB_IPV6>(ip, interfaces, counterColumns(ifStatsLeftOutByModules)));
    }
    return sources;
}

} // namespace ipmib::tables
