// SPDX-License-Identifier: BSD-3-Clause
// What a caller's interface selection holds: which type codes, which groups and which conditions.
#pragma once

#include "links/link_table.h"

#include <ipmib/records.h>

namespace ipmib::platform
{

class Selection
{
  public:
    // The selection that lives in the caller's storage.
    static Selection &in(IfSelection &storage) { return reinterpret_cast<Selection &>(storage); }

    bool begin(std::uint32_t kind);
    bool addType(std::uint32_t code);
    bool addGroup(std::uint32_t group);
    bool addCondition(std::uint32_t condition);

    // The selected link with the lowest ifIndex above the given one; null for none.
    const Link *after(const LinkTable &links, std::uint32_t ifIndex) const;

  private:
    bool holds(const Link &link) const;

    std::uint64_t types_[4]; // one bit for each code below 256
    bool allTypes_;
};

static_assert(sizeof(Selection) <= sizeof(IfSelection) && alignof(Selection) <= alignof(IfSelection));
static_assert(std::is_trivial_v<Selection>, "the caller's storage needs no construction");

} // namespace ipmib::platform
