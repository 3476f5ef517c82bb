// SPDX-License-Identifier: BSD-3-Clause
// The neighbours of one address family in this network namespace, by interface and address.
#pragma once

#include "core/kernel_table.h"
#include "neighbours/kernel_neighbours.h"

namespace ipmib::platform
{

class NeighbourTable : public KernelTable
{
  public:
    explicit NeighbourTable(KernelNeighbours &kernel) : kernel_(kernel) {}

    // Pointers are good until the table changes.
    const Neighbour *find(const NeighbourKey &key) const { return rows_.find(key); }
    const Neighbour *after(const NeighbourKey &key) const { return rows_.after(key); }
    // The next one of the key's interface, outside or inside fe80::/10; null for none.
    const Neighbour *afterGlobal(const NeighbourKey &key) const { return platform::afterGlobal(rows_, key); }
    const Neighbour *afterLinkLocal(const NeighbourKey &key) const { return platform::afterLinkLocal(rows_, key); }
    std::size_t size() const { return rows_.size(); }
    std::size_t memory() const { return rows_.memory(); }
    template <class Visit>
    void each(Visit visit) const
    {
        rows_.each(visit);
    }

    // Asks the kernel for this one, and keeps the answer.
    void update(const NeighbourKey &key);
    // Whether the kernel may know more than it has announced.
    bool mayBeBehind();
    // Whether the last reading may have passed rows over.
    bool readingMayBeIncomplete() const { return incomplete_; }

    const char *name() const override;
    std::vector<unsigned> groups() const override { return {RTNLGRP_NEIGH}; }
    RtnetlinkRequest dump(std::size_t which) override;
    void applyDump(const nlmsghdr &message, Generation generation) override;
    bool sweep(Generation generation) override;
    void applyChange(const nlmsghdr &message) override;

  private:
    void take(NeighbourNews news, Neighbour &neighbour);
    void keepStamp(Neighbour &neighbour) const;
    void askForWhatTheDumpPassedOver(Generation generation);

    KernelNeighbours &kernel_;
    NeighbourRows rows_;
    bool anyDynamic_ = false;
    bool incomplete_ = false;
    bool wasEmpty_ = true; // at the beginning of the last dump, as what follows
    std::optional<NeighbourEntryCounts> counts_;
    std::uint64_t added_ = 0; // by announcements, since then
    std::uint64_t removed_ = 0;
};

} // namespace ipmib::platform
