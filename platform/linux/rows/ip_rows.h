// SPDX-License-Identifier: BSD-3-Clause
// What tables outside the module say of IP on this system: each function is the one of IpmibIpHooks that its name says.
#pragma once

#include "addresses/ipv4_address_table.h"
#include "addresses/packed_address.h"
#include "core/proc_file.h"
#include "links/link_table.h"
#include "neighbour_rows.h"
#include "routes/ipv4_route_table.h"

#include <ipmib/platform_ip.h>

#include <array>
#include <string>
#include <vector>

namespace ipmib::platform
{

class LinuxPlatform;

class IpRows
{
  public:
    explicit IpRows(LinuxPlatform &platform) : platform_(platform) {}

    // The answer, when it fails, is one line for the user.
    std::string follow(std::uint32_t rows);

    bool settings(std::uint32_t version, IpmibIpSettings &settings);
    bool systemCounters(std::uint32_t version, IpmibIpCounters &counters);
    bool interfaceCounters(std::uint32_t version, std::uint32_t ifIndex, IpmibIpCounters &counters);
    bool icmpCounters(std::uint32_t version, IpmibIcmpCounters &counters);
    bool tcpCounters(IpmibTcpCounters &counters);
    bool udpCounters(IpmibUdpCounters &counters);

    bool findInterface(std::uint32_t version, std::uint32_t ifIndex, IpmibIpInterface &row);
    bool interfaceAfter(std::uint32_t version, std::uint32_t ifIndex, IpmibIpInterface &row);
    std::uint32_t interfacesChanged(std::uint32_t version);

    bool findAddress(std::uint32_t address, IpmibIpAddress &row);
    bool addressAfter(std::uint32_t address, IpmibIpAddress &row);
    bool findPrefix(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length, IpmibIpPrefix &row);
    bool prefixAfter(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length, IpmibIpPrefix &row);
    bool findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpNeighbour &row);
    bool neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpNeighbour &row);
    bool findRouter(std::uint32_t address, std::uint32_t ifIndex, IpmibIpRouter &row);
    bool routerAfter(std::uint32_t address, std::uint32_t ifIndex, IpmibIpRouter &row);

    bool findStack(std::uint32_t higher, std::uint32_t lower, IpmibStack &row);
    bool stackAfter(std::uint32_t higher, std::uint32_t lower, IpmibStack &row);
    std::uint32_t stackChanged();
    bool findReceiveAddress(std::uint32_t ifIndex, const std::uint8_t *address, std::size_t size,
                            IpmibReceiveAddress &row);
    bool receiveAddressAfter(std::uint32_t ifIndex, const std::uint8_t *address, std::size_t size,
                             IpmibReceiveAddress &row);

    std::uint32_t linkLocalPrefixLength(std::uint32_t ifIndex);

    // Announcements have been read: what has changed, has changed now.
    void noteChanges();
    // What was read for a packet is not for the next one.
    void newPacket() { receiveAddressesFresh_ = false; }

  private:
    // What a time of change is kept of.
    struct InterfaceState {
        std::uint32_t ifIndex;
        bool enabled;
        PackedAddress onLink; // which the identifier is made from
        bool operator==(const InterfaceState &) const = default;
    };
    struct InterfaceStates {
        std::vector<InterfaceState> rows;
        std::uint64_t changedMs = 0; // of the monotonic clock; 0: before they were followed
    };
    std::vector<InterfaceState> interfaceStates(std::uint32_t version) const;
    void compareInterfaces();
    bool fillInterface(std::uint32_t version, const Link &link, IpmibIpInterface &row);
    bool enabled(std::uint32_t version, const Link &link) const;

    bool fillAddress(const Ipv4Address *unicast, const Ipv4Address *broadcast, IpmibIpAddress &row) const;
    bool fillPrefix(const Ipv4AddressTable::PrefixKey &key, IpmibIpPrefix &row);
    bool fillRouter(const Ipv4Router *router, IpmibIpRouter &row) const;
    bool fillNeighbour(const Neighbour *neighbour, IpmibIpNeighbour &row) const;
    const std::vector<IpmibStack> &stack();
    const std::vector<IpmibReceiveAddress> &receiveAddresses();

    LinuxPlatform &platform_;
    bool followsReceiveAddresses_ = false;
    InterfaceStates interfaces_[2];               // of IPv4 and of IPv6
    std::array<std::uint64_t, 3> seenVersions_{}; // of links and addresses
    std::uint64_t versionsSeenMs_ = 0;            // when they became so
    bool interfacesCompared_ = true;
    std::uint64_t nextComparisonMs_ = 0;
    std::vector<IpmibStack> stack_;
    std::uint64_t stackVersion_ = 0;
    std::vector<IpmibReceiveAddress> receiveAddresses_;
    bool receiveAddressesFresh_ = false;
    std::uint64_t nextReadMs_ = 0;
    ProcFile multicastAddresses_{"/proc/thread-self/net/dev_mcast"};
    ProcFile ipv4Forwarding_{"/proc/sys/net/ipv4/ip_forward"};
    ProcFile ipv4DefaultTtl_{"/proc/sys/net/ipv4/ip_default_ttl"};
    ProcFile ipv4FragmentTime_{"/proc/sys/net/ipv4/ipfrag_time"};
    ProcFile ipv6Forwarding_{"/proc/sys/net/ipv6/conf/all/forwarding"};
    ProcFile ipv6FragmentTime_{"/proc/sys/net/ipv6/ip6frag_time"};
};

} // namespace ipmib::platform
