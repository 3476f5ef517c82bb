// SPDX-License-Identifier: BSD-3-Clause
// Reads what a scenario lists on an interface.
#include "scenario/read.h"

#include "scenario/forms.h"

namespace ipmib::simulated
{
namespace
{

using namespace platform;

constexpr Word addressOrigins[] = {{"manual", addressOriginManual},
                                   {"dhcp", addressOriginDhcp},
                                   {"linklayer", addressOriginLinkLayer},
                                   {"random", addressOriginRandom},
                                   {"other", addressOriginOther}};
constexpr Word addressStates[] = {{"preferred", addressStatePreferred},
                                  {"deprecated", addressStateDeprecated},
                                  {"tentative", addressStateTentative},
                                  {"duplicate", addressStateDuplicate}};
constexpr Word prefixOrigins[] = {{"manual", prefixOriginManual},
                                  {"wellknown", prefixOriginWellKnown},
                                  {"dhcp", prefixOriginDhcp},
                                  {"routeradv", prefixOriginRouter},
                                  {"other", prefixOriginOther}};
constexpr Word routerPreferences[] = {
    {"high", gatewayPreferenceHigh}, {"medium", gatewayPreferenceMedium}, {"low", gatewayPreferenceLow}};

// Where the prefix of an address comes from when nothing else is said.
std::uint32_t prefixOriginOf(const Address &address)
{
    switch (address.origin) {
    case addressOriginManual:
        return prefixOriginManual;
    case addressOriginDhcp:
        return prefixOriginDhcp;
    case addressOriginLinkLayer:
    case addressOriginRandom:
        return prefixOriginRouter;
    default:
        return prefixOriginOther;
    }
}

Address addressOf(const AddressAndLength &read, std::uint32_t ifIndex)
{
    const std::uint32_t origin = read.address.isLinkLocal() ? addressOriginLinkLayer : addressOriginManual;
    return {read.address, ifIndex, origin, addressStatePreferred, 0, 0, read.length, false};
}

Address readFullAddress(const Value &value, std::uint32_t ifIndex)
{
    if (value.isText()) {
        return addressOf(readAddressAndLength(value), ifIndex);
    }
    Object object(value);
    Address address = addressOf(readAddressAndLength(object.need("address")), ifIndex);
    address.origin = object.word("origin", address.origin, addressOrigins);
    address.state = object.word("status", address.state, addressStates);
    address.createdS = object.number("created", 0, 0, latestMoment);
    address.changedS = object.number("changed", address.createdS, address.createdS, latestMoment);
    address.anycast = object.boolean("anycast", false);
    object.finish();
    return address;
}

void readAddressOf(const Value &value, Interface &interface, Device &device)
{
    Address address = readFullAddress(value, interface.ifIndex);
    if (!address.address.isLinkLocal()) {
        if (!addAddress(address, device)) {
            value.fail("the device has this address already");
        }
        return;
    }
    if (interface.linkLocal) {
        value.fail("the interface has a link-local address already");
    }
    address.length = linkLocalPrefixLength;
    interface.linkLocal = address;
}

Prefix readFullPrefix(const Value &value, std::uint32_t ifIndex)
{
    Prefix prefix{{}, ifIndex, prefixOriginManual, {}, {}, 0, prefixFlagOnLink};
    const auto take = [&prefix](const Value &text) {
        const AddressAndLength read = readPrefix(text);
        if (read.address.isLinkLocal()) {
            text.fail("link-local prefixes are not listed: an interface has one when it has a link-local address");
        }
        prefix.prefix = read.address;
        prefix.length = read.length;
    };
    if (value.isText()) {
        take(value);
        return prefix;
    }
    Object object(value);
    take(object.need("prefix"));
    prefix.origin = object.word("origin", prefix.origin, prefixOrigins);
    prefix.flags = object.boolean("onLink", true) ? prefixFlagOnLink : std::uint8_t{0};
    prefix.flags |= object.boolean("autonomous", false) ? prefixFlagAutonomous : std::uint8_t{0};
    readLifetimes(object, prefix.valid, prefix.preferred);
    object.finish();
    return prefix;
}

Neighbour readNeighbour(const Value &value, std::uint32_t ifIndex, const Device &device)
{
    Object object(value);
    const PackedAddress address = readAddress(object.need("address"));
    Neighbour neighbour{address.high, address.low, ifIndex, 0, {}, NeighbourType::dynamic, NeighbourState::reachable};
    readLinkLayer(object, neighbour);
    neighbour.type =
        static_cast<NeighbourType>(object.word("type", static_cast<std::uint32_t>(neighbour.type), neighbourTypes));
    neighbour.state =
        static_cast<NeighbourState>(object.word("state", static_cast<std::uint32_t>(neighbour.state), neighbourStates));
    neighbour.lastUpdatedS = object.number("updated", device.uptimeS, 0, latestMoment);
    object.finish();
    return neighbour;
}

Router readRouter(const Value &value, std::uint32_t ifIndex)
{
    Object object(value);
    Router router{readAddress(object.need("address")), ifIndex, gatewayPreferenceMedium, {}};
    router.preference = object.word("preference", router.preference, routerPreferences);
    router.lifetime = readRenewed(object, "lifetime", gatewayLongestLifetime);
    object.finish();
    return router;
}

} // namespace

bool addAddress(const Address &address, Device &device)
{
    // Readers of the address table learn the length of the prefix from its row, so there is one.
    device.add(Prefix{address.address.masked(address.length),
                      address.ifIndex,
                      prefixOriginOf(address),
                      {},
                      {},
                      address.length,
                      prefixFlagOnLink});
    return device.add(address);
}

void readRows(Object &object, Interface &interface, Device &device)
{
    // Prefixes before addresses, which bring along those that are not listed.
    eachOf(object, "prefixes", [&](const Value &value) {
        if (!device.add(readFullPrefix(value, interface.ifIndex))) {
            value.fail("the interface has this prefix already");
        }
    });
    eachOf(object, "addresses", [&](const Value &value) { readAddressOf(value, interface, device); });
    eachOf(object, "neighbours", [&](const Value &value) {
        if (!device.add(readNeighbour(value, interface.ifIndex, device))) {
            value.fail("the interface has this neighbour already");
        }
    });
    eachOf(object, "routers", [&](const Value &value) {
        if (!device.add(readRouter(value, interface.ifIndex))) {
            value.fail("the interface has this router already");
        }
    });
}

} // namespace ipmib::simulated
