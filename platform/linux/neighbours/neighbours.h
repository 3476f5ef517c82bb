// SPDX-License-Identifier: BSD-3-Clause
// The neighbours of one address family as services see them: the mirror, looked after where the kernel does not
// announce all it does.
#pragma once

#include "core/mirror.h"
#include "neighbours/neighbour_table.h"

namespace ipmib::platform
{

class Neighbours
{
  public:
    // Of AF_INET6 or AF_INET.
    Neighbours(DumpQueue &dumps, std::uint8_t family) : dumps_(dumps), kernel_(family) {}

    // The answer, when it fails, is one line for the user.
    std::string start(PlatformLoop &loop, int receiveBuffer);

    // Null for none. Pointers are good until the next call. None of them reads the table: they ask the kernel for
    // single entries, at most `mostQuestions` between two readings of the table.
    const Neighbour *ask(const NeighbourKey &key);
    const Neighbour *askAfter(const NeighbourKey &key);
    const Neighbour *askAfterGlobal(const NeighbourKey &key);
    const Neighbour *askAfterLinkLocal(const NeighbourKey &key);

    const NeighbourTable &table() const { return table_; }
    const Mirror &mirror() const { return mirror_; }
    // For tests.
    Mirror &mirror() { return mirror_; }
    const KernelNeighbours &kernel() const { return kernel_; }

    static constexpr unsigned mostQuestions = 256; // below a millisecond, all of them

  private:
    using Step = const Neighbour *(NeighbourTable::*)(const NeighbourKey &) const;

    const Neighbour *askNext(const NeighbourKey &key, Step step);
    void catchUp();
    void check();

    DumpQueue &dumps_;
    KernelNeighbours kernel_;
    NeighbourTable table_{kernel_};
    Mirror mirror_{table_, dumps_};
    Timer check_;            // between packets, whether the table must be read again
    Timer rest_;             // while it runs, that is not asked for the sake of a question
    unsigned questions_ = 0; // that a walk may still ask until the table is read again
};

} // namespace ipmib::platform
