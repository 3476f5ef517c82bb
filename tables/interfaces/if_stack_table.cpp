// SPDX-License-Identifier: BSD-3-Clause
// ifStackTable: which interface lies over which, and ifStackLastChange.

#include "tables/interfaces/interface_rows.h"
#include "tables/ip/hook_scalars.h"
#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ifStackEntry[] = {1, 3, 6, 1, 2, 1, 31, 1, 2, 1};

class StackRows
{
  public:
    using Row = IpmibStack;
    using Index = std::array<host::SubId, 2>;
    static constexpr host::SubIdRange shape[] = {{0, INT32_MAX}, {0, INT32_MAX}};

    explicit StackRows(const IpmibIpHooks &ip) : ip_(ip) {}

    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const { return ip_.find_stack(index[0], index[1], &row) == 0; }
    bool next(const Index *behind, Row &row) const
    {
        const Index index = behind == nullptr ? Index{} : *behind;
        return ip_.next_stack(index[0], index[1], &row) == 0;
    }
    Index indexOf(const Row &row) const { return {row.higher, row.lower}; }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {3, [](const Row &) { return integer(rowActive); }}, // ifStackStatus
    };

    const IpmibIpHooks &ip_;
};

constexpr host::RowColumn<std::uint32_t> lastChange[] = {
    {6, [](const std::uint32_t &moment) { return ticks(moment); }}, // ifStackLastChange
};

} // namespace

SourcePointer ifStackTable(const IpmibIpHooks &ip)
{
    if (ip.find_stack == nullptr || ip.next_stack == nullptr) {
        return nullptr;
    }
    return std::make_unique<host::RowSource<StackRows>>(ifStackEntry, StackRows(ip));
}

SourcePointer ifStackLastChange(const IpmibIpHooks &ip)
{
    if (ip.stack_changed == nullptr) {
        return nullptr;
    }
    const auto read = [](const IpmibIpHooks &hooks, std::uint32_t &moment) {
        moment = hooks.stack_changed();
        return true;
    };
    return scalarsOf<std::uint32_t>(ifMibObjects, ip, read, lastChange);
}

} // namespace ipmib::tables
