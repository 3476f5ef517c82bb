// SPDX-License-Identifier: BSD-3-Clause
// A simulated device: what the scenario says of it, seen at one moment. On an interface that does not run nothing is
// listed: it has no addresses, and nobody can be reached there.
#include "device/device.h"

#include <algorithm>

namespace ipmib::simulated
{
namespace
{

constexpr Time perSecond = 1'000;

template <class Interfaces>
auto placeOf(Interfaces &interfaces, std::uint32_t ifIndex)
{
    return std::lower_bound(
        interfaces.begin(), interfaces.end(), ifIndex,
        [](const Interface &interface, std::uint32_t wanted) { return interface.ifIndex < wanted; });
}

} // namespace

Interface *Device::add(Interface interface)
{
    const auto place = placeOf(interfaces_, interface.ifIndex);
    if ((place != interfaces_.end() && place->ifIndex == interface.ifIndex) ||
        !names_.emplace(interface.name, interface.ifIndex).second) {
        return nullptr;
    }
    return &*interfaces_.insert(place, std::move(interface));
}

const Interface *Device::named(const std::string &name) const
{
    const auto found = names_.find(name);
    return found == names_.end() ? nullptr : &*placeOf(interfaces_, found->second);
}

std::uint32_t Device::nextIfIndex() const
{
    return interfaces_.empty() ? 1 : interfaces_.back().ifIndex % highestIfIndex + 1;
}

bool Device::add(const Router &router)
{
    Routers &table = router.address.isLinkLocal() ? linkLocalRouters_ : globalRouters_;
    return table.find(router.key()) == nullptr && table.put(router);
}

std::uint32_t Device::elapsedS() const
{
    return static_cast<std::uint32_t>(time_ / perSecond);
}

const Interface *Device::find(std::uint32_t ifIndex) const
{
    const auto place = placeOf(interfaces_, ifIndex);
    return place != interfaces_.end() && place->ifIndex == ifIndex && place->exists(time_) ? &*place : nullptr;
}

const Interface *Device::after(std::uint32_t ifIndex) const
{
    const auto begin = ifIndex == UINT32_MAX ? interfaces_.end() : placeOf(interfaces_, ifIndex + 1);
    const auto found =
        std::find_if(begin, interfaces_.end(), [this](const Interface &interface) { return interface.exists(time_); });
    return found == interfaces_.end() ? nullptr : &*found;
}

const Interface *Device::withIp6(std::uint32_t ifIndex) const
{
    const Interface *interface = find(ifIndex);
    return interface != nullptr && interface->ip6 ? interface : nullptr;
}

const Interface *Device::runningIp6(std::uint32_t ifIndex) const
{
    const Interface *interface = withIp6(ifIndex);
    return interface != nullptr && interface->runs(time_) ? interface : nullptr;
}

Ip6MibStat Device::systemStat() const
{
    Ip6MibStat stat{};
    for (const Interface &interface : interfaces_) {
        interface.ip6Counters.addTo(stat, interface.runningTime(time_));
    }
    systemCounters.setIn(stat, time_);
    return stat;
}

const Neighbour *Device::neighbour(const NeighbourKey &key) const
{
    return runningIp6(key.ifIndex) == nullptr ? nullptr : neighbours_.find(key);
}

const Neighbour *Device::globalNeighbourAfter(const NeighbourKey &key) const
{
    return runningIp6(key.ifIndex) == nullptr ? nullptr : platform::afterGlobal(neighbours_, key);
}

const Neighbour *Device::linkLocalNeighbourAfter(const NeighbourKey &key) const
{
    return runningIp6(key.ifIndex) == nullptr ? nullptr : platform::afterLinkLocal(neighbours_, key);
}

const Address *Device::linkLocal(std::uint32_t ifIndex) const
{
    const Interface *interface = runningIp6(ifIndex);
    return interface != nullptr && interface->linkLocal ? &*interface->linkLocal : nullptr;
}

const Address *Device::address(const PackedAddress &address) const
{
    const Address *row = addresses_.find(address);
    return row != nullptr && runningIp6(row->ifIndex) != nullptr ? row : nullptr;
}

const Address *Device::addressAfter(const PackedAddress &address) const
{
    const Address *row = addresses_.after(address);
    while (row != nullptr && runningIp6(row->ifIndex) == nullptr) {
        row = addresses_.after(row->address);
    }
    return row;
}

const Prefix *Device::firstPrefix(std::uint32_t ifIndex) const
{
    return visible(ifIndex, prefixes_.atOrAfter(PrefixKey{ifIndex, {}, 0}));
}

const Prefix *Device::prefixAfter(const PrefixKey &key) const
{
    return visible(key.ifIndex, prefixes_.after(key));
}

// From this one on, the first of the interface that has not expired.
const Prefix *Device::visible(std::uint32_t ifIndex, const Prefix *prefix) const
{
    if (runningIp6(ifIndex) == nullptr) {
        return nullptr;
    }
    while (prefix != nullptr && prefix->ifIndex == ifIndex && prefix->valid.left(elapsedS()) == 0) {
        prefix = prefixes_.after(prefix->key());
    }
    return prefix != nullptr && prefix->ifIndex == ifIndex ? prefix : nullptr;
}

bool Device::isVisible(const Router &router) const
{
    return runningIp6(router.ifIndex) != nullptr && router.lifetime.left(elapsedS()) != 0;
}

const Router *Device::router(const RouterKey &key) const
{
    const RouterClass of = key.address.isLinkLocal() ? RouterClass::linkLocal : RouterClass::global;
    const Router *row = routers(of).find(key);
    return row != nullptr && isVisible(*row) ? row : nullptr;
}

const Router *Device::routerAfter(RouterClass of, const RouterKey &key) const
{
    const Router *row = routers(of).after(key);
    while (row != nullptr && !isVisible(*row)) {
        row = routers(of).after(row->key());
    }
    return row;
}

bool Device::runsIpv4(std::uint32_t ifIndex) const
{
    const Interface *interface = ip4Down.covers(time_) ? nullptr : find(ifIndex);
    return interface != nullptr && interface->runs(time_);
}

const Ipv4Address *Device::ipv4Address(std::uint32_t address) const
{
    const Ipv4Address *row = ipv4Addresses_.find(address);
    return row != nullptr && runsIpv4(row->ifIndex) ? row : nullptr;
}

const Ipv4Address *Device::ipv4AddressAfter(std::uint32_t address) const
{
    const Ipv4Address *row = ipv4Addresses_.after(address);
    while (row != nullptr && !runsIpv4(row->ifIndex)) {
        row = ipv4Addresses_.after(row->address);
    }
    return row;
}

const Neighbour *Device::ipv4Neighbour(const NeighbourKey &key) const
{
    return runsIpv4(key.ifIndex) ? ipv4Neighbours_.find(key) : nullptr;
}

const Neighbour *Device::ipv4NeighbourAfter(const NeighbourKey &key) const
{
    const Neighbour *row = ipv4Neighbours_.after(key);
    while (row != nullptr && !runsIpv4(row->ifIndex)) {
        row = ipv4Neighbours_.after(NeighbourKey{row->ifIndex, UINT64_MAX, UINT64_MAX});
    }
    return row;
}

} // namespace ipmib::simulated
