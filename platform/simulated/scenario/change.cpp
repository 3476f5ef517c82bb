// SPDX-License-Identifier: BSD-3-Clause
#include "scenario/change.h"

#include "scenario/forms.h"
#include "scenario/read.h"

#include <algorithm>

namespace ipmib::simulated
{
namespace
{

template <class Counters>
void changeCounters(Object &object, const char *name, const CounterSet<Counters> &now, Time running, auto &place)
{
    if (const auto member = object.find(name)) {
        place = now.changed(*member, running);
    }
}

// {"name": "eth0", "up": false, "counters": {"ipv6": {"inOctets": {"rate": 5000}}}}
Interface changedInterface(const Value &value, const Device &device)
{
    Object object(value);
    const Value name = object.need("name");
    const Interface *now = device.named(name.text("the name of an interface"));
    if (now == nullptr) {
        name.refuse("the name of an interface of this device");
    }
    Interface interface = *now;
    Interface said;
    if (readOutages(object, said)) {
        interface.enabled = said.enabled;
        interface.outagesRemove = said.outagesRemove;
        interface.outages = said.outages.startingAt(device.time(), &now->outages);
    }
    if (const auto counters = object.find("counters")) {
        const Time running = now->runningTime(device.time());
        Object versions(*counters);
        changeCounters(versions, "ipv6", now->ip6Counters, running, interface.ip6Counters);
        changeCounters(versions, "ipv4", now->ip4Counters, running, interface.ip4Counters);
        versions.finish();
    }
    object.finish();
    return interface;
}

// True, or {"seconds": 20}, for which it is away.
Time readReboot(const Value &value)
{
    if (!value.isObject()) {
        if (!value.boolean()) {
            value.refuse("true, or how many \"seconds\" it takes");
        }
        return 0;
    }
    constexpr double longest = 86'400;
    Object object(value);
    const Value seconds = object.need("seconds");
    seconds.real(0, longest);
    object.finish();
    return readSeconds(seconds);
}

} // namespace

Change Change::read(const Value &value, const Device &device, Time elapsed)
{
    Change change;
    Object object(value);
    eachOf(object, "interfaces", [&](const Value &each) {
        Interface interface = changedInterface(each, device);
        for (const Interface &other : change.interfaces_) {
            if (other.ifIndex == interface.ifIndex) {
                each.fail("the interface \"" + other.name + "\" stands twice in one change");
            }
        }
        change.interfaces_.push_back(std::move(interface));
    });
    if (const auto system = object.find("system")) {
        Object groups(*system);
        changeCounters(groups, "ipv6", device.systemIp6Counters, device.time(), change.systemIp6Counters_);
        changeCounters(groups, "ipv4", device.systemIp4Counters, device.time(), change.systemIp4Counters_);
        changeCounters(groups, "tcp", device.tcpCounters, device.time(), change.tcpCounters_);
        changeCounters(groups, "udp", device.udpCounters, device.time(), change.udpCounters_);
        groups.finish();
    }
    if (const auto faults = object.find("faults")) {
        change.faults_ = device.faults.changed(*faults, elapsed);
    }
    if (const auto reboot = object.find("reboot")) {
        change.reboot_ = readReboot(*reboot);
    }
    object.finish();
    return change;
}

void Change::applyTo(Device &device) const
{
    for (const Interface &interface : interfaces_) {
        device.replace(interface);
    }
    const auto set = [](const auto &said, auto &place) {
        if (said) {
            place = *said;
        }
    };
    set(systemIp6Counters_, device.systemIp6Counters);
    set(systemIp4Counters_, device.systemIp4Counters);
    set(tcpCounters_, device.tcpCounters);
    set(udpCounters_, device.udpCounters);
    set(faults_, device.faults);
}

void Change::keepOriginals(const Device &device, Change &originals) const
{
    for (const Interface &interface : interfaces_) {
        if (std::ranges::find(originals.interfaces_, interface.ifIndex, &Interface::ifIndex) ==
            originals.interfaces_.end()) {
            originals.interfaces_.push_back(*device.named(interface.name));
        }
    }
    const auto keep = [](const auto &said, const auto &now, auto &place) {
        if (said && !place) {
            place = now;
        }
    };
    keep(systemIp6Counters_, device.systemIp6Counters, originals.systemIp6Counters_);
    keep(systemIp4Counters_, device.systemIp4Counters, originals.systemIp4Counters_);
    keep(tcpCounters_, device.tcpCounters, originals.tcpCounters_);
    keep(udpCounters_, device.udpCounters, originals.udpCounters_);
}

} // namespace ipmib::simulated
