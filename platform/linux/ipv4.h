// SPDX-License-Identifier: BSD-3-Clause
// The IPv4 addresses, routes and neighbours of this network namespace: mirrors that somebody has to ask for.
#pragma once

#include "addresses/ipv4_address_table.h"
#include "core/mirror.h"
#include "neighbours/neighbours.h"
#include "routes/ipv4_route_table.h"

#include <ipmib/platform_ip.h>
#include <ipmib/platform_ipv4.h>

namespace ipmib::platform
{

inline constexpr std::uint16_t largestDatagram = 65535; // the kernel puts all of them together

class Ipv4
{
  public:
    Ipv4(DumpQueue &dumps, DumpQueue &routeDumps);

    // Fills the mirrors that IPMIB_FOLLOW_x name, those that are not there yet. The answer, when that fails, is one
    // line for the user.
    std::string follow(std::uint32_t rows, PlatformLoop &loop, int receiveBuffer);
    // All routes, which are read between packets: from the first one on, where somebody has followed them before.
    std::string followRoutes(PlatformLoop &loop, int receiveBuffer);
    bool follows(std::uint32_t row) const { return (follows_ & row) != 0; }

    const Ipv4AddressTable &addresses()
    {
        addressMirror_.readForPacket();
        return addresses_;
    }
    Ipv4RouteTable &routes()
    {
        routeMirror_.readForPacket();
        return routes_;
    }
    Neighbours &neighbours() { return neighbours_; }
    const Neighbours &neighbours() const { return neighbours_; }
    // As Addressing has it.
    bool addressesAreBehind() const { return addressMirror_.isBehind(); }
    bool routesAreBehind() const { return routeMirror_.isBehind(); }

    // For the older tables. False when there is no such row.
    bool findAddress(std::uint32_t address, IpmibIpv4Address &row);
    bool addressAfter(std::uint32_t address, IpmibIpv4Address &row);
    bool findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row);
    bool neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row);

    // For tests.
    Mirror &addressMirror() { return addressMirror_; }
    Mirror &routeMirror() { return routeMirror_; }

  private:
    std::string startRoutes(PlatformLoop &loop, int receiveBuffer, unsigned pieces);

    Ipv4AddressTable addresses_;
    Mirror addressMirror_;
    Ipv4RouteTable routes_;
    Mirror routeMirror_;
    Neighbours neighbours_;
    bool routesStarted_ = false;
    std::uint32_t follows_ = 0; // IPMIB_FOLLOW_x
};

} // namespace ipmib::platform
