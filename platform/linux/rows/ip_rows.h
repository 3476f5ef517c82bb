// SPDX-License-Identifier: BSD-3-Clause
// What tables outside the module say of IP on this system: each function is the one of IpmibIpHooks that its name says.
#pragma once

#include "core/proc_file.h"

#include <ipmib/platform_ip.h>

#include <string>

namespace ipmib::platform
{

class Platform;

class IpRows
{
  public:
    explicit IpRows(Platform &platform) : platform_(platform) {}

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

  private:
    Platform &platform_;
    ProcFile ipv4Forwarding_{"/proc/sys/net/ipv4/ip_forward"};
    ProcFile ipv4DefaultTtl_{"/proc/sys/net/ipv4/ip_default_ttl"};
    ProcFile ipv4FragmentTime_{"/proc/sys/net/ipv4/ipfrag_time"};
    ProcFile ipv6Forwarding_{"/proc/sys/net/ipv6/conf/all/forwarding"};
    ProcFile ipv6FragmentTime_{"/proc/sys/net/ipv6/ip6frag_time"};
};

} // namespace ipmib::platform
