// SPDX-License-Identifier: BSD-3-Clause
// Where routes lead: sets of next hops, each kept once however many routes share it.
#include "routes/hop_sets.h"

#include <algorithm>

namespace ipmib::platform
{

HopSet HopSet::of(std::vector<Hop> hops)
{
    std::sort(hops.begin(), hops.end());
    HopSet set;
    if (!hops.empty()) {
        set.first = hops.front();
        set.others.assign(hops.begin() + 1, hops.end());
    }
    return set;
}

HopSet HopSet::ofObject(std::uint32_t id)
{
    HopSet set;
    set.object = id;
    return set;
}

std::uint64_t HopSet::hash() const
{
    std::uint64_t hash = mixed(std::uint64_t{object} << 32 | ownAddress, withinHost ? 1 : 0);
    each([&](const Hop &hop) {
        hash =
            mixed(mixed(mixed(hash, hop.gateway.high), hop.gateway.low), std::uint64_t{hop.ifIndex} << 8 | hop.family);
        return true;
    });
    return hash;
}

std::uint64_t RouteClass::hash() const
{
    std::uint64_t hash = mixed(mixed(0, source.high), source.low);
    hash = mixed(hash, std::uint64_t{table} << 32 | metric);
    hash =
        mixed(hash, std::uint32_t{sourceLength} << 24 | std::uint32_t{tos} << 16 | std::uint32_t{type} << 8 | protocol);
    return mixed(hash, rest);
}

std::uint32_t HopSets::take(const HopSet &set)
{
    const std::uint32_t number = sets_.take(set);
    if (sets_.uses(number) == 1) {
        eachPlace(number, [this](const Place &place) { places_.put(place); });
    }
    return number;
}

void HopSets::leave(std::uint32_t number)
{
    if (sets_.uses(number) == 1 && !sets_.isRetired(number)) {
        forgetPlaces(number);
    }
    sets_.leave(number);
}

void HopSets::retire(std::uint32_t number)
{
    forgetPlaces(number);
    sets_.retire(number);
}

std::vector<std::uint32_t> HopSets::of(By by, std::uint32_t which) const
{
    std::vector<std::uint32_t> numbers;
    places_.eachFrom(Place{by, which, 0}, [&](const Place &place) {
        const bool here = place.by == by && place.which == which;
        if (here) {
            numbers.push_back(place.number);
        }
        return here;
    });
    return numbers;
}

template <class Visit>
void HopSets::eachPlace(std::uint32_t number, Visit visit) const
{
    const HopSet &set = sets_[number];
    if (set.object != 0) {
        visit(Place{By::object, set.object, number});
    } else {
        set.each([&](const Hop &hop) {
            visit(Place{By::link, hop.ifIndex, number});
            return true;
        });
    }
    if (set.ownAddress != 0) {
        visit(Place{By::ownAddress, set.ownAddress, number});
    }
}

void HopSets::forgetPlaces(std::uint32_t number)
{
    eachPlace(number, [this](const Place &place) { places_.erase(place); });
}

} // namespace ipmib::platform
