// SPDX-License-Identifier: BSD-3-Clause
// The interface identifier of a link.
#include "links/interface_identifier.h"

#include <algorithm>

namespace ipmib::platform
{

namespace
{

constexpr std::uint8_t universal = 0x02; // the bit that says "globally unique", inverted in an identifier

InterfaceIdentifier lowerHalf(const std::uint8_t *address)
{
    InterfaceIdentifier identifier;
    std::copy(address + 8, address + 16, identifier.begin());
    return identifier;
}

InterfaceIdentifier fromLinkLayer(const Link &link)
{
    const std::uint8_t *a = link.address;
    const bool zero = std::all_of(a, a + link.addressSize, [](std::uint8_t byte) { return byte == 0; });
    if (zero || (link.addressSize != 6 && link.addressSize != 8)) {
        return {};
    }
    InterfaceIdentifier identifier{a[0], a[1], a[2], 0xFF, 0xFE, a[3], a[4], a[5]};
    if (link.addressSize == 8) {
        std::copy(a, a + 8, identifier.begin());
    }
    identifier[0] ^= universal;
    return identifier;
}

} // namespace

InterfaceIdentifier interfaceIdentifier(const Link &link, const Ip6Link &ip6, const std::uint8_t *linkLocal)
{
    const InterfaceIdentifier token = lowerHalf(ip6.token.data());
    if (token != InterfaceIdentifier{}) {
        return token;
    }
    return linkLocal != nullptr ? lowerHalf(linkLocal) : fromLinkLayer(link);
}

} // namespace ipmib::platform
