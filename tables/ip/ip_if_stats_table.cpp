// SPDX-License-Identifier: BSD-3-Clause
// ipIfStatsTable: the columns that modules leave out, of both versions of IP.

#include "tables/ip/ip_counter_columns.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipIfStatsEntry[] = {1, 3, 6, 1, 2, 1, 4, 31, 3, 1};

constexpr host::SubId leftOutByModules[] = {13, 19, 35, 36, 37, 39, 40, 41, 42, 43, 44, 45, 46, 47};

// A row for each interface whose traffic of this version somebody counts.
class InterfaceCounterRows
{
  public:
    using Row = CounterRow;
    using Index = std::array<host::SubId, 2>;
    static constexpr host::SubIdRange shape[] = {{IPMIB_IPV4, IPMIB_IPV6}, host::anyIfIndex};

    InterfaceCounterRows(const IpmibIpHooks &ip, const IpmibInterfaceHooks &interfaces)
        : ip_(ip), interfaces_(interfaces), columns_(counterColumns(leftOutByModules))
    {
    }

    std::span<const CounterColumn> columns() const { return columns_; }
    bool find(const Index &index, Row &row) const
    {
        row.version = index[0];
        row.ifIndex = index[1];
        return ip_.interface_counters(row.version, row.ifIndex, &row.counters) == 0;
    }
    bool next(const Index *behind, Row &row) const
    {
        Index index = behind == nullptr ? Index{IPMIB_IPV4, 0} : *behind;
        for (; index[0] <= IPMIB_IPV6; index = {index[0] + 1, 0}) {
            for (IpmibInterface interface; interfaces_.next(index[1], &interface) == 0;) {
                index[1] = interface.if_index;
                if (find(index, row)) {
                    return true;
                }
            }
        }
        return false;
    }
    Index indexOf(const Row &row) const { return {row.version, row.ifIndex}; }

  private:
    const IpmibIpHooks &ip_;
    const IpmibInterfaceHooks &interfaces_;
    std::vector<CounterColumn> columns_;
};

} // namespace

SourcePointer ipIfStatsTable(const IpmibIpHooks &ip, const IpmibInterfaceHooks &interfaces)
{
    if (ip.interface_counters == nullptr) {
        return nullptr;
    }
    return std::make_unique<host::RowSource<InterfaceCounterRows>>(ipIfStatsEntry,
                                                                   InterfaceCounterRows(ip, interfaces));
}

} // namespace ipmib::tables
