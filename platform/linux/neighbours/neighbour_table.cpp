// SPDX-License-Identifier: BSD-3-Clause
// The neighbours of one address family in this network namespace, by interface and address.
#include "neighbours/neighbour_table.h"

#include "core/uptime.h"

#include <linux/neighbour.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>

namespace ipmib::platform
{
namespace
{

constexpr std::size_t mostQuestions = 256; // after a dump: below a millisecond

} // namespace

void NeighbourTable::update(const NeighbourKey &key)
{
    Neighbour neighbour{};
    NeighbourNews news = kernel_.ask(key, neighbour);
    if (news == NeighbourNews::gone) {
        rows_.erase(key);
    } else {
        take(news, neighbour);
    }
}

// Not announced: an entry that begins to be resolved, one that is made without a valid address, and the change to the
// state `delay`. Only entries that age can have such changes.
bool NeighbourTable::mayBeBehind()
{
    if (anyDynamic_ || incomplete_ || !counts_) {
        return true;
    }
    const auto now = kernel_.counts();
    return !now || now->made - counts_->made != added_ || now->destroyed - counts_->destroyed != removed_;
}

const char *NeighbourTable::name() const
{
    return kernel_.family() == AF_INET ? "IPv4 neighbours" : "neighbours";
}

RtnetlinkRequest NeighbourTable::dump(std::size_t)
{
    wasEmpty_ = rows_.empty();
    counts_ = kernel_.counts();
    added_ = 0;
    removed_ = 0;
    RtnetlinkRequest request(RTM_GETNEIGH, NLM_F_DUMP);
    request.family<ndmsg>().ndm_family = kernel_.family();
    return request;
}

void NeighbourTable::applyDump(const nlmsghdr &message, Generation generation)
{
    Neighbour neighbour;
    if (readNeighbour(message, kernel_.family(), monotonicMilliseconds(), neighbour) == NeighbourNews::present) {
        keepStamp(neighbour);
        rows_.put(neighbour, generation);
    }
}

bool NeighbourTable::sweep(Generation generation)
{
    askForWhatTheDumpPassedOver(generation);
    rows_.sweep(generation);
    anyDynamic_ = false;
    rows_.each([this](const Neighbour &row) { anyDynamic_ = anyDynamic_ || row.type == NeighbourType::dynamic; });
    return true;
}

// Between two datagrams of a dump the kernel remembers a place in its hash table by counting, and does not mark the
// dump when the table changed meanwhile: a removal in front of the place, or a larger hash table, makes it pass over
// rows that were there all the time.
void NeighbourTable::askForWhatTheDumpPassedOver(Generation generation)
{
    const auto now = kernel_.counts();
    incomplete_ = false;
    if (now && counts_ && now->destroyed == counts_->destroyed && now->rehashes == counts_->rehashes) {
        return;
    }
    std::vector<NeighbourKey> missing;
    rows_.eachNotOf(generation, [&](const Neighbour &row) {
        missing.push_back(row.key());
        return missing.size() <= mostQuestions;
    });
    incomplete_ = wasEmpty_ || missing.size() > mostQuestions;
    if (incomplete_) {
        return;
    }
    for (const NeighbourKey &key : missing) {
        Neighbour neighbour;
        if (kernel_.ask(key, neighbour) == NeighbourNews::present) {
            keepStamp(neighbour);
            rows_.put(neighbour, generation);
        }
    }
}

void NeighbourTable::applyChange(const nlmsghdr &message)
{
    Neighbour neighbour;
    const NeighbourNews news = readNeighbour(message, kernel_.family(), monotonicMilliseconds(), neighbour);
    removed_ += message.nlmsg_type == RTM_DELNEIGH && news == NeighbourNews::gone ? 1 : 0;
    take(news, neighbour);
}

void NeighbourTable::take(NeighbourNews news, Neighbour &neighbour)
{
    if (news == NeighbourNews::present) {
        keepStamp(neighbour);
        anyDynamic_ = anyDynamic_ || neighbour.type == NeighbourType::dynamic;
        added_ += rows_.put(neighbour) ? 1 : 0;
    } else if (news == NeighbourNews::gone) {
        rows_.erase(neighbour.key());
    }
}

// The time comes as an age with a grain of its own: reading it twice must not look like a change.
void NeighbourTable::keepStamp(Neighbour &neighbour) const
{
    const Neighbour *known = rows_.find(neighbour.key());
    if (known == nullptr || known->state != neighbour.state || known->type != neighbour.type ||
        std::memcmp(known->linkLayer, neighbour.linkLayer, sizeof neighbour.linkLayer) != 0) {
        return;
    }
    const std::uint32_t early = std::min(known->lastUpdatedS, neighbour.lastUpdatedS);
    const std::uint32_t late = std::max(known->lastUpdatedS, neighbour.lastUpdatedS);
    if (late - early <= 1) {
        neighbour.lastUpdatedS = known->lastUpdatedS;
    }
}

} // namespace ipmib::platform
