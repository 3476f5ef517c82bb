// SPDX-License-Identifier: BSD-3-Clause
// The forwarding table of one version of IP: its rows, as they are asked for.
#include "routes/forwarding_table.h"

#include <ipmib/platform_ip.h>

#include <endian.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <compare>
#include <cstring>
#include <tuple>

namespace ipmib::platform
{

namespace
{

constexpr std::uint8_t behindAllLengths = 255;
constexpr std::uint32_t lastNumber = 0xFFFFFFFF;

// IANAipRouteProtocol. What a router advertisement brings has come by ICMP.
std::uint32_t protocolOf(std::uint8_t protocol)
{
    enum : std::uint32_t { other = 1, local = 2, netmgmt = 3, icmp = 4, rip = 8, isIs = 9, ospf = 13, bgp = 14 };
    constexpr std::uint32_t eigrp = 16;
    constexpr std::uint32_t dhcp = 19;
    switch (protocol) {
    case RTPROT_REDIRECT:
    case RTPROT_RA:
        return icmp;
    case RTPROT_KERNEL:
        return local;
    case RTPROT_BOOT:
    case RTPROT_STATIC:
        return netmgmt;
    case RTPROT_DHCP:
        return dhcp;
    case RTPROT_BGP:
        return bgp;
    case RTPROT_ISIS:
        return isIs;
    case RTPROT_OSPF:
        return ospf;
    case RTPROT_RIP:
        return rip;
    case RTPROT_EIGRP:
        return eigrp;
    default:
        return other;
    }
}

std::uint32_t typeOf(std::uint8_t type, const Hop &hop)
{
    switch (type) {
    case RTN_UNICAST:
        return hop.family != 0 ? IPMIB_ROUTE_REMOTE : IPMIB_ROUTE_LOCAL;
    case RTN_LOCAL:
    case RTN_BROADCAST:
    case RTN_ANYCAST:
    case RTN_MULTICAST:
        return IPMIB_ROUTE_LOCAL;
    case RTN_UNREACHABLE:
    case RTN_PROHIBIT:
        return IPMIB_ROUTE_REJECT;
    case RTN_BLACKHOLE:
        return IPMIB_ROUTE_BLACKHOLE;
    default:
        return IPMIB_ROUTE_OTHER;
    }
}

void putNumber(std::uint8_t *octets, std::uint32_t number)
{
    const std::uint32_t ordered = htobe32(number);
    std::memcpy(octets, &ordered, sizeof ordered);
}

void setNextHop(IpmibRouteKey &key, const Hop &hop)
{
    if (hop.family == AF_INET) {
        key.next_hop_type = IPMIB_NEXT_HOP_IPV4;
        key.next_hop_size = 4;
        putNumber(key.next_hop, static_cast<std::uint32_t>(hop.gateway.low));
    } else if (hop.family == AF_INET6) {
        const bool zoned = hop.gateway.isLinkLocal();
        key.next_hop_type = zoned ? IPMIB_NEXT_HOP_IPV6Z : IPMIB_NEXT_HOP_IPV6;
        key.next_hop_size = zoned ? 20 : 16;
        hop.gateway.copyTo(key.next_hop);
        if (zoned) {
            putNumber(key.next_hop + 16, hop.ifIndex);
        }
    }
}

std::strong_ordering order(const IpmibRouteKey &a, const IpmibRouteKey &b)
{
    if (const auto byVersion = a.version <=> b.version; byVersion != 0) {
        return byVersion;
    }
    if (const int destination = std::memcmp(a.destination, b.destination, sizeof a.destination); destination != 0) {
        return destination <=> 0;
    }
    if (const auto byLength = a.prefix_length <=> b.prefix_length; byLength != 0) {
        return byLength;
    }
    for (std::size_t i = 0; i < IPMIB_ROUTE_POLICY_NUMBERS; ++i) {
        if (const auto byPolicy = a.policy[i] <=> b.policy[i]; byPolicy != 0) {
            return byPolicy;
        }
    }
    if (const auto byType = a.next_hop_type <=> b.next_hop_type; byType != 0) {
        return byType;
    }
    if (const auto bySize = a.next_hop_size <=> b.next_hop_size; bySize != 0) {
        return bySize;
    }
    return std::memcmp(a.next_hop, b.next_hop, sizeof a.next_hop) <=> 0;
}

bool routeBefore(const IpmibRoute &a, const IpmibRoute &b)
{
    return order(a.key, b.key) < 0;
}

// Rows that nothing else sets apart have equal keys by now: the second one and those behind it get numbers that no
// interface has. True when there were any.
bool setApart(std::vector<IpmibRoute> &rows)
{
    constexpr std::uint32_t beyondInterfaces = 1u << 24;
    const auto rest = [](const IpmibRoute &row) { return std::tie(row.if_index, row.type, row.protocol); };
    std::stable_sort(rows.begin(), rows.end(), [&](const IpmibRoute &a, const IpmibRoute &b) {
        const auto byKey = order(a.key, b.key);
        return byKey != 0 ? byKey < 0 : rest(a) < rest(b);
    });
    std::vector<std::uint32_t> ranks(rows.size(), 0);
    bool any = false;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const bool same = order(rows[i - 1].key, rows[i].key) == 0;
        ranks[i] = same ? ranks[i - 1] + 1 : 0;
        any = any || same;
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i].key.policy[IPMIB_ROUTE_POLICY_NUMBERS - 1] += ranks[i] * beyondInterfaces;
    }
    return any;
}

bool answer(const IpmibRoute &made, std::uint32_t now, IpmibRoute &row)
{
    row = made;
    row.age_s = now > made.age_s ? now - made.age_s : 0;
    return true;
}

} // namespace

PackedAddress ForwardingTable::destinationOf(const std::uint8_t *octets) const
{
    if (family_ == AF_INET6) {
        return PackedAddress::of(octets);
    }
    std::uint32_t number;
    std::memcpy(&number, octets, sizeof number);
    return {0, be32toh(number)};
}

void ForwardingTable::addRows(const RouteRecord &record, std::vector<IpmibRoute> &rows) const
{
    if (hops_.isRetired(record.hops)) {
        return;
    }
    const RouteClass &routeClass = classes_[record.routeClass];
    const auto add = [&](const Hop &hop, std::uint8_t type, std::uint32_t changed) {
        IpmibRoute &row = rows.emplace_back(IpmibRoute{});
        row.key.version = family_ == AF_INET ? IPMIB_IPV4 : IPMIB_IPV6;
        if (family_ == AF_INET) {
            putNumber(row.key.destination, static_cast<std::uint32_t>(record.destination.low));
        } else {
            record.destination.copyTo(row.key.destination);
        }
        row.key.prefix_length = record.length;
        row.type = typeOf(type, hop);
        const bool onLink = row.type == IPMIB_ROUTE_LOCAL;
        row.key.policy[0] = routeClass.table == RT_TABLE_MAIN ? 0 : routeClass.table;
        row.key.policy[1] = routeClass.tos;
        row.key.policy[2] = routeClass.metric;
        row.key.policy[3] = onLink ? hop.ifIndex : 0;
        setNextHop(row.key, hop);
        row.if_index = hop.ifIndex;
        row.protocol = protocolOf(routeClass.protocol);
        row.age_s = changed;
        row.tos = routeClass.tos;
        row.metric = static_cast<std::int32_t>(std::min<std::uint32_t>(routeClass.metric, INT32_MAX));
    };
    const HopSet &hops = hops_[record.hops];
    if (hops.object == 0) {
        hops.each([&](const Hop &hop) {
            add(hop, routeClass.type, record.changed);
            return true;
        });
        return;
    }
    nexthops_.eachHop(hops.object, [&](const NexthopObject &object) {
        Hop hop{object.gateway, object.ifIndex, static_cast<std::uint8_t>(object.hasGateway ? AF_INET6 : 0)};
        if (object.ipv4Gateway != 0) {
            hop.gateway = {0, object.ipv4Gateway};
            hop.family = AF_INET;
        }
        add(hop, object.blackhole ? std::uint8_t{RTN_BLACKHOLE} : routeClass.type,
            std::max(record.changed, object.changed));
    });
}

const std::vector<IpmibRoute> &ForwardingTable::group(const PackedAddress &destination, std::uint8_t length)
{
    if (group_.version == version_ && group_.destination == destination && group_.length == length) {
        return group_.rows;
    }
    group_.version = version_;
    group_.destination = destination;
    group_.length = length;
    group_.rows.clear();
    RouteRecord record{destination, length, 0, 0, 0};
    for (bool more = records_->atOrAfter(record, record);
         more && record.destination == destination && record.length == length; more = records_->after(record, record)) {
        addRows(record, group_.rows);
    }
    while (group_.rows.size() > 1 && setApart(group_.rows)) {
    }
    return group_.rows;
}

bool ForwardingTable::find(const IpmibRouteKey &key, std::uint32_t now, IpmibRoute &row)
{
    const std::vector<IpmibRoute> &rows =
        group(destinationOf(key.destination),
              static_cast<std::uint8_t>(std::min<std::uint32_t>(key.prefix_length, behindAllLengths)));
    IpmibRoute wanted;
    wanted.key = key;
    const auto found = std::lower_bound(rows.begin(), rows.end(), wanted, routeBefore);
    return found != rows.end() && order(found->key, key) == 0 && answer(*found, now, row);
}

bool ForwardingTable::first(std::uint32_t now, IpmibRoute &row)
{
    return firstFrom(RouteRecord{{}, 0, 0, 0, 0}, false, now, row);
}

bool ForwardingTable::next(const IpmibRouteKey &key, std::uint32_t now, IpmibRoute &row)
{
    const PackedAddress destination = destinationOf(key.destination);
    auto length = static_cast<std::uint8_t>(std::min<std::uint32_t>(key.prefix_length, behindAllLengths));
    if (family_ == AF_INET && std::any_of(key.destination + 4, key.destination + sizeof key.destination,
                                          [](std::uint8_t octet) { return octet != 0; })) {
        length = behindAllLengths;
    }
    const std::vector<IpmibRoute> &rows = group(destination, length);
    IpmibRoute asked;
    asked.key = key;
    const auto behind = std::upper_bound(rows.begin(), rows.end(), asked, routeBefore);
    if (behind != rows.end()) {
        return answer(*behind, now, row);
    }
    return firstFrom({destination, length, RouteRecords::mostClasses - 1, lastNumber, 0}, true, now, row);
}

// A route whose nexthop object is not known has no rows.
bool ForwardingTable::firstFrom(RouteRecord key, bool behind, std::uint32_t now, IpmibRoute &row)
{
    RouteRecord found;
    while (records_->next(
        key, behind, [this](std::uint32_t hops) { return !hops_.isRetired(hops); }, found)) {
        const std::vector<IpmibRoute> &rows = group(found.destination, found.length);
        if (!rows.empty()) {
            return answer(rows.front(), now, row);
        }
        key = {found.destination, found.length, RouteRecords::mostClasses - 1, lastNumber, 0};
        behind = true;
    }
    return false;
}

bool ForwardingTable::match(const std::uint8_t *address, std::uint32_t now, IpmibRoute &row)
{
    const unsigned bits = family_ == AF_INET ? 32 : 128;
    const PackedAddress whole = destinationOf(address);
    for (unsigned length = bits + 1; length-- > 0;) {
        const PackedAddress destination = whole.masked(length + 128 - bits);
        const RouteRecord key{destination, static_cast<std::uint8_t>(length), 0, 0, 0};
        RouteRecord found;
        if (!records_->atOrAfter(key, found) || found.destination != destination || found.length != length) {
            continue;
        }
        const std::vector<IpmibRoute> &rows = group(destination, found.length);
        if (!rows.empty()) {
            return answer(rows.front(), now, row);
        }
    }
    return false;
}

} // namespace ipmib::platform
