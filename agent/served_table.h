// SPDX-License-Identifier: BSD-3-Clause
// The tables and scalars that a module serves, by the names and identifiers that people know them by.
#pragma once

#include "host/resolver.h"

#include <string>
#include <vector>

namespace ipmib::agent
{

struct ServedTable {
    const char *name;                     // of the table, or of the scalar
    host::Oid identifier;                 // of the table; of the scalar, without its instance
    const host::Resolver::Region *region; // the table's entry, or the scalar
    host::Oid inner;                      // the table's entry, or the scalar's instance
    // What is served, one by one: the table's columns, or the scalar.
    std::vector<host::Oid> objects;
};

// All of them, ascending. The resolver must outlive the answer.
std::vector<ServedTable> servedTables(const host::Resolver &resolver);

std::string textOf(host::OidView identifier);

} // namespace ipmib::agent
