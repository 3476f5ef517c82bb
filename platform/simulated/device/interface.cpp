// SPDX-License-Identifier: BSD-3-Clause
// One interface of a simulated device.
#include "device/interface.h"

#include <algorithm>
#include <cstring>

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

IpmibInterface Interface::row(Time time) const
{
    IpmibInterface row{};
    row.if_index = ifIndex;
    row.type = type;
    row.mtu = mtu;
    row.admin_status = enabled ? IPMIB_ADMIN_UP : IPMIB_ADMIN_DOWN;
    row.oper_status = runs(time) ? IPMIB_OPER_UP : IPMIB_OPER_DOWN;
    row.speed = speed;
    row.connector = 1;
    if (mac) {
        row.address_size = static_cast<std::uint8_t>(mac->size());
        std::memcpy(row.address, mac->data(), mac->size());
    }
    row.name = name.c_str();
    row.alias = alias.c_str();
    return row;
}

IpmibInterfaceTraffic Interface::traffic(Time time) const
{
    Ip6MibStat v6{};
    IpMibIfStat v4{};
    ip6Counters.setIn(v6, runningTime(time));
    ip4Counters.setIn(v4, runningTime(time));
    const auto fill = [](IpmibTraffic &way, std::uint64_t octets, std::uint64_t packets, std::uint64_t multicast,
                         std::uint64_t discards) {
        way.octets = octets;
        way.unicast = packets - std::min(packets, multicast);
        way.multicast = multicast;
        way.discards = discards;
    };
    IpmibInterfaceTraffic traffic{};
    const auto sum = [](auto one, auto other) { return std::uint64_t{one} + other; };
    fill(traffic.in, sum(v6.in_octets, v4.in_octets), sum(v6.in_receives, v4.in_receives),
         sum(v6.in_mcast_pkts, v4.in_mcast_pkts), sum(v6.in_discards, v4.in_discards));
    fill(traffic.out, sum(v6.out_octets, v4.out_octets), sum(v6.out_transmits, v4.out_transmits),
         sum(v6.out_mcast_pkts, v4.out_mcast_pkts), sum(v6.out_discards, v4.out_discards));
    return traffic;
}

} // namespace ipmib::simulated
