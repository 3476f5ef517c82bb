// SPDX-License-Identifier: BSD-3-Clause
// Remembers where the latest walks over a table stand. An identifier that was handed out here is a row of the module's
// own making, so its successor may be asked for without precautions; everything else is a guess of the client's. A row
// of one instance of the platform need not be one of another's.
#pragma once

#include "oid.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ipmib::host
{

class RowCursors
{
  public:
    void select(std::size_t instance)
    {
        if (instance >= instances_.size()) {
            instances_.resize(instance + 1);
        }
        selected_ = instance;
    }

    void forget(std::size_t instance)
    {
        if (instance < instances_.size()) {
            instances_[instance] = {};
        }
    }

    // Whether a walk stands at this row.
    bool has(OidView row) const
    {
        const Walks &walks = instances_[selected_];
        return find(walks, row) < walks.rows.size();
    }

    // A walk moves on to a row, or begins there.
    void move(OidView from, OidView to)
    {
        Walks &walks = instances_[selected_];
        std::size_t slot = find(walks, from);
        if (slot == walks.rows.size()) {
            slot = walks.next;
            walks.next = (walks.next + 1) % most;
            walks.rows.resize(std::max(walks.rows.size(), slot + 1));
        }
        walks.rows[slot].assign(to.begin(), to.end());
        walks.latest = slot;
    }

  private:
    static constexpr std::size_t most = 8; // more walks at once cost them a second request now and then

    struct Walks {
        std::vector<std::vector<SubId>> rows; // that have been walked over; of their own length, for there are many
        std::size_t next = 0;
        std::size_t latest = 0; // the slot that was moved last
    };

    static std::size_t find(const Walks &walks, OidView row)
    {
        const auto isHere = [row](const std::vector<SubId> &each) { return std::ranges::equal(each, row); };
        if (walks.latest < walks.rows.size() && isHere(walks.rows[walks.latest])) { // mostly it moves on
            return walks.latest;
        }
        const auto found = std::ranges::find_if(walks.rows, isHere);
        return static_cast<std::size_t>(found - walks.rows.begin());
    }

    std::vector<Walks> instances_ = std::vector<Walks>(1);
    std::size_t selected_ = 0;
};

} // namespace ipmib::host
