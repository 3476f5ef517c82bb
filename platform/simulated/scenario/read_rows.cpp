// SPDX-License-Identifier: BSD-3-Clause
// Reads what a scenario lists on an interface.
#include "scenario/read_rows.h"

#include "scenario/forms.h"

#include <algorithm>

namespace ipmib::simulated
{
namespace
{

using namespace platform;

constexpr std::uint32_t latest = UINT32_MAX / 100; // seconds since boot; managers are told hundredths

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
constexpr Word neighbourTypes[] = {{"dynamic", static_cast<std::uint32_t>(NeighbourType::dynamic)},
                                   {"static", static_cast<std::uint32_t>(NeighbourType::fixed)},
                                   {"local", static_cast<std::uint32_t>(NeighbourType::local)},
                                   {"invalid", static_cast<std::uint32_t>(NeighbourType::invalid)}};
constexpr Word ipv4NeighbourTypes[] = {{"dynamic", static_cast<std::uint32_t>(NeighbourType::dynamic)},
                                       {"static", static_cast<std::uint32_t>(NeighbourType::fixed)},
                                       {"invalid", static_cast<std::uint32_t>(NeighbourType::invalid)}};
constexpr Word neighbourStates[] = {{"reachable", static_cast<std::uint32_t>(NeighbourState::reachable)},
                                    {"stale", static_cast<std::uint32_t>(NeighbourState::stale)},
                                    {"delay", static_cast<std::uint32_t>(NeighbourState::delay)},
                                    {"probe", static_cast<std::uint32_t>(NeighbourState::probe)},
                                    {"invalid", static_cast<std::uint32_t>(NeighbourState::invalid)},
                                    {"unknown", static_cast<std::uint32_t>(NeighbourState::unknown)},
                                    {"incomplete", static_cast<std::uint32_t>(NeighbourState::incomplete)}};
constexpr Word preferences[] = {
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

template <class Visit>
void eachOf(Object &object, const char *name, Visit visit)
{
    if (const auto list = object.find(name)) {
        list->each(visit);
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
    address.createdS = object.number("created", 0, 0, latest);
    address.changedS = object.number("changed", address.createdS, address.createdS, latest);
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

Lifetime readRenewed(Object &object, const char *name, std::uint32_t longest = infiniteLifetime - 1)
{
    Lifetime lifetime;
    if (const auto seconds = object.find(name)) {
        lifetime.seconds = readLifetime(*seconds, longest);
    }
    lifetime.renewedEvery = object.number("renewed", 0, 1, UINT32_MAX);
    return lifetime;
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
    prefix.valid = readRenewed(object, "valid");
    prefix.preferred = prefix.valid;
    if (const auto preferred = object.find("preferred")) {
        prefix.preferred.seconds = readLifetime(*preferred);
        if (prefix.preferred.seconds > prefix.valid.seconds) {
            preferred->fail("the preferred lifetime is not longer than the valid one");
        }
    }
    object.finish();
    return prefix;
}

void readLinkLayer(Object &object, Neighbour &neighbour)
{
    if (const auto mac = object.find("mac")) {
        const Mac bytes = readMac(*mac);
        std::copy(bytes.begin(), bytes.end(), neighbour.linkLayer);
    }
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
    neighbour.lastUpdatedS = object.number("updated", device.uptimeS, 0, latest);
    object.finish();
    return neighbour;
}

// What is not resolved has no link-layer address, and says so by its type.
Neighbour readIpv4Neighbour(const Value &value, std::uint32_t ifIndex)
{
    Object object(value);
    const std::uint32_t address = readIpv4Address(object.need("address"));
    Neighbour neighbour{0, address, ifIndex, 0, {}, NeighbourType::dynamic, NeighbourState::reachable};
    readLinkLayer(object, neighbour);
    neighbour.type =
        static_cast<NeighbourType>(object.word("type", static_cast<std::uint32_t>(neighbour.type), ipv4NeighbourTypes));
    object.finish();
    return neighbour;
}

Router readRouter(const Value &value, std::uint32_t ifIndex)
{
    Object object(value);
    Router router{readAddress(object.need("address")), ifIndex, gatewayPreferenceMedium, {}};
    router.preference = object.word("preference", router.preference, preferences);
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

void readIpv4Rows(Object &object, const Interface &interface, Device &device)
{
    eachOf(object, "ipv4Addresses", [&](const Value &value) {
        const Ipv4AddressAndLength read = readIpv4AddressAndLength(value);
        if (!device.add(Ipv4Address{read.address, interface.ifIndex, read.length})) {
            value.fail("the device has this address already");
        }
    });
    eachOf(object, "ipv4Neighbours", [&](const Value &value) {
        if (!device.addIpv4(readIpv4Neighbour(value, interface.ifIndex))) {
            value.fail("the interface has this neighbour already");
        }
    });
}

} // namespace ipmib::simulated
