// SPDX-License-Identifier: BSD-3-Clause
// A simulated device's IPv4 rows at this moment, as the agent's IPv4 tables want them.
#include "ipv4_rows.h"

#include "neighbour_rows.h"

namespace ipmib::simulated
{
namespace
{

constexpr std::uint8_t allOnes = 1; // how every interface broadcasts

// The older table has no rows for these.
bool isBroadcast(const Ipv4Address &address)
{
    return address.type == IPMIB_ADDRESS_BROADCAST;
}

bool fillAddress(const Ipv4Address *address, IpmibIpv4Address &row)
{
    if (address == nullptr || isBroadcast(*address)) {
        return false;
    }
    row = {address->address, address->if_index, static_cast<std::uint8_t>(address->prefix_length), allOnes,
           largestDatagram};
    return true;
}

bool fillNeighbour(const Neighbour *neighbour, IpmibIpv4Neighbour &row)
{
    if (neighbour == nullptr) {
        return false;
    }
    platform::describe(*neighbour, row);
    return true;
}

} // namespace

bool Ipv4Rows::findAddress(std::uint32_t address, IpmibIpv4Address &row) const
{
    return fillAddress(device_.ipv4Address(address), row);
}

bool Ipv4Rows::addressAfter(std::uint32_t address, IpmibIpv4Address &row) const
{
    const Ipv4Address *next = device_.ipv4AddressAfter(address);
    while (next != nullptr && isBroadcast(*next)) {
        next = device_.ipv4AddressAfter(next->address);
    }
    return fillAddress(next, row);
}

bool Ipv4Rows::findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row) const
{
    return fillNeighbour(device_.ipv4Neighbour(platform::ipv4Neighbour(ifIndex, address)), row);
}

bool Ipv4Rows::neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row) const
{
    return fillNeighbour(device_.ipv4NeighbourAfter(platform::ipv4Neighbour(ifIndex, address)), row);
}

} // namespace ipmib::simulated
