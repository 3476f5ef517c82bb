// SPDX-License-Identifier: BSD-3-Clause
// What a simulated device says at this moment beside what the module asks: rows of IPv4, the counters that the module
// leaves out, the groups of the transport layer, and how interfaces are stacked.
#pragma once

#include "device/device.h"

#include <ipmib/platform_ip.h>

#include <string>

namespace ipmib::simulated
{

// Functions that answer with a truth value say whether there was something to fill in.
class IpRows
{
  public:
    explicit IpRows(const Device &device) : device_(device) {}

    // Nobody has to follow what does not change by itself.
    std::string follow(std::uint32_t) { return ""; }

    bool settings(std::uint32_t version, IpmibIpSettings &settings) const;
    bool systemCounters(std::uint32_t version, IpmibIpCounters &counters) const;
    bool interfaceCounters(std::uint32_t version, std::uint32_t ifIndex, IpmibIpCounters &counters) const;
    bool icmpCounters(std::uint32_t version, IpmibIcmpCounters &counters) const;
    bool tcpCounters(IpmibTcpCounters &counters) const;
    bool udpCounters(IpmibUdpCounters &counters) const;

    bool findInterface(std::uint32_t version, std::uint32_t ifIndex, IpmibIpInterface &row) const;
    bool interfaceAfter(std::uint32_t version, std::uint32_t ifIndex, IpmibIpInterface &row) const;
    std::uint32_t interfacesChanged(std::uint32_t version) const;

    bool findAddress(std::uint32_t address, IpmibIpAddress &row) const;
    bool addressAfter(std::uint32_t address, IpmibIpAddress &row) const;
    bool findPrefix(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length, IpmibIpPrefix &row) const;
    bool prefixAfter(std::uint32_t ifIndex, std::uint32_t prefix, std::uint32_t length, IpmibIpPrefix &row) const;
    bool findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpNeighbour &row) const;
    bool neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpNeighbour &row) const;
    bool findRouter(std::uint32_t address, std::uint32_t ifIndex, IpmibIpRouter &row) const;
    bool routerAfter(std::uint32_t address, std::uint32_t ifIndex, IpmibIpRouter &row) const;

    bool findStack(std::uint32_t higher, std::uint32_t lower, IpmibStack &row) const;
    bool stackAfter(std::uint32_t higher, std::uint32_t lower, IpmibStack &row) const;
    std::uint32_t stackChanged() const;
    bool findReceiveAddress(std::uint32_t ifIndex, const std::uint8_t *address, std::size_t size,
                            IpmibReceiveAddress &row) const;
    bool receiveAddressAfter(std::uint32_t ifIndex, const std::uint8_t *address, std::size_t size,
                             IpmibReceiveAddress &row) const;
    std::uint32_t linkLocalPrefixLength(std::uint32_t ifIndex) const;

  private:
    bool isTop(const Interface &interface) const;
    bool isBottom(const Interface &interface) const;
    bool describe(std::uint32_t version, const Interface *interface, IpmibIpInterface &row) const;

    const Device &device_;
};

} // namespace ipmib::simulated
