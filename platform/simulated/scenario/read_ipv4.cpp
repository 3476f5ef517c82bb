// SPDX-License-Identifier: BSD-3-Clause
// Reads what a scenario says of IPv4: the same words as of IPv6, with the numbers of the tables' columns.
#include "scenario/read.h"

#include "scenario/forms.h"

namespace ipmib::simulated
{
namespace
{

using platform::NeighbourState;
using platform::NeighbourType;

constexpr Word ipv4AddressOrigins[] = {{"manual", IPMIB_ADDRESS_ORIGIN_MANUAL},
                                       {"dhcp", IPMIB_ADDRESS_ORIGIN_DHCP},
                                       {"linklayer", IPMIB_ADDRESS_ORIGIN_LINKLAYER},
                                       {"random", IPMIB_ADDRESS_ORIGIN_RANDOM},
                                       {"other", IPMIB_ADDRESS_ORIGIN_OTHER}};
constexpr Word ipv4AddressStates[] = {{"preferred", 1}, {"deprecated", 2}, {"tentative", 6}, {"duplicate", 7}};
constexpr Word ipv4PrefixOrigins[] = {{"manual", 2}, {"wellknown", 3}, {"dhcp", 4}, {"routeradv", 5}, {"other", 1}};
constexpr Word ipv4RouterPreferences[] = {{"high", 1}, {"medium", 0}, {"low", static_cast<std::uint32_t>(-1)}};
constexpr std::uint32_t preferred = 1;
constexpr std::uint32_t manualPrefix = 2;
constexpr std::uint32_t otherPrefix = 1;
constexpr std::uint32_t leasedPrefix = 4;

Ipv4Address addressOf(const Value &text, std::uint32_t ifIndex)
{
    const Ipv4AddressAndLength read = readIpv4AddressAndLength(text);
    Ipv4Address row{};
    row.address = read.address;
    row.if_index = ifIndex;
    row.type = IPMIB_ADDRESS_UNICAST;
    row.prefix = ipv4Masked(read.address, read.length);
    row.prefix_length = read.length;
    row.origin = IPMIB_ADDRESS_ORIGIN_MANUAL;
    row.status = preferred;
    return row;
}

void add(const Value &value, const Ipv4Address &row, Device &device)
{
    // Readers of the address table learn the length of the prefix from its row, so there is one.
    const std::uint32_t origin = row.origin == IPMIB_ADDRESS_ORIGIN_MANUAL ? manualPrefix
                                 : row.origin == IPMIB_ADDRESS_ORIGIN_DHCP ? leasedPrefix
                                                                           : otherPrefix;
    device.add(Ipv4Prefix{row.if_index, row.prefix, row.prefix_length, origin, {}, {}, true, false});
    if (!device.add(row)) {
        value.fail("the device has this address already");
    }
}

void readAddressRow(const Value &value, std::uint32_t ifIndex, Device &device)
{
    if (value.isText()) {
        add(value, addressOf(value, ifIndex), device);
        return;
    }
    Object object(value);
    Ipv4Address row = addressOf(object.need("address"), ifIndex);
    row.origin = object.word("origin", row.origin, ipv4AddressOrigins);
    row.status = object.word("status", row.status, ipv4AddressStates);
    const std::uint32_t created = object.number("created", 0, 0, latestMoment);
    row.created = created * ticksPerSecond;
    row.changed = object.number("changed", created, created, latestMoment) * ticksPerSecond;
    add(value, row, device);
    if (const auto broadcast = object.find("broadcast")) {
        Ipv4Address other = row;
        other.address = readIpv4Address(*broadcast);
        other.type = IPMIB_ADDRESS_BROADCAST;
        add(*broadcast, other, device);
    }
    object.finish();
}

Ipv4Prefix prefixOf(const Value &text, std::uint32_t ifIndex)
{
    const Ipv4AddressAndLength read = readIpv4Prefix(text);
    return {ifIndex, read.address, read.length, manualPrefix, {}, {}, true, false};
}

Ipv4Prefix readPrefixRow(const Value &value, std::uint32_t ifIndex)
{
    if (value.isText()) {
        return prefixOf(value, ifIndex);
    }
    Object object(value);
    Ipv4Prefix row = prefixOf(object.need("prefix"), ifIndex);
    row.origin = object.word("origin", row.origin, ipv4PrefixOrigins);
    row.onLink = object.boolean("onLink", true);
    row.autonomous = object.boolean("autonomous", false);
    readLifetimes(object, row.valid, row.preferred);
    object.finish();
    return row;
}

Neighbour readNeighbourRow(const Value &value, std::uint32_t ifIndex, const Device &device)
{
    Object object(value);
    const std::uint32_t address = readIpv4Address(object.need("address"));
    Neighbour row{0, address, ifIndex, 0, {}, NeighbourType::dynamic, NeighbourState::reachable};
    readLinkLayer(object, row);
    row.type = static_cast<NeighbourType>(object.word("type", static_cast<std::uint32_t>(row.type), neighbourTypes));
    if (row.type == NeighbourType::invalid) {
        row.state = NeighbourState::invalid;
    }
    row.state =
        static_cast<NeighbourState>(object.word("state", static_cast<std::uint32_t>(row.state), neighbourStates));
    row.lastUpdatedS = object.number("updated", device.uptimeS, 0, latestMoment);
    object.finish();
    return row;
}

Ipv4Router readRouterRow(const Value &value, std::uint32_t ifIndex)
{
    Object object(value);
    Ipv4Router row{readIpv4Address(object.need("address")), ifIndex, 0, {}};
    row.preference = static_cast<std::int32_t>(object.word("preference", 0, ipv4RouterPreferences));
    row.lifetime = readRenewed(object, "lifetime", platform::gatewayLongestLifetime);
    object.finish();
    return row;
}

} // namespace

void readIpv4Of(Object &object, Interface &interface, Device &device)
{
    if (!interface.ip4) {
        failWithAny(object, {"ipv4Addresses", "ipv4Prefixes", "ipv4Neighbours", "ipv4Routers", "ipv4RetransmitTime"},
                    "the interface has no IPv4");
        return;
    }
    interface.ip4RetransmitMs = object.number("ipv4RetransmitTime", interface.ip4RetransmitMs, 1, UINT32_MAX);
    // Prefixes before addresses, which bring along those that are not listed.
    eachOf(object, "ipv4Prefixes", [&](const Value &value) {
        if (!device.add(readPrefixRow(value, interface.ifIndex))) {
            value.fail("the interface has this prefix already");
        }
    });
    eachOf(object, "ipv4Addresses", [&](const Value &value) { readAddressRow(value, interface.ifIndex, device); });
    eachOf(object, "ipv4Neighbours", [&](const Value &value) {
        if (!device.addIpv4(readNeighbourRow(value, interface.ifIndex, device))) {
            value.fail("the interface has this neighbour already");
        }
    });
    eachOf(object, "ipv4Routers", [&](const Value &value) {
        if (!device.add(readRouterRow(value, interface.ifIndex))) {
            value.fail("the interface has this router already");
        }
    });
}

void readIpv4Settings(const Value &value, IpmibIpSettings &settings)
{
    Object object(value);
    settings.forwarding = object.boolean("forwarding", true) ? 1 : 2;
    settings.default_ttl = object.number("defaultTtl", settings.default_ttl, 1, 255);
    settings.reasm_timeout_s = object.number("reasmTimeout", settings.reasm_timeout_s, 0, INT32_MAX);
    object.finish();
}

} // namespace ipmib::simulated
