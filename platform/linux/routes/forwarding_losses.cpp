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
    std::vector<bool> lost(hops_.end());
    bool any = false;
    hops_.each([&](std::uint32_t number, const HopSet &set) {
        bool leadsThere = false;
        bool alive = false;
        set.each([&](const Hop &hop) {
            leadsThere = leadsThere || hop.ifIndex == ifIndex;
            alive = alive || deadLinks_.count(hop.ifIndex) == 0;
            return true;
        });
        lost[number] = set.object == 0 && leadsThere && (!alive || loss == LinkLoss::gone);
        any = any || lost[number];
    });
    if (loss == LinkLoss::gone) {
        deadLinks_.erase(ifIndex); // another link may get this number
    }
    if (any) {
        eraseIf([&](const RouteRecord &record) {
            return lost[record.hops] && !(loss == LinkLoss::down && classes_[record.routeClass].withinHost);
        });
    }
}

void ForwardingTable::addressGone(std::uint32_t address)
{
    std::vector<bool> lost(classes_.end());
    bool any = false;
    classes_.each([&](std::uint32_t number, const RouteClass &routeClass) {
        lost[number] = routeClass.ownAddress == address;
        any = any || lost[number];
    });
    if (any) {
        eraseIf([&](const RouteRecord &record) { return lost[record.routeClass]; });
    }
}

void ForwardingTable::nexthopsGone(const std::vector<std::uint32_t> &ids)
{
    std::vector<bool> lost(hops_.end());
    bool any = false;
    for (const std::uint32_t id : ids) {
        if (const std::uint32_t number = hops_.find(HopSet::ofObject(id)); number != HopSets::none) {
            lost[number] = true;
            any = true;
        }
    }
    if (any) {
        eraseIf([&](const RouteRecord &record) { return lost[record.hops]; });
    }
}

void ForwardingTable::nexthopsChanged()
{
    objectsChanged_ = !objectRows_.empty();
    ++version_;
}

} // namespace ipmib::platform
