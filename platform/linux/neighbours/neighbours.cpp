// SPDX-License-Identifier: BSD-3-Clause
// The neighbours of one address family as services see them: the mirror, looked after where the kernel does not
// announce all it does.
#include "neighbours/neighbours.h"

namespace ipmib::platform
{
namespace
{

// A table up to this size is read again within the request, below half a millisecond; a larger one between packets.
constexpr std::size_t smallTable = 500;
// Reading costs about 0.6 us a row: a fiftieth of the time, at most, and only while somebody asks.
constexpr unsigned restMs = 1'000;
constexpr std::size_t rowsPerRestMs = 33;

constexpr int readingsAtStart = 3; // of a table that changes meanwhile

} // namespace

std::string Neighbours::start(EventLoop &loop, int receiveBuffer)
{
    if (!kernel_.open()) {
        return std::string(table_.name()) + ": cannot open a netlink socket: " + kernel_.error();
    }
    if (!rest_.open(loop, [] {})) {
        return std::string(table_.name()) + ": cannot create a timer";
    }
    std::string error = mirror_.start(loop, receiveBuffer);
    for (int i = 1; error.empty() && table_.readingMayBeIncomplete() && i < readingsAtStart; ++i) {
        mirror_.refresh();
        error = dumps_.runToEnd();
    }
    return error;
}

// One that does not age is announced in full. For any other the kernel is asked: 3 us in a request for just this one.
const Neighbour *Neighbours::find(const NeighbourKey &key)
{
    const Neighbour *row = table_.find(key);
    if (row != nullptr && row->type == NeighbourType::fixed) {
        return row;
    }
    table_.update(key);
    return table_.find(key);
}

const Neighbour *Neighbours::after(const NeighbourKey &key)
{
    catchUp();
    return table_.after(key);
}

const Neighbour *Neighbours::afterGlobal(const NeighbourKey &key)
{
    catchUp();
    return table_.afterGlobal(key);
}

const Neighbour *Neighbours::afterLinkLocal(const NeighbourKey &key)
{
    catchUp();
    return table_.afterLinkLocal(key);
}

void Neighbours::catchUp()
{
    if (rest_.armed() || mirror_.refreshing()) {
        return;
    }
    rest_.arm(restMs + static_cast<unsigned>(table_.size() / rowsPerRestMs));
    if (!table_.mayBeBehind()) {
        return;
    }
    const bool now = table_.size() <= smallTable && dumps_.idle();
    mirror_.refresh();
    if (now) {
        dumps_.runToEnd();
    }
}

} // namespace ipmib::platform
