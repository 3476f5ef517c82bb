// SPDX-License-Identifier: BSD-3-Clause
// Reads one interface of a scenario.
#include "scenario/read.h"

#include "scenario/forms.h"

#include <ipmib/records.h>

#include <algorithm>
#include <cmath>

namespace ipmib::simulated
{
namespace
{

constexpr Word types[] = {
    {"ethernet", 6}, {"other", 1}, {"ppp", 23}, {"serial", 22}, {"slip", 28}, {"wifi", 71},
};
constexpr std::uint32_t usual = 6;
constexpr Word downStatuses[] = {{"down", IPMIB_OPER_DOWN},
                                 {"testing", IPMIB_OPER_TESTING},
                                 {"unknown", IPMIB_OPER_UNKNOWN},
                                 {"dormant", IPMIB_OPER_DORMANT},
                                 {"notPresent", IPMIB_OPER_NOT_PRESENT},
                                 {"lowerLayerDown", IPMIB_OPER_LOWER_LAYER_DOWN}};

constexpr std::uint32_t smallestMtu = 68; // of IPv4
constexpr std::uint32_t smallestIp6Mtu = 1280;
constexpr std::uint32_t largestMtu = 65535;
constexpr std::size_t longestAlias = 64;
constexpr double highestSpeed = 1e6; // Mbit/s
constexpr double perMegabit = 1e6;
constexpr std::uint32_t longestReachableMs = 3'600'000;

// RFC 4861, 6.2.1
constexpr std::uint32_t longestMaxIntervalS = 1800;
constexpr std::uint32_t shortestLifetimeS = 4;
constexpr std::uint32_t longestLifetimeS = 9000;

std::uint32_t standardMinInterval(std::uint32_t maxInterval)
{
    return maxInterval >= 9 ? maxInterval * 33 / 100 : maxInterval * 3 / 4;
}

Advertisement readAdvertisement(const Value &value, Interface &interface)
{
    Object object(value);
    Advertisement advertisement;
    NdIfConfigInfo &info = advertisement.info;
    const auto flagWhen = [&info](bool condition, std::uint32_t flag) { info.flags |= condition ? flag : 0u; };

    flagWhen(object.boolean("send", true), ND_FLAG_SEND_ADVERTS);
    flagWhen(object.boolean("managed", false), ND_FLAG_MANAGED);
    flagWhen(object.boolean("otherConfig", false), ND_FLAG_OTHER_CONFIG);
    info.max_interval_s = object.number("maxInterval", standardMaxIntervalS, 4, longestMaxIntervalS);
    const std::uint32_t longestMin = std::max(info.max_interval_s * 3 / 4, 3u);
    info.min_interval_s =
        object.number("minInterval", std::max(standardMinInterval(info.max_interval_s), 3u), 3, longestMin);
    if (const auto lifetime = object.find("lifetime")) {
        info.default_lifetime_s = static_cast<std::uint32_t>(lifetime->number(0, longestLifetimeS));
        if (info.default_lifetime_s != 0 && info.default_lifetime_s < shortestLifetimeS) {
            lifetime->refuse("0 or a number from 4 to 9000");
        }
        info.flags |= ND_FLAG_LIFETIME_VALID;
    }
    if (const auto mtu = object.find("mtu")) {
        advertisement.mtu = static_cast<std::uint32_t>(mtu->number(smallestIp6Mtu, largestMtu));
    }
    flagWhen(advertisement.mtu == 0, ND_FLAG_NO_MTU_OPTION);
    if (const auto reachable = object.find("reachableTime")) { // which the router itself keeps to
        interface.reachableMs = static_cast<std::uint32_t>(reachable->number(1, longestReachableMs));
        info.flags |= ND_FLAG_REACHABLE_VALID;
    }
    if (const auto retransmit = object.find("retransmitTime")) {
        interface.retransmitMs = static_cast<std::uint32_t>(retransmit->number(1, UINT32_MAX));
        info.flags |= ND_FLAG_RETRANSMIT_VALID;
    }
    if (const auto hopLimit = object.find("hopLimit")) {
        advertisement.hopLimit = static_cast<std::uint32_t>(hopLimit->number(0, 255));
        flagWhen(advertisement.hopLimit == 0u, ND_FLAG_NO_HOP_LIMIT);
    }
    object.finish();
    return advertisement;
}

// The interfaces that it runs over, and the link-layer addresses that it takes frames for.
void readLinks(Object &object, Interface &interface, const Device &device)
{
    eachOf(object, "runsOver", [&](const Value &name) {
        const Interface *lower = device.named(name.text("the name of an interface"));
        if (lower == nullptr) {
            name.refuse("the name of an interface that stands further up");
        }
        interface.runsOver.push_back(lower->ifIndex);
    });
    std::sort(interface.runsOver.begin(), interface.runsOver.end());
    eachOf(object, "receives", [&](const Value &mac) { interface.receives.push_back(readMac(mac)); });
}

void readCounters(Object &object, Interface &interface)
{
    const auto counters = object.find("counters");
    if (!counters) {
        return;
    }
    Object versions(*counters);
    if (const auto ip6 = versions.find("ipv6")) {
        interface.ip6Counters = CounterSet<IpmibIpCounters>::read(*ip6);
    }
    if (const auto ip4 = versions.find("ipv4")) {
        interface.ip4Counters = CounterSet<IpmibIpCounters>::read(*ip4);
    }
    if (const auto link = versions.find("link")) {
        interface.linkCounters = CounterSet<IpmibInterfaceTraffic>::read(*link);
    }
    versions.finish();
}

// What exists with IPv6 alone.
void readIp6(Object &object, Interface &interface, Device &device)
{
    interface.reachableMs = object.number("reachableTime", interface.reachableMs, 1, longestReachableMs);
    interface.retransmitMs = object.number("retransmitTime", interface.retransmitMs, 1, UINT32_MAX);
    if (const auto advertisement = object.find("advertisements")) {
        interface.advertisement = readAdvertisement(*advertisement, interface);
    }
    readRows(object, interface, device);
    if (!interface.linkLocal) {
        interface.linkLocal = automaticLinkLocal(interface);
    }
}

void refuseIp6(Object &object)
{
    for (const char *name :
         {"reachableTime", "retransmitTime", "advertisements", "addresses", "prefixes", "neighbours", "routers"}) {
        if (const auto member = object.find(name)) {
            member->fail("the interface has no IPv6");
        }
    }
}

} // namespace

bool readOutages(Object &object, Interface &interface)
{
    const auto up = object.find("up");
    const auto down = object.find("down");
    const auto gone = object.find("gone");
    if ((up && (down || gone)) || (down && gone)) {
        object.value().fail("only one of \"up\", \"down\" and \"gone\" can be said of an interface");
    }
    if (up && !up->boolean()) {
        interface.enabled = false;
        interface.outages = Schedule::always();
    } else if (down) {
        interface.outages = Schedule::read(*down);
    } else if (gone) {
        interface.outages = Schedule::read(*gone);
        interface.outagesRemove = true;
    }
    return up || down || gone;
}

std::uint8_t readInterfaceType(Object &object)
{
    const auto type = object.find("type");
    if (!type) {
        return usual;
    }
    return static_cast<std::uint8_t>(type->isNumber() ? type->number(1, 255) : type->word(types));
}

void readInterface(const Value &value, Device &device)
{
    Object object(value);
    Interface basics;
    const Value name = object.need("name");
    basics.name = name.text("the name of an interface");
    if (device.named(basics.name) != nullptr) {
        name.fail("another interface has this name");
    }
    basics.ifIndex = object.number("ifIndex", device.nextIfIndex(), 1, highestIfIndex);
    basics.type = readInterfaceType(object);
    basics.ip6 = object.boolean("ipv6", true);
    basics.ip4 = object.boolean("ipv4", true);
    basics.mtu = object.number("mtu", basics.mtu, basics.ip6 ? smallestIp6Mtu : smallestMtu, largestMtu);
    if (const auto alias = object.find("alias")) {
        basics.alias = alias->text();
        if (basics.alias.size() > longestAlias) {
            alias->fail("an alias has at most 64 bytes");
        }
    }
    if (const auto speed = object.find("speed")) {
        basics.speed = static_cast<std::uint64_t>(std::llround(speed->real(0, highestSpeed) * perMegabit));
    }
    if (const auto mac = object.find("mac")) {
        basics.mac = readMac(*mac);
    }
    basics.promiscuous = object.boolean("promiscuous", false);
    basics.connector = object.boolean("connector", true);
    basics.downStatus = object.word("downStatus", basics.downStatus, downStatuses);
    readLinks(object, basics, device);
    readOutages(object, basics);
    readCounters(object, basics);
    const std::uint32_t ifIndex = basics.ifIndex;
    Interface *interface = device.add(std::move(basics));
    if (interface == nullptr) {
        value.fail("another interface has ifIndex " + std::to_string(ifIndex));
    }
    if (interface->ip6) {
        readIp6(object, *interface, device);
    } else {
        refuseIp6(object);
    }
    readIpv4Of(object, *interface, device);
    object.finish();
}

} // namespace ipmib::simulated
