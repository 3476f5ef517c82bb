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
    std::uint64_t hash = object;
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
    hash = mixed(hash, std::uint64_t{ownAddress} << 32 | std::uint32_t{sourceLength} << 24 | std::uint32_t{tos} << 16 |
                           std::uint32_t{type} << 8 | protocol);
    return mixed(hash, std::uint64_t{rest} << 1 | (withinHost ? 1 : 0));
}

} // namespace ipmib::platform
