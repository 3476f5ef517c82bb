// SPDX-License-Identifier: BSD-3-Clause
// A handler's table, proved at compile time to answer what the tree describes.
#pragma once

#include "frame/walk.h"
#include "mibtree/catalogue.h"

#include <iterator>

namespace ipmib
{

template <std::size_t N>
constexpr bool typesAgree(std::uint32_t id, const Column (&columns)[N])
{
    for (std::uint32_t place = 0; place < N; ++place) {
        if (columns[place].valueType != mibtree::valueType(id, place + 1)) {
            return false;
        }
    }
    return true;
}

// The table of these columns; how many of them are its index, the tree knows.
template <std::uint32_t id, const auto &columns>
inline constexpr Table describedTable = [] {
    static_assert(std::size(columns) == mibtree::servedColumns(id),
                  "a table has exactly the columns that the tree gives a parameter id");
    static_assert(typesAgree(id, columns), "a column's value type is the one that the tree's syntax asks for");
    return Table{id, mibtree::indexColumns(id), static_cast<std::uint32_t>(std::size(columns)), columns};
}();

} // namespace ipmib
