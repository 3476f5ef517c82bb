// SPDX-License-Identifier: BSD-3-Clause
// A simulated device: what the scenario says of it, seen at one moment.
#pragma once

#include "connection_table.h"
#include "device/answer_faults.h"
#include "device/failures.h"
#include "device/interface.h"
#include "device/recorded.h"
#include "device/routes.h"
#include "device/rows.h"
#include "interface_list.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace ipmib::simulated
{

inline constexpr std::uint32_t highestIfIndex = 0x7FFF'FFFF;

// What the device says of itself.
struct SystemGroup {
    bool isThere = false;
    std::string name;
    std::string description;
    std::string contact;
    std::string location;
    std::vector<std::uint32_t> objectId;
    std::uint32_t services = 0;
};

class Device
{
  public:
    // --- What the scenario says; it does not change once the device is complete.

    std::uint32_t uptimeS = 0; // at the start
    std::uint32_t hopLimit = 64;
    SystemGroup system;
    // Those that are not the sum of the interfaces'.
    CounterSet<IpmibIpCounters> systemIp6Counters;
    CounterSet<IpmibIpCounters> systemIp4Counters;
    IcmpCounters icmp6;
    IcmpCounters icmp4;
    CounterSet<IpmibTcpCounters> tcpCounters;
    std::uint32_t tcpConnections = 0;
    CounterSet<IpmibUdpCounters> udpCounters;
    IpmibIpSettings ip4Settings{1, 64, 30}; // forwards
    Schedule ip6Down;
    Schedule ip4Down;
    Failures failures;
    Routes routes;
    platform::ConnectionTable connections[IPMIB_CONNECTION_TABLES];
    Recorded recorded;
    AnswerFaults faults;
    Schedule reboots; // of the clock since the start: the one of everything else begins anew at their ends

    // Null when its ifIndex or its name is taken. The pointer is good until the next one is added.
    Interface *add(Interface interface);
    // Interfaces by ifIndex.
    const std::vector<Interface> &interfaces() const { return interfaces_; }
    const Interface *named(const std::string &name) const;
    // In the place of the one with its ifIndex, which has the same name.
    void replace(const Interface &interface)
    {
        interfaces_[static_cast<std::size_t>(placeOf(interface.ifIndex) - interfaces_.begin())] = interface;
    }
    // The one above the highest that is taken; 1 when that is as high as there is.
    std::uint32_t nextIfIndex() const;
    // These answer false when the row is there already.
    bool add(const Address &address) { return addresses_.find(address.key()) == nullptr && addresses_.put(address); }
    bool add(const Neighbour &row) { return neighbours_.find(row.key()) == nullptr && neighbours_.put(row); }
    bool add(const Router &router);
    bool add(const Prefix &prefix) { return prefixes_.find(prefix.key()) == nullptr && prefixes_.put(prefix); }

    bool add(const Ipv4Address &row) { return ipv4Addresses_.find(row.address) == nullptr && ipv4Addresses_.put(row); }
    bool add(const Ipv4Prefix &row) { return ipv4Prefixes_.find(row.key()) == nullptr && ipv4Prefixes_.put(row); }
    bool add(const Ipv4Router &row) { return ipv4Routers_.find(row.key()) == nullptr && ipv4Routers_.put(row); }
    bool addIpv4(const Neighbour &row)
    {
        return ipv4Neighbours_.find(row.key()) == nullptr && ipv4Neighbours_.put(row);
    }

    const Addresses &addresses() const { return addresses_; }
    const NeighbourRows &neighbours() const { return neighbours_; }

    // --- The moment.

    void setTime(Time time) { time_ = time; }
    Time time() const { return time_; }
    std::uint32_t elapsedS() const;
    std::uint32_t secondsSinceBoot() const { return uptimeS + elapsedS(); }
    // So many milliseconds after boot sysUpTime was 0; before boot when it is negative.
    void setUptimeBegan(std::int64_t sinceBootMs)
    {
        uptimeVersion_ += sinceBootMs != uptimeBeganMs_ ? 1 : 0;
        uptimeBeganMs_ = sinceBootMs;
    }
    // Differs after each change of that.
    std::uint64_t uptimeVersion() const { return uptimeVersion_; }
    // sysUpTime at a moment since boot, in hundredths of a second: 0 for what was there at boot, or before sysUpTime
    // began, and at most what it is now.
    std::uint32_t uptimeAt(std::uint64_t sinceBootMs) const;
    std::uint32_t uptimeAtSecond(std::uint32_t sinceBoot) const { return uptimeAt(std::uint64_t{sinceBoot} * 1'000); }

    // --- What there is at this moment. Null for none; pointers are good as long as the device.

    const Interface *find(std::uint32_t ifIndex) const;
    const Interface *after(std::uint32_t ifIndex) const;
    // The interface, when IPv6 is on there; the second one when it runs there, too.
    const Interface *withIp6(std::uint32_t ifIndex) const;
    const Interface *runningIp6(std::uint32_t ifIndex) const;

    // Traffic of one version of IP.
    IpmibIpCounters systemTraffic(std::uint32_t version) const;

    const Neighbour *neighbour(const NeighbourKey &key) const;
    const Neighbour *globalNeighbourAfter(const NeighbourKey &key) const;
    const Neighbour *linkLocalNeighbourAfter(const NeighbourKey &key) const;

    // The same interfaces as walks over a selection see them, whether they exist now or not.
    const platform::InterfaceList &list() const { return list_; }

    const Address *linkLocal(std::uint32_t ifIndex) const;
    const Address *address(const PackedAddress &address) const;
    const Address *addressAfter(const PackedAddress &address) const;

    const Prefix *firstPrefix(std::uint32_t ifIndex) const;
    const Prefix *prefixAfter(const PrefixKey &key) const;

    enum class RouterClass { global, linkLocal };
    const Router *router(const RouterKey &key) const;
    const Router *firstRouter(RouterClass of) const { return routerAfter(of, {PackedAddress{}, 0}); }
    const Router *routerAfter(RouterClass of, const RouterKey &key) const;

    const Ipv4Address *ipv4Address(std::uint32_t address) const;
    const Ipv4Address *ipv4AddressAfter(std::uint32_t address) const;
    const Ipv4Prefix *ipv4Prefix(const Ipv4PrefixKey &key) const;
    const Ipv4Prefix *ipv4PrefixAfter(const Ipv4PrefixKey &key) const;
    const Ipv4Router *ipv4Router(const Ipv4RouterKey &key) const;
    const Ipv4Router *ipv4RouterAfter(const Ipv4RouterKey &key) const;
    const Neighbour *ipv4Neighbour(const NeighbourKey &key) const;
    const Neighbour *ipv4NeighbourAfter(const NeighbourKey &key) const;

    bool runsIpv4(std::uint32_t ifIndex) const;

  private:
    // The first interface, whether it exists now or not, whose ifIndex is not below this one.
    std::vector<Interface>::const_iterator placeOf(std::uint32_t ifIndex) const;
    bool isVisible(const Ipv4Prefix &row) const { return runsIpv4(row.ifIndex) && row.valid.left(elapsedS()) != 0; }
    bool isVisible(const Ipv4Router &row) const { return runsIpv4(row.ifIndex) && row.lifetime.left(elapsedS()) != 0; }
    const Prefix *visible(std::uint32_t ifIndex, const Prefix *prefix) const;
    const Routers &routers(RouterClass of) const
    {
        return of == RouterClass::global ? globalRouters_ : linkLocalRouters_;
    }
    bool isVisible(const Router &router) const;

    std::vector<Interface> interfaces_; // by ifIndex
    platform::InterfaceList list_;
    mutable std::size_t lastPlace_ = 0; // of the last lookup: walks go on from there
    std::unordered_map<std::string, std::uint32_t> names_;
    Addresses addresses_; // outside fe80::/10
    Prefixes prefixes_;
    NeighbourRows neighbours_;
    Ipv4Addresses ipv4Addresses_;
    Ipv4Prefixes ipv4Prefixes_;
    Ipv4Routers ipv4Routers_;
    NeighbourRows ipv4Neighbours_;
    Routers globalRouters_;
    Routers linkLocalRouters_;
    Time time_ = 0;
    std::int64_t uptimeBeganMs_ = 0;
    std::uint64_t uptimeVersion_ = 1;
};

} // namespace ipmib::simulated
