// SPDX-License-Identifier: BSD-3-Clause
// The neighbours of one address family as services see them: the mirror, looked after where the kernel does not
// announce all it does.
#include "neighbours/neighbours.h"

#include "core/dump_queue.h"

namespace ipmib::platform
{
namespace
{

// Reading costs about 0.6 us a row: a fiftieth of the time, at most, and only while somebody asks.
constexpr unsigned restMs = 1'000;
constexpr std::size_t rowsPerRestMs = 33;

constexpr int readingsAtStart = 3; // of a table that changes meanwhile

} // namespace

std::string Neighbours::start(PlatformLoop &loop, int receiveBuffer)
{
    if (!kernel_.open()) {
        return std::string(table_.name()) + ": cannot open a netlink socket: " + kernel_.error();
    }
    if (!rest_.open(loop, [] {}) || !check_.open(loop, [this] { check(); })) {
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
const Neighbour *Neighbours::ask(const NeighbourKey &key)
{
    mirror_.readForPacket();
    const Neighbour *row = table_.find(key);
    if (row != nullptr && row->type == NeighbourType::fixed) {
        return row;
    }
    table_.update(key);
    return table_.find(key);
}

const Neighbour *Neighbours::askAfter(const NeighbourKey &key)
{
    return askNext(key, &NeighbourTable::after);
}

const Neighbour *Neighbours::askAfterGlobal(const NeighbourKey &key)
{
    return askNext(key, &NeighbourTable::afterGlobal);
}

const Neighbour *Neighbours::askAfterLinkLocal(const NeighbourKey &key)
{
    return askNext(key, &NeighbourTable::afterLinkLocal);
}

// Until the table has been read again, the kernel is asked for the rows that a walk comes upon, as in `ask`.
const Neighbour *Neighbours::askNext(const NeighbourKey &key, Step step)
{
    mirror_.readForPacket();
    catchUp();
    const Neighbour *row = (table_.*step)(key);
    while (row != nullptr && row->type == NeighbourType::dynamic && questions_ > 0 &&
           (check_.armed() || mirror_.refreshing())) {
        --questions_;
        const NeighbourKey found = row->key();
        table_.update(found);
        row = table_.find(found);
        if (row != nullptr) {
            break;
        }
        row = (table_.*step)(key); // the kernel has it no more
    }
    return row;
}

void Neighbours::catchUp()
{
    if (rest_.armed() || mirror_.refreshing()) {
        return;
    }
    rest_.arm(restMs + static_cast<unsigned>(table_.size() / rowsPerRestMs));
    check_.arm(0);
    questions_ = mostQuestions;
}

// What is announced already is not what the kernel keeps to itself.
void Neighbours::check()
{
    if (!mirror_.readTurn()) {
        check_.arm(0);
    } else if (table_.mayBeBehind()) {
        mirror_.refresh();
    }
}

} // namespace ipmib::platform
