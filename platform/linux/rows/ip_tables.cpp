// SPDX-License-Identifier: BSD-3-Clause
// What tables outside the module say of IP on this system: rows.
#include "platform.h"

namespace ipmib::platform
{

std::string IpRows::follow(std::uint32_t)
{
    return "";
}
bool IpRows::findInterface(std::uint32_t, std::uint32_t, IpmibIpInterface &)
{
    return false;
}
bool IpRows::interfaceAfter(std::uint32_t, std::uint32_t, IpmibIpInterface &)
{
    return false;
}
std::uint32_t IpRows::interfacesChanged(std::uint32_t)
{
    return 0;
}
bool IpRows::findAddress(std::uint32_t, IpmibIpAddress &)
{
    return false;
}
bool IpRows::addressAfter(std::uint32_t, IpmibIpAddress &)
{
    return false;
}
bool IpRows::findPrefix(std::uint32_t, std::uint32_t, std::uint32_t, IpmibIpPrefix &)
{
    return false;
}
bool IpRows::prefixAfter(std::uint32_t, std::uint32_t, std::uint32_t, IpmibIpPrefix &)
{
    return false;
}
bool IpRows::findNeighbour(std::uint32_t, std::uint32_t, IpmibIpNeighbour &)
{
    return false;
}
bool IpRows::neighbourAfter(std::uint32_t, std::uint32_t, IpmibIpNeighbour &)
{
    return false;
}
bool IpRows::findRouter(std::uint32_t, std::uint32_t, IpmibIpRouter &)
{
    return false;
}
bool IpRows::routerAfter(std::uint32_t, std::uint32_t, IpmibIpRouter &)
{
    return false;
}
bool IpRows::findStack(std::uint32_t, std::uint32_t, IpmibStack &)
{
    return false;
}
bool IpRows::stackAfter(std::uint32_t, std::uint32_t, IpmibStack &)
{
    return false;
}
std::uint32_t IpRows::stackChanged()
{
    return 0;
}
bool IpRows::findReceiveAddress(std::uint32_t, const std::uint8_t *, std::size_t, IpmibReceiveAddress &)
{
    return false;
}
bool IpRows::receiveAddressAfter(std::uint32_t, const std::uint8_t *, std::size_t, IpmibReceiveAddress &)
{
    return false;
}

} // namespace ipmib::platform
