// SPDX-License-Identifier: BSD-3-Clause
// What the parts of a model have in common.
#include "walks/model_parts.h"

#include <arpa/inet.h>

#include <algorithm>

namespace ipmib::cli
{
namespace
{

constexpr std::uint32_t ipv6WithZone = 4;
constexpr std::size_t ipv6Size = 16;
constexpr std::size_t zoneSize = 4;

} // namespace

std::string Address::text() const
{
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(version == IPMIB_IPV4 ? AF_INET : AF_INET6, octets.data(), text, sizeof text);
    return text;
}

bool Address::isUnicast() const
{
    const auto first = static_cast<unsigned char>(octets.front());
    const bool isAny = std::ranges::all_of(octets, [](char octet) { return octet == 0; });
    return !isAny && (version == IPMIB_IPV4 ? first < 224 : first != 0xFF);
}

bool Address::isLinkLocal() const
{
    return version == IPMIB_IPV6 && octets[0] == '\xFE' && (octets[1] & '\xC0') == '\x80';
}

std::optional<std::string> octetsOf(const Identifier &ids, std::size_t begin, std::size_t count)
{
    std::string octets;
    for (std::size_t i = begin; i < begin + count; ++i) {
        if (i >= ids.size() || ids[i] > UINT8_MAX) {
            return std::nullopt;
        }
        octets += static_cast<char>(ids[i]);
    }
    return octets;
}

std::optional<Address> inetAddress(const Identifier &index, std::size_t begin)
{
    if (index.size() < begin + 2) {
        return std::nullopt;
    }
    const std::uint32_t type = index[begin];
    const std::uint32_t size = index[begin + 1];
    const std::size_t expected = type == IPMIB_IPV4 ? ipv4Size : type == IPMIB_IPV6 ? ipv6Size : ipv6Size + zoneSize;
    if ((type != IPMIB_IPV4 && type != IPMIB_IPV6 && type != ipv6WithZone) || size != expected ||
        index.size() != begin + 2 + size) {
        return std::nullopt;
    }
    const auto octets = octetsOf(index, begin + 2, type == IPMIB_IPV4 ? ipv4Size : ipv6Size);
    return octets ? std::optional(Address{type == IPMIB_IPV4 ? IPMIB_IPV4 : IPMIB_IPV6, *octets}) : std::nullopt;
}

OrderedJson *interfaceOf(ModelledInterfaces &interfaces, std::optional<std::uint64_t> ifIndex, std::uint32_t version)
{
    const auto found = ifIndex ? interfaces.find(static_cast<std::uint32_t>(*ifIndex)) : interfaces.end();
    const bool hasVersion = found != interfaces.end() && (version == IPMIB_IPV4 || !found->second.contains("ipv6"));
    return hasVersion ? &found->second : nullptr;
}

} // namespace ipmib::cli
