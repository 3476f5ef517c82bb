// SPDX-License-Identifier: BSD-3-Clause
// icmpStatsTable and icmpMsgStatsTable: the rows of IPv4.

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId icmpStatsEntry[] = {1, 3, 6, 1, 2, 1, 5, 29, 1};
constexpr host::SubId icmpMsgStatsEntry[] = {1, 3, 6, 1, 2, 1, 5, 30, 1};

class TotalRows : public VersionIndex<IPMIB_IPV4>
{
  public:
    using Row = IpmibIcmpCounters;

    explicit TotalRows(const IpmibIpHooks &ip) : ip_(ip) {}

    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &, Row &row) const { return ip_.icmp_counters(IPMIB_IPV4, &row) == 0; }
    bool next(const Index *behind, Row &row) const { return behind == nullptr && find({}, row); }
    Index indexOf(const Row &) const { return {IPMIB_IPV4}; }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {2, [](const Row &row) { return counter32(row.in_msgs); }},    // icmpStatsInMsgs
        {3, [](const Row &row) { return counter32(row.in_errors); }},  // icmpStatsInErrors
        {4, [](const Row &row) { return counter32(row.out_msgs); }},   // icmpStatsOutMsgs
        {5, [](const Row &row) { return counter32(row.out_errors); }}, // icmpStatsOutErrors
    };

    const IpmibIpHooks &ip_;
};

class TypeRows
{
  public:
    struct Row {
        host::SubId type;
        IpmibIcmpCounters counters;
    };
    using Index = std::array<host::SubId, 2>;
    static constexpr host::SubIdRange shape[] = {host::only(IPMIB_IPV4), host::anyOctet};

    explicit TypeRows(const IpmibIpHooks &ip) : ip_(ip) {}

    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const { return read(row) && isListed(row, row.type = index[1]); }
    bool next(const Index *behind, Row &row) const
    {
        if (!read(row)) {
            return false;
        }
        for (row.type = behind == nullptr ? 0 : (*behind)[1] + 1; row.type <= host::anyOctet.high; ++row.type) {
            if (isListed(row, row.type)) {
                return true;
            }
        }
        return false;
    }
    Index indexOf(const Row &row) const { return {IPMIB_IPV4, row.type}; }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {3, [](const Row &row) { return counter32(row.counters.in_type[row.type]); }},  // icmpMsgStatsInPkts
        {4, [](const Row &row) { return counter32(row.counters.out_type[row.type]); }}, // icmpMsgStatsOutPkts
    };

    bool read(Row &row) const { return ip_.icmp_counters(IPMIB_IPV4, &row.counters) == 0; }
    static bool isListed(const Row &row, host::SubId type)
    {
        return (row.counters.listed[type / 8] >> type % 8 & 1) != 0;
    }

    const IpmibIpHooks &ip_;
};

} // namespace

std::vector<SourcePointer> icmpTables(const IpmibIpHooks &ip)
{
    std::vector<SourcePointer> sources;
    if (ip.icmp_counters != nullptr) {
        sources.push_back(std::make_unique<host::RowSource<TotalRows>>(icmpStatsEntry, TotalRows(ip)));
        sources.push_back(std::make_unique<host::RowSource<TypeRows>>(icmpMsgStatsEntry, TypeRows(ip)));
    }
    return sources;
}

} // namespace ipmib::tables
