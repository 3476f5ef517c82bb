// SPDX-License-Identifier: BSD-3-Clause
// One interface of a simulated device.
#include "device/interface.h"

namespace ipmib::simulated
{

std::uint64_t interfaceIdentifier(const Mac &mac)
{
    constexpr std::uint8_t universalBit = 0x02;
    const std::uint8_t bytes[] = {
        static_cast<std::uint8_t>(mac[0] ^ universalBit), mac[1], mac[2], 0xFF, 0xFE, mac[3], mac[4], mac[5]};
    std::uint64_t identifier = 0;
    for (const std::uint8_t byte : bytes) {
        identifier = identifier << 8 | byte;
    }
    return identifier;
}

PackedAddress linkLocalAddress(std::uint64_t identifier)
{
    constexpr std::uint64_t prefix = 0xFE80'0000'0000'0000;
    return {prefix, identifier};
}

std::optional<Address> automaticLinkLocal(const Interface &interface)
{
    if (!interface.mac) {
        return std::nullopt;
    }
    return Address{linkLocalAddress(interfaceIdentifier(*interface.mac)),
                   interface.ifIndex,
                   platform::addressOriginLinkLayer,
                   platform::addressStatePreferred,
                   0,
                   0,
                   platform::linkLocalPrefixLength,
                   false};
}

} // namespace ipmib::simulated
