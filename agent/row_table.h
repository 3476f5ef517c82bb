// SPDX-License-Identifier: BSD-3-Clause
// A registered table of rows and columns: which row and which column an identifier means, and what follows it.
#pragma once

#include "registered_table.h"
#include "varbind.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ipmib::agent
{

// Rows has the types Row and Column, the latter with the member `number`, and
//   columns()           those of the table, in ascending order
//   find(index, row)    fills the row with this index; false when there is none
//   after(index, row)   fills the first row behind an index, which may be anything and also nothing
//   index(row)          that of a row
//   value(column, row)  nothing when the row has vanished meanwhile
template <class Rows>
class RowTable : public RegisteredTable
{
  public:
    RowTable(const IpmibPlatformHooks &platform, const char *name, host::OidView root, Rows rows)
        : RegisteredTable(platform, name, root), rows_(rows)
    {
    }

  private:
    using Row = typename Rows::Row;
    using Column = typename Rows::Column;

    void get(std::span<const oid> asked, netsnmp_request_info &request) const override
    {
        const auto columns = rows_.columns();
        const auto column =
            std::ranges::find_if(columns, [&](const Column &one) { return !asked.empty() && one.number == asked[0]; });
        if (column == columns.end()) {
            netsnmp_request_set_error(&request, SNMP_NOSUCHOBJECT);
            return;
        }
        Row row{};
        if (!rows_.find(asked.subspan(1), row)) {
            netsnmp_request_set_error(&request, SNMP_NOSUCHINSTANCE);
            return;
        }
        if (const std::optional<host::Value> value = rows_.value(*column, row)) {
            setValue(*request.requestvb, *value);
        } else {
            netsnmp_request_set_error(&request, SNMP_NOSUCHINSTANCE);
        }
    }

    // The row behind the one asked for in its column, else the first one of a later column.
    void getNext(std::span<const oid> asked, netsnmp_request_info &request) const override
    {
        for (const Column &column : rows_.columns()) {
            if (!asked.empty() && column.number < asked[0]) {
                continue;
            }
            const bool begun = !asked.empty() && column.number == asked[0];
            if (answerBehind(begun ? asked.subspan(1) : std::span<const oid>(), column, *request.requestvb)) {
                return;
            }
        }
    }

    // The first row behind the index that has not vanished by the time its value is read; false when there is none.
    bool answerBehind(std::span<const oid> index, const Column &column, netsnmp_variable_list &variable) const
    {
        Row row{};
        std::array<oid, std::tuple_size_v<decltype(rows_.index(row))>> vanished;
        while (rows_.after(index, row)) {
            const auto found = rows_.index(row);
            if (const std::optional<host::Value> value = rows_.value(column, row)) {
                host::Oid name(root());
                name.append(column.number);
                name.append(found);
                setName(variable, name.view());
                setValue(variable, *value);
                return true;
            }
            if (!std::ranges::lexicographical_compare(index, found)) {
                return false; // nor may a platform whose rows do not ascend hold up the agent
            }
            std::ranges::copy(found, vanished.begin());
            index = vanished;
        }
        return false;
    }

    Rows rows_;
};

} // namespace ipmib::agent
