// SPDX-License-Identifier: BSD-3-Clause
// The rows of a table in a recording.
#pragma once

#include "walks/recording.h"

#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>

namespace ipmib::cli
{

using Identifier = std::vector<std::uint32_t>;

struct IdentifierOrder {
    bool operator()(const Identifier &left, const Identifier &right) const { return support::isInFront(left, right); }
};

// The columns of a row.
class WalkRow
{
  public:
    void add(std::uint32_t column, const RecordedObject &object) { columns_.emplace(column, &object); }

    // Nothing when the row has not the column, or with another kind of value.
    std::optional<std::uint64_t> number(std::uint32_t column) const;
    std::optional<std::string> octets(std::uint32_t column) const;
    // Of printable characters, and not empty.
    std::optional<std::string> text(std::uint32_t column) const;
    std::optional<Identifier> identifier(std::uint32_t column) const;

  private:
    const RecordedObject *find(std::uint32_t column) const;

    std::map<std::uint32_t, const RecordedObject *> columns_;
};

using WalkRows = std::map<Identifier, WalkRow, IdentifierOrder>; // by index

// The rows below a table's entry; of scalars below their group, a single row with the index 0. The recording outlives
// them.
WalkRows rowsBelow(const Recording &recording, const Identifier &entry);
// The scalars of a group.
WalkRow scalarsBelow(const Recording &recording, const Identifier &group);

} // namespace ipmib::cli
