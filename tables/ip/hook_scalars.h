// SPDX-License-Identifier: BSD-3-Clause
// Scalars that come from one record of the platform's.
#pragma once

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{

template <class Record>
class HookScalars
{
  public:
    using Row = Record;
    // False when the platform has nothing to say.
    using Read = bool (*)(const IpmibIpHooks &ip, Record &record);

    HookScalars(const IpmibIpHooks &ip, Read reader, std::span<const host::RowColumn<Record>> columns)
        : ip_(ip), read_(reader), columns_(columns)
    {
    }

    std::span<const host::RowColumn<Record>> columns() const { return columns_; }
    bool read(Record &record) const { return read_(ip_, record); }

  private:
    const IpmibIpHooks &ip_;
    Read read_;
    std::span<const host::RowColumn<Record>> columns_;
};

// The scalars directly below this node.
template <class Record, std::size_t N>
SourcePointer scalarsOf(host::OidView group, const IpmibIpHooks &ip, typename HookScalars<Record>::Read read,
                        const host::RowColumn<Record> (&columns)[N])
{
    using Rows = host::ScalarRows<HookScalars<Record>>;
    return std::make_unique<host::RowSource<Rows>>(group, Rows(HookScalars<Record>(ip, read, columns)));
}

} // namespace ipmib::tables
