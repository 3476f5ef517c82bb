// SPDX-License-Identifier: BSD-3-Clause
// A simulated device's rows as platform_ip.h has them.
#include "ip_rows.h"

#include "neighbour_rows.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace ipmib::simulated
{
namespace
{

constexpr std::uint32_t up = 1;
constexpr std::uint32_t permanentAddress = 3;          // ifRcvAddressType: nonVolatile
constexpr std::uint32_t tcpAlgorithm = 4;              // Van Jacobson's
constexpr std::uint32_t shortestRetransmitMs = 200;    // of TCP
constexpr std::uint32_t longestRetransmitMs = 120'000; // of TCP
constexpr std::int32_t unlimited = -1;
constexpr Time perHundredth = 10;

bool fillAddress(const Device &device, const Ipv4Address *address, IpmibIpAddress &row)
{
    if (address == nullptr) {
        return false;
    }
    row = *address;
    row.created = device.uptimeAt(std::uint64_t{address->created} * perHundredth);
    row.changed = device.uptimeAt(std::uint64_t{address->changed} * perHundredth);
    return true;
}

bool fillPrefix(const Ipv4Prefix *prefix, std::uint32_t elapsedS, IpmibIpPrefix &row)
{
    if (prefix == nullptr) {
        return false;
    }
    row = {};
    row.if_index = prefix->ifIndex;
    row.prefix = prefix->prefix;
    row.length = prefix->length;
    row.origin = prefix->origin;
    row.on_link = prefix->onLink ? 1 : 0;
    row.autonomous = prefix->autonomous ? 1 : 0;
    row.preferred_s = prefix->preferred.left(elapsedS);
    row.valid_s = prefix->valid.left(elapsedS);
    return true;
}

bool fillNeighbour(const Device &device, const Neighbour *neighbour, IpmibIpNeighbour &row)
{
    if (neighbour == nullptr) {
        return false;
    }
    IpmibIpv4Neighbour older;
    platform::describe(*neighbour, older);
    row = {};
    row.if_index = older.if_index;
    row.address = older.address;
    row.type = static_cast<std::uint32_t>(neighbour->type) + 1;
    row.state = static_cast<std::uint32_t>(neighbour->state);
    row.last_updated = device.uptimeAtSecond(neighbour->lastUpdatedS);
    row.link_layer_size = older.link_layer_size;
    std::copy(std::begin(older.link_layer), std::end(older.link_layer), row.link_layer);
    return true;
}

bool fillRouter(const Ipv4Router *router, std::uint32_t elapsedS, IpmibIpRouter &row)
{
    if (router == nullptr) {
        return false;
    }
    const std::uint32_t left = std::min(router->lifetime.left(elapsedS), platform::gatewayLongestLifetime);
    row = {router->address, router->ifIndex, left, router->preference};
    return true;
}

bool isAmong(const std::vector<std::uint32_t> &ifIndexes, std::uint32_t one)
{
    return std::binary_search(ifIndexes.begin(), ifIndexes.end(), one);
}

bool fillReceiveAddress(const Interface &interface, const Mac &mac, IpmibReceiveAddress &row)
{
    row = {};
    row.if_index = interface.ifIndex;
    row.type = permanentAddress;
    row.size = static_cast<std::uint8_t>(mac.size());
    std::copy(mac.begin(), mac.end(), row.address);
    return true;
}

} // namespace

bool IpRows::settings(std::uint32_t version, IpmibIpSettings &settings) const
{
    settings = device_.ip4Settings;
    return version == IPMIB_IPV4 && !device_.ip4Down.covers(device_.time());
}

bool IpRows::systemCounters(std::uint32_t version, IpmibIpCounters &counters) const
{
    const bool isDown = (version == IPMIB_IPV6 ? device_.ip6Down : device_.ip4Down).covers(device_.time());
    counters = device_.systemTraffic(version);
    return !isDown && counters.counted != 0;
}

bool IpRows::interfaceCounters(std::uint32_t version, std::uint32_t ifIndex, IpmibIpCounters &counters) const
{
    const Interface *interface = device_.find(ifIndex);
    const bool isDown = (version == IPMIB_IPV6 ? device_.ip6Down : device_.ip4Down).covers(device_.time());
    if (interface == nullptr || isDown) {
        return false;
    }
    counters = interface->ipTraffic(version, device_.time());
    return counters.counted != 0;
}

bool IpRows::icmpCounters(std::uint32_t version, IpmibIcmpCounters &counters) const
{
    const IcmpCounters &said = version == IPMIB_IPV6 ? device_.icmp6 : device_.icmp4;
    if (said.empty()) {
        return false;
    }
    counters = said.after(device_.time());
    return true;
}

bool IpRows::tcpCounters(IpmibTcpCounters &counters) const
{
    counters = {};
    counters.rto_algorithm = tcpAlgorithm;
    counters.rto_min_ms = shortestRetransmitMs;
    counters.rto_max_ms = longestRetransmitMs;
    counters.max_connections = unlimited;
    counters.established = device_.tcpConnections;
    device_.tcpCounters.setIn(counters, device_.time());
    return !device_.tcpCounters.empty();
}

bool IpRows::udpCounters(IpmibUdpCounters &counters) const
{
    counters = {};
    device_.udpCounters.setIn(counters, device_.time());
    return !device_.udpCounters.empty();
}

bool IpRows::describe(std::uint32_t version, const Interface *interface, IpmibIpInterface &row) const
{
    const bool isIp6 = version == IPMIB_IPV6;
    if (interface == nullptr || !(isIp6 ? interface->ip6 : interface->ip4)) {
        return false;
    }
    row = {interface->ifIndex, interface->runs(device_.time()) ? up : up + 1, largestDatagram,
           isIp6 ? interface->retransmitMs : interface->ip4RetransmitMs};
    return true;
}

bool IpRows::findInterface(std::uint32_t version, std::uint32_t ifIndex, IpmibIpInterface &row) const
{
    return describe(version, device_.find(ifIndex), row);
}

bool IpRows::interfaceAfter(std::uint32_t version, std::uint32_t ifIndex, IpmibIpInterface &row) const
{
    for (const Interface *next = device_.after(ifIndex); next != nullptr; next = device_.after(next->ifIndex)) {
        if (describe(version, next, row)) {
            return true;
        }
    }
    return false;
}

std::uint32_t IpRows::interfacesChanged(std::uint32_t) const
{
    Time last = 0;
    for (const Interface &interface : device_.interfaces()) {
        last = std::max(last, interface.outages.lastChange(device_.time()));
    }
    return last == 0 ? 0 : device_.uptimeAt(std::uint64_t{device_.uptimeS} * 1'000 + last);
}

bool IpRows::findAddress(std::uint32_t address, IpmibIpAddress &row) const
{
    return fillAddress(device_, device_.ipv4Address(address), row);
}

bool IpRows::addressAfter(std::uint32_t address, IpmibIpAddress &row) const
{
    return fillAddress(device_, device_.ipv4AddressAfter(address), row);
}

bool IpRows::findPrefix(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length, IpmibIpPrefix &row) const
{
    return fillPrefix(device_.ipv4Prefix({ifIndex, prefix, length}), device_.elapsedS(), row);
}

bool IpRows::prefixAfter(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length, IpmibIpPrefix &row) const
{
    return fillPrefix(device_.ipv4PrefixAfter({ifIndex, prefix, length}), device_.elapsedS(), row);
}

bool IpRows::findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpNeighbour &row) const
{
    return fillNeighbour(device_, device_.ipv4Neighbour(platform::ipv4Neighbour(ifIndex, address)), row);
}

bool IpRows::neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpNeighbour &row) const
{
    return fillNeighbour(device_, device_.ipv4NeighbourAfter(platform::ipv4Neighbour(ifIndex, address)), row);
}

bool IpRows::findRouter(std::uint32_t address, std::uint32_t ifIndex, IpmibIpRouter &row) const
{
    return fillRouter(device_.ipv4Router({address, ifIndex}), device_.elapsedS(), row);
}

bool IpRows::routerAfter(std::uint32_t address, std::uint32_t ifIndex, IpmibIpRouter &row) const
{
    return fillRouter(device_.ipv4RouterAfter({address, ifIndex}), device_.elapsedS(), row);
}

bool IpRows::isTop(const Interface &interface) const
{
    return std::none_of(interface.carries.begin(), interface.carries.end(),
                        [this](std::uint32_t higher) { return device_.find(higher) != nullptr; });
}

bool IpRows::isBottom(const Interface &interface) const
{
    return std::none_of(interface.runsOver.begin(), interface.runsOver.end(),
                        [this](std::uint32_t lower) { return device_.find(lower) != nullptr; });
}

bool IpRows::findStack(std::uint32_t higher, std::uint32_t lower, IpmibStack &row) const
{
    const Interface *above = device_.find(higher);
    const Interface *below = device_.find(lower);
    row = {higher, lower};
    if (higher == 0) {
        return below != nullptr && isTop(*below);
    }
    if (lower == 0) {
        return above != nullptr && isBottom(*above);
    }
    return above != nullptr && below != nullptr && isAmong(above->runsOver, lower);
}

bool IpRows::stackAfter(std::uint32_t higher, std::uint32_t lower, IpmibStack &row) const
{
    if (higher == 0) {
        for (const Interface *next = device_.after(lower); next != nullptr; next = device_.after(next->ifIndex)) {
            if (isTop(*next)) {
                row = {0, next->ifIndex};
                return true;
            }
        }
    } else if (const Interface *above = device_.find(higher)) {
        for (const std::uint32_t next : above->runsOver) {
            if (next > lower && device_.find(next) != nullptr) {
                row = {higher, next};
                return true;
            }
        }
    }
    const Interface *above = device_.after(higher);
    return above != nullptr && (findStack(above->ifIndex, 0, row) || stackAfter(above->ifIndex, 0, row));
}

std::uint32_t IpRows::stackChanged() const
{
    Time last = 0;
    for (const Interface &interface : device_.interfaces()) {
        last = std::max(last, interface.outagesRemove ? interface.outages.lastChange(device_.time()) : 0);
    }
    return last == 0 ? 0 : device_.uptimeAt(std::uint64_t{device_.uptimeS} * 1'000 + last);
}

bool IpRows::findReceiveAddress(std::uint32_t ifIndex, const std::uint8_t *address, std::size_t size,
                                IpmibReceiveAddress &row) const
{
    const Interface *interface = device_.find(ifIndex);
    if (interface == nullptr) {
        return false;
    }
    const auto found = std::find_if(interface->receives.begin(), interface->receives.end(), [&](const Mac &mac) {
        return std::equal(mac.begin(), mac.end(), address, address + size);
    });
    return found != interface->receives.end() && fillReceiveAddress(*interface, *found, row);
}

bool IpRows::receiveAddressAfter(std::uint32_t ifIndex, const std::uint8_t *address, std::size_t size,
                                 IpmibReceiveAddress &row) const
{
    // All have one length, so whatever is shorter is in front of them, and whatever is longer behind.
    const std::span<const std::uint8_t> key(address, size);
    const auto isBehind = [key](const Mac &mac) {
        return key.size() != mac.size() ? key.size() < mac.size() : std::ranges::lexicographical_compare(key, mac);
    };
    if (const Interface *interface = device_.find(ifIndex)) {
        const auto next = std::find_if(interface->receives.begin(), interface->receives.end(), isBehind);
        if (next != interface->receives.end()) {
            return fillReceiveAddress(*interface, *next, row);
        }
    }
    for (const Interface *other = device_.after(ifIndex); other != nullptr; other = device_.after(other->ifIndex)) {
        if (!other->receives.empty()) {
            return fillReceiveAddress(*other, other->receives.front(), row);
        }
    }
    return false;
}

// In front of its identifier.
std::uint32_t IpRows::linkLocalPrefixLength(std::uint32_t ifIndex) const
{
    constexpr std::uint32_t length = 64;
    return device_.linkLocal(ifIndex) == nullptr ? 0 : length;
}

} // namespace ipmib::simulated
