// SPDX-License-Identifier: BSD-3-Clause
// The forwarding table of one version of IP: what the kernel takes along without a word.
#include "routes/forwarding_table.h"

namespace ipmib::platform
{

void ForwardingTable::noteDeadLinks(const Route &route)
{
    for (const RouteNexthop &nexthop : route.nexthops) {
        if (nexthop.dead) {
            deadLinks_.insert(nexthop.ifIndex);
        } else if (!deadLinks_.empty()) {
            deadLinks_.erase(nexthop.ifIndex);
        }
    }
}

void ForwardingTable::linkDown(std::uint32_t ifIndex, LinkLoss loss)
{
    deadLinks_.insert(ifIndex);
    std::vector<std::uint32_t> lost = hops_.of(HopSets::By::link, ifIndex);
    std::erase_if(lost, [&](std::uint32_t number) {
        const HopSet &set = hops_[number];
        const bool alive =
            !set.each([this](const Hop &hop) { return deadLinks_.count(hop.ifIndex) != 0; }) && loss != LinkLoss::gone;
        return alive || (loss == LinkLoss::down && set.withinHost);
    });
    if (loss == LinkLoss::gone) {
        deadLinks_.erase(ifIndex); // another link may get this number
    }
    retire(lost);
}

void ForwardingTable::addressGone(std::uint32_t address)
{
    retire(hops_.of(HopSets::By::ownAddress, address));
}

void ForwardingTable::nexthopsGone(const std::vector<std::uint32_t> &ids)
{
    for (const std::uint32_t id : ids) {
        retire(hops_.of(HopSets::By::object, id));
    }
}

void ForwardingTable::nexthopsChanged()
{
    objectsChanged_ = !objectRows_.empty();
    ++version_;
}

} // namespace ipmib::platform
