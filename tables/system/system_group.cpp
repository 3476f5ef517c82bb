// SPDX-License-Identifier: BSD-3-Clause
// The system group of a device that says itself what it is: sysDescr, sysObjectID, sysUpTime, sysName, ...

#include "tables/tables.h"
#include "tables/values.h"

#include "host/row_source.h"

#include <chrono>

namespace ipmib::tables
{
namespace
{

constexpr host::SubId systemGroupNode[] = {1, 3, 6, 1, 2, 1, 1};
constexpr host::SubId nobody[] = {0, 0}; // zeroDotZero: a system that does not say what it is

struct SystemRow {
    IpmibSystem system;
    host::Value upTime;
};

Cell objectIdOf(const SystemRow &row)
{
    const std::span<const host::SubId> own(row.system.object_id, row.system.object_id_length);
    return objectId(own.empty() ? std::span<const host::SubId>(nobody) : own);
}

constexpr host::RowColumn<SystemRow> systemColumns[] = {
    {1, [](const SystemRow &row) { return text(row.system.description); }}, // sysDescr
    {2, [](const SystemRow &row) { return objectIdOf(row); }},              // sysObjectID
    {3, [](const SystemRow &row) -> Cell { return row.upTime; }},           // sysUpTime
    {4, [](const SystemRow &row) { return text(row.system.contact); }},     // sysContact
    {5, [](const SystemRow &row) { return text(row.system.name); }},        // sysName
    {6, [](const SystemRow &row) { return text(row.system.location); }},    // sysLocation
    {7, [](const SystemRow &row) { return integer(row.system.services); }}, // sysServices
};

class System
{
  public:
    using Row = SystemRow;

    System(const IpmibPlatformHooks &platform, const host::SysUpTime &upTime) : platform_(platform), upTime_(upTime) {}

    std::span<const host::RowColumn<Row>> columns() const { return systemColumns; }
    bool read(Row &row) const
    {
        using namespace std::chrono;
        const auto now = duration_cast<milliseconds>(steady_clock::now().time_since_epoch()); // CLOCK_MONOTONIC
        row.upTime = upTime_.at(static_cast<std::uint64_t>(now.count()));
        return platform_.system(&row.system) == 0;
    }

  private:
    const IpmibPlatformHooks &platform_;
    const host::SysUpTime &upTime_;
};

} // namespace

SourcePointer systemGroup(const IpmibPlatformHooks &platform, const host::SysUpTime &upTime)
{
    if (platform.system == nullptr) {
        return nullptr;
    }
    using Rows = host::ScalarRows<System>;
    return std::make_unique<host::RowSource<Rows>>(systemGroupNode, Rows(System(platform, upTime)));
}

} // namespace ipmib::tables
