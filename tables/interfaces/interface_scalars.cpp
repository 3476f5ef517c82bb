// SPDX-License-Identifier: BSD-3-Clause
// ifNumber and ifTableLastChange.

#include "tables/interfaces/interface_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId interfacesGroup[] = {1, 3, 6, 1, 2, 1, 2};

struct InterfaceScalars {
    const IpmibInterfaceHooks *interfaces;
    const host::SysUpTime *upTime;
};
using InterfaceScalarColumn = host::RowColumn<InterfaceScalars>;

// What the scalars are made of is read when one of them is.
class Interfaces
{
  public:
    using Row = InterfaceScalars;

    Interfaces(Row row, std::span<const InterfaceScalarColumn> columns) : row_(row), columns_(columns) {}

    std::span<const InterfaceScalarColumn> columns() const { return columns_; }
    bool read(Row &row) const { return row = row_, true; }

  private:
    Row row_;
    std::span<const InterfaceScalarColumn> columns_;
};

constexpr InterfaceScalarColumn inInterfaces[] = {
    {1, [](const InterfaceScalars &row) { return integer(row.interfaces->count()); }}, // ifNumber
};
constexpr InterfaceScalarColumn inIfMib[] = {
    {5,
     [](const InterfaceScalars &row) {
         return Cell(row.upTime->at(row.interfaces->rows_changed_ms()));
     }}, // ifTableLastChange
};

SourcePointer scalars(host::OidView group, InterfaceScalars row, std::span<const InterfaceScalarColumn> columns)
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
