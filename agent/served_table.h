// SPDX-License-Identifier: BSD-3-Clause
// The tables and scalars that a module serves, by the names and identifiers that people know them by.
#pragma once

#include "host/resolver.h"

#include <string>
#include <vector>

namespace ipmib::agent
{

struct ServedTable {
    const char *name;     // of the table, or of the scalar
    host::Oid identifier; // of the table; of the scalar, without its instance
    host::Oid instances;  // what lies below it is ours: the table's entry, or the scalar's instance
    std::vector<host::Oid>
        objects; // one by one, as far as they are served: the table's columns, or the scalar's instance
    const host::Resolver::Region *region;
};

// All of them, ascending. The resolver must outlive the answer.
std::vector<ServedTable> servedTables(const host::Resolver &resolver);

std::string textOf(host::OidView identifier);

} // namespace ipmib::agent
