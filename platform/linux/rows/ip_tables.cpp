// SPDX-License-Identifier: BSD-3-Clause
// What tables outside the module say of IP on this system: addresses, prefixes, neighbours and routers of IPv4.
#include "linux_platform.h"

#include "neighbour_rows.h"

#include <linux/if_addr.h>
#include <linux/rtnetlink.h>

#include <algorithm>
#include <cstring>

namespace ipmib::platform
{

namespace
{

// IpAddressStatusTC, IpAddressPrefixOriginTC.
enum Status : std::uint32_t { preferred = 1, deprecated = 2, tentative = 6, duplicate = 7 };
enum Origin : std::uint32_t { prefixManual = 2, prefixWellKnown = 3, prefixDhcp = 4 };

constexpr std::uint32_t configuredRouter = 65535; // seconds: the longest lifetime that there is

struct Network {
    std::uint32_t prefix;
    std::uint32_t length;
};
constexpr Network loopbackNetwork{0x7F00'0000, 8};
constexpr Network linkLocalNetwork{0xA9FE'0000, 16}; // RFC 3927

bool isWellKnown(const Ipv4AddressTable::PrefixKey &key)
{
    const auto is = [&](const Network &network) {
        return key.prefix == network.prefix && key.length == network.length;
    };
    return is(loopbackNetwork) || is(linkLocalNetwork);
}

// A lease has an end. What a program has chosen for the link alone it marks with the scope of the link.
std::uint32_t originOf(const Ipv4Address &address)
{
    const bool ends = !address.validUntil.isNever();
    const bool onLinkAlone = maskedIpv4(address.address, linkLocalNetwork.length) == linkLocalNetwork.prefix;
    if (onLinkAlone && (ends || address.scope == RT_SCOPE_LINK)) {
        return IPMIB_ADDRESS_ORIGIN_RANDOM;
    }
    return ends ? IPMIB_ADDRESS_ORIGIN_DHCP : IPMIB_ADDRESS_ORIGIN_MANUAL;
}

std::uint32_t statusOf(std::uint32_t flags)
{
    return (flags & IFA_F_DADFAILED) != 0    ? duplicate
           : (flags & IFA_F_TENTATIVE) != 0  ? tentative
           : (flags & IFA_F_DEPRECATED) != 0 ? deprecated
                                             : preferred;
}

} // namespace

std::string IpRows::follow(std::uint32_t rows)
{
    followsReceiveAddresses_ = followsReceiveAddresses_ || (rows & IPMIB_FOLLOW_RECEIVE_ADDRESSES) != 0;
    const std::string error = platform_.followRows(rows);
    noteChanges();
    return error;
}

// An address that is somebody's own and the broadcast address of others is the own one.
bool IpRows::fillAddress(const Ipv4Address *unicast, const Ipv4Address *broadcast, IpmibIpAddress &row) const
{
    const bool own = unicast != nullptr && (broadcast == nullptr || unicast->address <= broadcast->broadcast);
    const Ipv4Address *shown = own ? unicast : broadcast;
    if (shown == nullptr) {
        return false;
    }
    row = IpmibIpAddress{};
    row.address = own ? shown->address : shown->broadcast;
    row.if_index = shown->ifIndex;
    row.type = own ? IPMIB_ADDRESS_UNICAST : IPMIB_ADDRESS_BROADCAST;
    row.prefix = shown->prefix();
    row.prefix_length = shown->length;
    row.origin = originOf(*shown);
    row.status = statusOf(shown->flags);
    row.created = platform_.uptime().at(shown->created);
    row.changed = platform_.uptime().at(shown->changed);
    return true;
}

bool IpRows::findAddress(std::uint32_t address, IpmibIpAddress &row)
{
    const Ipv4AddressTable &addresses = platform_.ipv4().addresses();
    return fillAddress(addresses.find(address), addresses.findBroadcast(address), row);
}

bool IpRows::addressAfter(std::uint32_t address, IpmibIpAddress &row)
{
    const Ipv4AddressTable &addresses = platform_.ipv4().addresses();
    return fillAddress(addresses.after(address), addresses.afterBroadcast(address), row);
}

// What is configured stays when the server is gone, and therefore outweighs what is leased.
bool IpRows::fillPrefix(const Ipv4AddressTable::PrefixKey &key, IpmibIpPrefix &row)
{
    const std::uint32_t now = platform_.now();
    bool manual = false;
    Deadline validUntil;
    Deadline preferredUntil;
    platform_.ipv4().addresses().eachIn(key, [&](const Ipv4Address &address) {
        manual = manual || originOf(address) == IPMIB_ADDRESS_ORIGIN_MANUAL;
        validUntil = std::max(validUntil, address.validUntil);
        preferredUntil = std::max(preferredUntil, address.preferredUntil);
    });
    row = IpmibIpPrefix{};
    row.if_index = key.ifIndex;
    row.prefix = key.prefix;
    row.length = key.length;
    row.origin = isWellKnown(key) ? prefixWellKnown : manual ? prefixManual : prefixDhcp;
    row.on_link = platform_.ipv4().routes().isOnLink(key.ifIndex, key.prefix, key.length) ? 1 : 0;
    row.preferred_s = preferredUntil.left(now);
    row.valid_s = validUntil.left(now);
    return true;
}

bool IpRows::findPrefix(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length, IpmibIpPrefix &row)
{
    const Ipv4AddressTable::PrefixKey key{ifIndex, prefix, length};
    Ipv4AddressTable::PrefixKey found{};
    return platform_.ipv4().addresses().prefixAtOrAfter(key, found) && found == key && fillPrefix(key, row);
}

bool IpRows::prefixAfter(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length, IpmibIpPrefix &row)
{
    Ipv4AddressTable::PrefixKey found{};
    return platform_.ipv4().addresses().prefixAfter({ifIndex, prefix, length}, found) && fillPrefix(found, row);
}

bool IpRows::fillNeighbour(const Neighbour *neighbour, IpmibIpNeighbour &row) const
{
    if (neighbour == nullptr) {
        return false;
    }
    IpmibIpv4Neighbour older;
    describe(*neighbour, older);
    row = IpmibIpNeighbour{};
    row.if_index = neighbour->ifIndex;
    row.address = older.address;
    row.type = static_cast<std::uint32_t>(neighbour->type) + 1; // the codes of a service are one below
    row.state = static_cast<std::uint32_t>(neighbour->state);
    row.last_updated = platform_.uptime().atSecond(neighbour->lastUpdatedS);
    row.link_layer_size = older.link_layer_size;
    std::memcpy(row.link_layer, older.link_layer, sizeof older.link_layer);
    return true;
}

bool IpRows::findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpNeighbour &row)
{
    return platform_.ipv4().follows(IPMIB_FOLLOW_NEIGHBOURS) &&
           fillNeighbour(platform_.ipv4().neighbours().ask(ipv4Neighbour(ifIndex, address)), row);
}

bool IpRows::neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpNeighbour &row)
{
    return platform_.ipv4().follows(IPMIB_FOLLOW_NEIGHBOURS) &&
           fillNeighbour(platform_.ipv4().neighbours().askAfter(ipv4Neighbour(ifIndex, address)), row);
}

bool IpRows::findRouter(std::uint32_t address, std::uint32_t ifIndex, IpmibIpRouter &row)
{
    return fillRouter(platform_.ipv4().routes().findRouter({address, ifIndex}), row);
}

bool IpRows::routerAfter(std::uint32_t address, std::uint32_t ifIndex, IpmibIpRouter &row)
{
    return fillRouter(platform_.ipv4().routes().routerAfter({address, ifIndex}), row);
}

// IPv4 routes know neither an end nor a preference.
bool IpRows::fillRouter(const Ipv4Router *router, IpmibIpRouter &row) const
{
    if (router == nullptr || !platform_.ipv4().follows(IPMIB_FOLLOW_ROUTERS)) {
        return false;
    }
    row = {router->address, router->ifIndex, configuredRouter, 0};
    return true;
}

} // namespace ipmib::platform
