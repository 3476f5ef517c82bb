// SPDX-License-Identifier: BSD-3-Clause
// What an agent's IPv4 tables are made of: two mirrors, which somebody has to ask for.
#pragma once

#include "ipv4/ipv4_address_table.h"
#include "neighbours/neighbours.h"

#include <ipmib/platform_ipv4.h>

namespace ipmib::platform
{

class Ipv4
{
  public:
    explicit Ipv4(DumpQueue &dumps) : dumps_(dumps), neighbours_(dumps, AF_INET) {}

    // Fills the mirrors. The answer, when that fails, is one line for the user.
    std::string follow(EventLoop &loop, int receiveBuffer);

    // False when there is no such row.
    bool findAddress(std::uint32_t address, IpmibIpv4Address &row) const;
    bool addressAfter(std::uint32_t address, IpmibIpv4Address &row) const;
    bool findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row);
    bool neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row);

    // For tests.
    Mirror &addressMirror() { return addressMirror_; }

  private:
    DumpQueue &dumps_;
    Ipv4AddressTable addresses_;
    Mirror addressMirror_{addresses_, dumps_};
    Neighbours neighbours_;
    bool follows_ = false;
};

} // namespace ipmib::platform
