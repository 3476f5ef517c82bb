// SPDX-License-Identifier: BSD-3-Clause
// A simulated device: what the scenario says of it, seen at one moment. On an interface that does not run nothing is
// listed: it has no addresses, and nobody can be reached there.
#include "device/device.h"

#include <algorithm>

namespace ipmib::simulated
{
namespace
{

// From this one on, the first of a table that can be seen now.
template <class Table, class Row, class IsVisible>
auto firstVisible(const Table &table, Row row, IsVisible isVisible)
{
    while (row != nullptr && !isVisible(*row)) {
        row = table.after(row->key());
    }
    return row;
}

} // namespace

std::vector<Interface>::const_iterator Device::placeOf(std::uint32_t ifIndex) const
{
    const auto isAt = [&](std::size_t place) {
        return place < interfaces_.size() && interfaces_[place].ifIndex >= ifIndex &&
               (place == 0 || interfaces_[place - 1].ifIndex < ifIndex);
    };
    if (isAt(lastPlace_ + 1)) {
        ++lastPlace_;
    } else if (!isAt(lastPlace_)) {
        const auto found = std::lower_bound(
            interfaces_.begin(), interfaces_.end(), ifIndex,
            [](const Interface &interface, std::uint32_t wanted) { return interface.ifIndex < wanted; });
        lastPlace_ = static_cast<std::size_t>(found - interfaces_.begin());
    }
    return interfaces_.begin() + static_cast<std::ptrdiff_t>(lastPlace_);
}

Interface *Device::add(Interface interface)
{
    const auto place = placeOf(interface.ifIndex);
    if ((place != interfaces_.end() && place->ifIndex == interface.ifIndex) ||
        !names_.emplace(interface.name, interface.ifIndex).second) {
        return nullptr;
    }
    if (interface.mac) {
        interface.receives.push_back(*interface.mac);
    }
    std::sort(interface.receives.begin(), interface.receives.end());
    const auto same = std::unique(interface.receives.begin(), interface.receives.end());
    interface.receives.erase(same, interface.receives.end());
    for (const std::uint32_t lower : interface.runsOver) {
        interfaces_[static_cast<std::size_t>(placeOf(lower) - interfaces_.cbegin())].carries.push_back(
            interface.ifIndex);
    }
    list_.put(interface.ifIndex, interface.type, interface.outages.never());
    return &*interfaces_.insert(place, std::move(interface));
}

const Interface *Device::named(const std::string &name) const
{
    const auto found = names_.find(name);
    return found == names_.end() ? nullptr : &*placeOf(found->second);
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
    return static_cast<std::uint32_t>(time_ / msPerSecond);
}

std::uint32_t Device::uptimeAt(std::uint64_t sinceBootMs) const
{
    constexpr std::int64_t perHundredth = 10;
    const std::uint64_t nowMs = std::uint64_t{uptimeS} * msPerSecond + time_;
    const std::int64_t uptime = static_cast<std::int64_t>(std::min(sinceBootMs, nowMs)) - uptimeBeganMs_;
    return sinceBootMs == 0 || uptime < 0 ? 0 : static_cast<std::uint32_t>(uptime / perHundredth);
}

const Interface *Device::find(std::uint32_t ifIndex) const
{
    const auto place = placeOf(ifIndex);
    return place != interfaces_.end() && place->ifIndex == ifIndex && place->exists(time_) ? &*place : nullptr;
}

const Interface *Device::after(std::uint32_t ifIndex) const
{
    const auto begin = ifIndex == UINT32_MAX ? interfaces_.end() : placeOf(ifIndex + 1);
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

IpmibIpCounters Device::systemTraffic(std::uint32_t version) const
{
    const bool isIp6 = version == IPMIB_IPV6;
    IpmibIpCounters sum{};
    for (const Interface &interface : interfaces_) {
        (isIp6 ? interface.ip6Counters : interface.ip4Counters).addTo(sum, interface.runningTime(time_));
    }
    (isIp6 ? systemIp6Counters : systemIp4Counters).setIn(sum, time_);
    return sum;
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
    return interface != nullptr && interface->ip4 && interface->runs(time_);
}

const Ipv4Address *Device::ipv4Address(std::uint32_t address) const
{
    const Ipv4Address *row = ipv4Addresses_.find(address);
    return row != nullptr && runsIpv4(row->if_index) ? row : nullptr;
}

const Ipv4Address *Device::ipv4AddressAfter(std::uint32_t address) const
{
    return firstVisible(ipv4Addresses_, ipv4Addresses_.after(address),
                        [this](const Ipv4Address &row) { return runsIpv4(row.if_index); });
}

const Ipv4Prefix *Device::ipv4Prefix(const Ipv4PrefixKey &key) const
{
    const Ipv4Prefix *row = ipv4Prefixes_.find(key);
    return row != nullptr && isVisible(*row) ? row : nullptr;
}

const Ipv4Prefix *Device::ipv4PrefixAfter(const Ipv4PrefixKey &key) const
{
    return firstVisible(ipv4Prefixes_, ipv4Prefixes_.after(key),
                        [this](const Ipv4Prefix &row) { return isVisible(row); });
}

const Ipv4Router *Device::ipv4Router(const Ipv4RouterKey &key) const
{
    const Ipv4Router *row = ipv4Routers_.find(key);
    return row != nullptr && isVisible(*row) ? row : nullptr;
}

const Ipv4Router *Device::ipv4RouterAfter(const Ipv4RouterKey &key) const
{
    return firstVisible(ipv4Routers_, ipv4Routers_.after(key),
                        [this](const Ipv4Router &row) { return isVisible(row); });
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
