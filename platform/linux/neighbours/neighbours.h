// SPDX-License-Identifier: BSD-3-Clause
// The neighbours of one address family as services see them: the mirror, looked after where the kernel does not
// announce all it does.
#pragma once

#include "neighbours/neighbour_table.h"

namespace ipmib::platform
{

class Neighbours
{
  public:
    // Of AF_INET6 or AF_INET.
    Neighbours(DumpQueue &dumps, std::uint8_t family) : dumps_(dumps), kernel_(family) {}

    // The answer, when it fails, is one line for the user.
    std::string start(EventLoop &loop, int receiveBuffer);

    // Null for none. Pointers are good until the next call.
    const Neighbour *find(const NeighbourKey &key);
    const Neighbour *after(const NeighbourKey &key);
    const Neighbour *afterGlobal(const NeighbourKey &key);
    const Neighbour *afterLinkLocal(const NeighbourKey &key);

    const NeighbourTable &table() const { return table_; }
    // For tests.
    Mirror &mirror() { return mirror_; }

  private:
    void catchUp();

    DumpQueue &dumps_;
    KernelNeighbours kernel_;
    NeighbourTable table_{kernel_};
    Mirror mirror_{table_, dumps_};
    Timer rest_; // while it runs, the table is not read again for the sake of a question
};

} // namespace ipmib::platform
