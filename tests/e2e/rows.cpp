// SPDX-License-Identifier: BSD-3-Clause
// Rows are lines of a net-snmp program with numeric identifiers.

#include "rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>

namespace ipmib::e2e
{

Identifier identifierOf(const std::string &row)
{
    Identifier ids;
    std::istringstream stream(row.substr(0, row.find(' ')));
    char dot;
    for (std::uint64_t id; stream >> dot >> id;) {
        ids.push_back(id);
    }
    return ids;
}

void expectIncreasing(const Words &rows)
{
    for (std::size_t i = 1; i < rows.size(); ++i) {
        EXPECT_LT(identifierOf(rows[i - 1]), identifierOf(rows[i])) << rows[i];
    }
}

bool holds(const Words &rows, const std::string &row)
{
    return std::ranges::find(rows, row) != rows.end();
}

Words rowsBelow(const Words &rows, const std::string &root)
{
    Words found;
    std::ranges::copy_if(rows, std::back_inserter(found),
                         [&](const std::string &row) { return row.starts_with(root + "."); });
    return found;
}

std::set<Identifier> identifiersOf(const Words &rows)
{
    std::set<Identifier> identifiers;
    for (const std::string &row : rows) {
        // A string may go over several lines.
        if (row.starts_with('.')) {
            identifiers.insert(identifierOf(row));
        }
    }
    return identifiers;
}

} // namespace ipmib::e2e
