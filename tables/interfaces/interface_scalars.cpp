// SPDX-License-Identifier: BSD-3-Clause
// ifNumber and ifTableLastChange.

#include "tables/tables.h"
#include "tables/values.h"

#include "host/row_source.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId interfacesGroup[] = {1, 3, 6, 1, 2, 1, 2};
constexpr host::SubId ifMibObjects[] = {1, 3, 6, 1, 2, 1, 31, 1};

// What the scalars are made of is read when one of them is.
class Interfaces
{
  public:
    struct Row {
        const IpmibInterfaceHooks *interfaces;
        const host::SysUpTime *upTime;
    };

    Interfaces(Row row, std::span<const host::RowColumn<Row>> columns) : row_(row), columns_(columns) {}

    std::span<const host::RowColumn<Row>> columns() const { return columns_; }
    bool read(Row &row) const { return row = row_, true; }

  private:
    Row row_;
    std::span<const host::RowColumn<Row>> columns_;
};

using Row = Interfaces::Row;

constexpr host::RowColumn<Row> inInterfaces[] = {
    {1, [](const Row &row) { return integer(row.interfaces->count()); }}, // ifNumber
};
constexpr host::RowColumn<Row> inIfMib[] = {
    {5, [](const Row &row) { return Cell(row.upTime->at(row.interfaces->rows_changed_ms())); }}, // ifTableLastChange
};

SourcePointer scalars(host::OidView group, Row row, std::span<const host::RowColumn<Row>> columns)
{
    using Rows = host::ScalarRows<Interfaces>;
    return std::make_unique<host::RowSource<Rows>>(group, Rows(Interfaces(row, columns)));
}

} // namespace

SourcePointer interfaceScalars(const IpmibInterfaceHooks &interfaces)
{
    return scalars(interfacesGroup, {&interfaces, nullptr}, inInterfaces);
}

SourcePointer ifTableLastChange(const IpmibInterfaceHooks &interfaces, const host::SysUpTime &upTime)
{
    return scalars(ifMibObjects, {&interfaces, &upTime}, inIfMib);
}

} // namespace ipmib::tables
