// SPDX-License-Identifier: BSD-3-Clause
// One interface of a simulated device.
#pragma once

#include "device/counters.h"
#include "device/link_counters.h"
#include "device/rows.h"

#include <ipmib/platform_interfaces.h>
#include <ipmib/records.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace ipmib::simulated
{

using Mac = std::array<std::uint8_t, 6>;

inline constexpr std::uint32_t standardMaxIntervalS = 600; // RFC 4861, 6.2.1

// What routers are told on an interface.
struct Advertisement {
    NdIfConfigInfo info{};                 // without the timers, which are the interface's own
    std::uint32_t mtu = 0;                 // of the MTU option, bytes
    std::optional<std::uint32_t> hopLimit; // unless it is the device's
};

struct Interface {
    std::uint32_t ifIndex = 0;
    std::string name;
    std::string alias;
    std::uint64_t speed = 1'000'000'000; // bits a second
    std::uint8_t type = 6;               // the code under which it is selected
    std::uint32_t mtu = 1500;
    std::optional<Mac> mac;
    std::vector<Mac> receives;           // frames for these; its own is added with the interface
    std::vector<std::uint32_t> runsOver; // ifIndexes, ascending
    std::vector<std::uint32_t> carries;  // those that run over it
    bool enabled = true;                 // by the administrator
    bool promiscuous = false;
    bool connector = true;                      // it is hardware
    std::uint32_t downStatus = IPMIB_OPER_DOWN; // while it does not run
    bool ip6 = true;
    bool ip4 = true;
    std::uint32_t reachableMs = 30'000;
    std::uint32_t retransmitMs = 1'000;
    std::uint32_t ip4RetransmitMs = 1'000;
    Schedule outages;           // times at which it does not run
    bool outagesRemove = false; // and is not even there then
    std::optional<Address> linkLocal;
    std::optional<Advertisement> advertisement;
    CounterSet<IpmibIpCounters> ip6Counters;
    CounterSet<IpmibIpCounters> ip4Counters;
    CounterSet<IpmibInterfaceTraffic> linkCounters; // the others follow from those of IP

    bool exists(Time time) const { return !outagesRemove || !outages.covers(time); }
    bool runs(Time time) const { return !outages.covers(time); }
    Time runningTime(Time time) const { return time - outages.coveredBefore(time); }
    // As the interface tables show it. Frames are the datagrams of both versions of IP, where nothing
    // else is said of the link.
    IpmibInterface row(Time time) const;
    IpmibInterfaceTraffic traffic(Time time) const;
    // Of one version of IP.
    IpmibIpCounters ipTraffic(std::uint32_t version, Time time) const;
};

// Modified EUI-64 of a link-layer address.
std::uint64_t interfaceIdentifier(const Mac &mac);
// fe80:: and the identifier.
PackedAddress linkLocalAddress(std::uint64_t identifier);
// The one that an interface makes for itself from its link-layer address; nothing without such an address.
std::optional<Address> automaticLinkLocal(const Interface &interface);

} // namespace ipmib::simulated
