// SPDX-License-Identifier: BSD-3-Clause
// Remembers where the latest walks over a table stand. An identifier that was handed out here is a row of the module's
// own making, so its successor may be asked for without precautions; everything else is a guess of the client's.
#pragma once

#include "oid.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace ipmib::host
{

class RowCursors
{
  public:
    // Whether a walk stands at this row.
    bool has(OidView row) const { return find(row) < rows_.size(); }

    // A walk moves on to a row, or begins there.
    void move(OidView from, OidView to)
    {
        std::size_t slot = find(from);
        if (slot == rows_.size()) {
            slot = next_;
            next_ = (next_ + 1) % rows_.size();
        }
        rows_[slot].assign(to);
        latest_ = slot;
    }

  private:
    std::size_t find(OidView row) const
    {
        const auto isHere = [row](const Oid &each) { return std::ranges::equal(each.view(), row); };
        if (isHere(rows_[latest_])) { // mostly the walk that moved last moves on
            return latest_;
        }
        const auto found = std::find_if(rows_.begin(), rows_.end(), isHere);
        return static_cast<std::size_t>(found - rows_.begin());
    }

    std::array<Oid, 8> rows_; // more walks at once cost them a second request now and then
    std::size_t next_ = 0;
    std::size_t latest_ = 0; // the slot that was moved last
};

} // namespace ipmib::host
