// SPDX-License-Identifier: BSD-3-Clause
// What an agent's IPv4 tables are made of: two mirrors, which somebody has to ask for.
#include "ipv4/ipv4.h"

#include "ipv4_neighbour.h"

namespace ipmib::platform
{

namespace
{

constexpr std::uint16_t largestDatagram = 65535; // the kernel puts all of them together

bool fill(const Ipv4Address *address, IpmibIpv4Address &row)
{
    if (address == nullptr) {
        return false;
    }
    row = {address->address, address->ifIndex, address->length, address->broadcastBit, largestDatagram};
    return true;
}

bool fill(const Neighbour *neighbour, IpmibIpv4Neighbour &row)
{
    if (neighbour == nullptr) {
        return false;
    }
    describe(*neighbour, row);
    return true;
}

} // namespace

std::string Ipv4::follow(EventLoop &loop, int receiveBuffer)
{
    if (follows_) {
        return "";
    }
    std::string error = addressMirror_.start(loop, receiveBuffer);
    if (error.empty()) {
        error = neighbours_.start(loop, receiveBuffer);
    }
    follows_ = error.empty();
    return error;
}

bool Ipv4::findAddress(std::uint32_t address, IpmibIpv4Address &row) const
{
    return fill(addresses_.find(address), row);
}

bool Ipv4::addressAfter(std::uint32_t address, IpmibIpv4Address &row) const
{
    return fill(addresses_.after(address), row);
}

bool Ipv4::findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row)
{
    return follows_ && fill(neighbours_.find(ipv4Neighbour(ifIndex, address)), row);
}

bool Ipv4::neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row)
{
    return follows_ && fill(neighbours_.after(ipv4Neighbour(ifIndex, address)), row);
}

} // namespace ipmib::platform
