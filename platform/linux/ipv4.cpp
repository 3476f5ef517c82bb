// SPDX-License-Identifier: BSD-3-Clause
// The IPv4 addresses, routes and neighbours of this network namespace: mirrors that somebody has to ask for.
#include "ipv4.h"

#include "core/dump_queue.h"
#include "neighbour_rows.h"

namespace ipmib::platform
{

namespace
{

bool fillAddress(const Ipv4Address *address, IpmibIpv4Address &row)
{
    if (address == nullptr) {
        return false;
    }
    const auto broadcastBit = static_cast<std::uint8_t>(address->broadcastAddress() & 1);
    row = {address->address, address->ifIndex, address->length, broadcastBit, largestDatagram};
    return true;
}

bool fillNeighbour(const Neighbour *neighbour, IpmibIpv4Neighbour &row)
{
    if (neighbour == nullptr) {
        return false;
    }
    describe(*neighbour, row);
    return true;
}

} // namespace

Ipv4::Ipv4(DumpQueue &dumps, DumpQueue &routeDumps)
    : addressMirror_(addresses_, dumps), routeMirror_(routes_, routeDumps), neighbours_(dumps, AF_INET)
{
    routes_.onUncertain([this] { routeMirror_.refreshSoon(); });
}

std::string Ipv4::follow(std::uint32_t rows, PlatformLoop &loop, int receiveBuffer)
{
    // Whether a prefix is on the link is told by the routes.
    constexpr std::uint32_t fromRoutes = IPMIB_FOLLOW_ADDRESSES | IPMIB_FOLLOW_ROUTERS;
    const auto wanted = [&](std::uint32_t any) { return (rows & any) != 0 && (follows_ & any) == 0; };
    std::string error;
    if (wanted(fromRoutes)) {
        error = startRoutes(loop, receiveBuffer, RouteFeed::piecesAtStart);
    }
    if (error.empty() && wanted(IPMIB_FOLLOW_ADDRESSES)) {
        error = addressMirror_.start(loop, receiveBuffer);
    }
    if (error.empty() && wanted(IPMIB_FOLLOW_NEIGHBOURS)) {
        error = neighbours_.start(loop, receiveBuffer);
    }
    follows_ |= error.empty() ? rows : 0;
    return error;
}

std::string Ipv4::followRoutes(PlatformLoop &loop, int receiveBuffer)
{
    if (routesStarted_) {
        routeMirror_.readAnew();
    }
    return startRoutes(loop, receiveBuffer, 0);
}

std::string Ipv4::startRoutes(PlatformLoop &loop, int receiveBuffer, unsigned pieces)
{
    if (routesStarted_) {
        return "";
    }
    const std::string error = routeMirror_.start(loop, receiveBuffer, pieces);
    routesStarted_ = error.empty();
    return error;
}

bool Ipv4::findAddress(std::uint32_t address, IpmibIpv4Address &row)
{
    return fillAddress(addresses().find(address), row);
}

bool Ipv4::addressAfter(std::uint32_t address, IpmibIpv4Address &row)
{
    return fillAddress(addresses().after(address), row);
}

bool Ipv4::findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row)
{
    return follows(IPMIB_FOLLOW_NEIGHBOURS) && fillNeighbour(neighbours_.ask(ipv4Neighbour(ifIndex, address)), row);
}

bool Ipv4::neighbourAfter(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour &row)
{
    return follows(IPMIB_FOLLOW_NEIGHBOURS) &&
           fillNeighbour(neighbours_.askAfter(ipv4Neighbour(ifIndex, address)), row);
}

} // namespace ipmib::platform
