// SPDX-License-Identifier: BSD-3-Clause
// Reads the routes that a scenario lists or has made by the number.
#include "scenario/read.h"

#include "scenario/forms.h"

#include <ipmib/big_endian.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace ipmib::simulated
{
namespace
{

constexpr std::uint32_t mostRoutesAtOnce = 16'000'000;
constexpr std::uint32_t ipv4InUpperBits = 32;
constexpr Word nowhere[] = {
    {"blackhole", IPMIB_ROUTE_BLACKHOLE}, {"reject", IPMIB_ROUTE_REJECT}, {"other", IPMIB_ROUTE_OTHER}};
constexpr Word protocols[] = {{"other", 1},       {"local", 2},      {"netmgmt", 3}, {"icmp", 4},  {"egp", 5},
                              {"ggp", 6},         {"hello", 7},      {"rip", 8},     {"isIs", 9},  {"esIs", 10},
                              {"ciscoIgrp", 11},  {"bbnSpfIgp", 12}, {"ospf", 13},   {"bgp", 14},  {"idpr", 15},
                              {"ciscoEigrp", 16}, {"dvmrp", 17},     {"rpl", 18},    {"dhcp", 19}, {"ttdp", 20}};
constexpr std::uint32_t local = 2;
constexpr std::uint32_t management = 3;

// The numbers of a policy, as the Linux platform has them; the interface is that of a route without a gateway.
enum { tablePlace, tosPlace, metricPlace, interfacePlace };

RouteDestination readDestination(const Value &value)
{
    constexpr const char *expected = "a prefix like \"192.0.2.0/24\" or \"2001:db8::/32\"";
    const std::string &text = value.text(expected);
    if (text.find(':') != std::string::npos) {
        const AddressAndLength read = readPrefix(value);
        return {IPMIB_IPV6, read.address, read.length};
    }
    if (text.find('.') == std::string::npos) {
        value.refuse(expected);
    }
    const Ipv4AddressAndLength read = readIpv4Prefix(value);
    return {IPMIB_IPV4, {std::uint64_t{read.address} << ipv4InUpperBits, 0}, read.length};
}

// The destination so many prefixes of its length further; nothing when there are not so many.
std::optional<RouteDestination> further(RouteDestination from, std::uint64_t count)
{
    constexpr std::uint32_t word = 64;
    PackedAddress to = from.prefix;
    if (from.length < word) {
        if (count >> from.length != 0) {
            return std::nullopt;
        }
        to.high += count == 0 ? 0 : count << (word - from.length);
    } else {
        const std::uint32_t shift = 2 * word - from.length;
        to.low += shift == word ? 0 : count << shift;
        to.high += shift == word ? count : shift == 0 ? 0 : count >> (word - shift);
        to.high += to.low < from.prefix.low ? 1 : 0;
    }
    return to < from.prefix ? std::nullopt : std::optional(RouteDestination{from.version, to, from.length});
}

void readGateway(const Value &via, RouteWay &way)
{
    IpmibRouteKey &key = way.route.key;
    way.route.type = IPMIB_ROUTE_REMOTE;
    if (via.text("the address of a gateway").find(':') == std::string::npos) {
        const IpmibBe32 address = ipmib_be32(readIpv4Address(via));
        key.next_hop_type = IPMIB_NEXT_HOP_IPV4;
        key.next_hop_size = sizeof address;
        std::memcpy(key.next_hop, &address, sizeof address);
        return;
    }
    const PackedAddress address = readAddress(via);
    address.copyTo(key.next_hop);
    key.next_hop_type = IPMIB_NEXT_HOP_IPV6;
    key.next_hop_size = sizeof address;
    if (address.isLinkLocal()) {
        const IpmibBe32 zone = ipmib_be32(way.route.if_index);
        key.next_hop_type = IPMIB_NEXT_HOP_IPV6Z;
        key.next_hop_size += sizeof zone;
        std::memcpy(key.next_hop + sizeof address, &zone, sizeof zone);
    }
}

// "interface" and "via".
void readNextHop(Object &object, RouteWay &way, const Device &device)
{
    const Value name = object.need("interface");
    const Interface *interface = device.named(name.text("the name of an interface"));
    if (interface == nullptr) {
        name.refuse("the name of an interface of this device");
    }
    way.route.type = IPMIB_ROUTE_LOCAL;
    way.route.if_index = interface->ifIndex;
    if (const auto via = object.find("via")) {
        readGateway(*via, way);
    } else {
        way.route.key.policy[interfacePlace] = interface->ifIndex;
    }
}

// One for each next hop.
std::vector<RouteWay> readWays(Object &object, const RouteWay &common, const Device &device)
{
    std::vector<RouteWay> ways;
    const auto type = object.find("type");
    const auto hops = object.find("nextHops");
    if (type) {
        failWithAny(object, {"interface", "nextHops", "via"}, "a route of this type leads nowhere");
        ways.push_back(common);
        ways.back().route.type = type->word(nowhere);
    } else if (hops) {
        failWithAny(object, {"interface", "via"}, "the next hops say that");
        hops->each([&](const Value &value) {
            Object hop(value);
            readNextHop(hop, ways.emplace_back(common), device);
            hop.finish();
        });
        if (ways.empty()) {
            hops->fail("a route needs a next hop");
        }
    } else {
        readNextHop(object, ways.emplace_back(common), device);
    }
    return ways;
}

std::uint32_t readProtocol(Object &object, std::uint32_t otherwise)
{
    const auto protocol = object.find("protocol");
    return protocol ? protocol->word(protocols) : otherwise;
}

RouteWay readCommon(Object &object)
{
    RouteWay way;
    const std::uint32_t table = object.number("table", 0, 0, UINT32_MAX);
    const std::uint32_t metric = object.number("metric", 0, 0, INT32_MAX);
    way.route.tos = object.number("tos", 0, 0, UINT8_MAX);
    way.route.metric = static_cast<std::int32_t>(metric);
    way.route.next_hop_as = object.number("as", 0, 0, UINT32_MAX);
    way.route.key.policy[tablePlace] = table;
    way.route.key.policy[metricPlace] = metric;
    way.route.key.policy[tosPlace] = way.route.tos;
    way.changedS = object.number("changed", 0, 0, latestMoment);
    return way;
}

void readRoute(const Value &value, std::uint32_t name, Device &device)
{
    Object object(value);
    const Value prefix = object.need("destination");
    const RouteDestination first = readDestination(prefix);
    std::vector<RouteWay> ways = readWays(object, readCommon(object), device);
    const bool isOnLink = ways.front().route.type == IPMIB_ROUTE_LOCAL;
    const std::uint32_t protocol = readProtocol(object, isOnLink ? local : management);
    const std::uint32_t count = object.number("count", 1, 1, mostRoutesAtOnce);
    const std::uint32_t step = object.number("step", 1, 1, UINT32_MAX);
    const bool isSpread = object.boolean("spread", false);
    object.finish();
    if (!further(first, std::uint64_t{count - 1} * step)) {
        prefix.fail("there are not so many prefixes behind this one");
    }
    for (std::size_t each = 0; each < ways.size(); ++each) {
        ways[each].route.protocol = protocol;
        device.routes.begin(ways[each]);
        const std::size_t stride = isSpread ? ways.size() : 1;
        for (std::size_t i = isSpread ? each : 0; i < count; i += stride) {
            device.routes.add(*further(first, std::uint64_t{i} * step), name);
        }
    }
}

} // namespace

void readRoutes(const Value &value, Device &device)
{
    std::uint32_t name = 0;
    value.each([&](const Value &route) { readRoute(route, name++, device); });
    if (const auto twice = device.routes.complete()) {
        name = 0;
        value.each([&](const Value &route) {
            if (name++ == *twice) {
                route.fail("the device has such a route already");
            }
        });
    }
}

} // namespace ipmib::simulated
