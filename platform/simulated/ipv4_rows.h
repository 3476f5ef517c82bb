// SPDX-License-Identifier: BSD-3-Clause
// A simulated device's IPv4 rows at this moment, as the agent's IPv4 tables want them.
#pragma once

#include "device/device.h"

#include <ipmib/platform_ipv4.h>

namespace ipmib::simulated
{

class Ipv4Rows
{
  public:
    explicit Ipv4Rows(const Device &device) : device_(device) {}

    // False when there is no such row.
    bool findAddress(std::uint32_t address, IpmibIpv4Address &row) const;
    bool addressAfter(std::uint32_t address, IpmibIpv4Address &row) const;
    bool findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row) const;
    bool neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row) const;

  private:
    const Device &device_;
};

} // namespace ipmib::simulated
