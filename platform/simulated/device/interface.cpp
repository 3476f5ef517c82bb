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
    row.oper_status = runs(time) ? std::uint32_t{IPMIB_OPER_UP} : downStatus;
    row.speed = speed;
    row.promiscuous = promiscuous ? 1 : 0;
    row.connector = connector ? 1 : 0;
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
    IpmibIpCounters both{};
    ip6Counters.addTo(both, runningTime(time));
    ip4Counters.addTo(both, runningTime(time));
    const std::uint64_t *value = both.value;
    const auto fill = [](IpmibTraffic &way, std::uint64_t octets, std::uint64_t packets, std::uint64_t multicast,
                         std::uint64_t discards) {
        way.octets = octets;
        way.unicast = packets - std::min(packets, multicast);
        way.multicast = multicast;
        way.discards = discards;
    };
    IpmibInterfaceTraffic traffic{};
    fill(traffic.in, value[IPMIB_IP_IN_OCTETS], value[IPMIB_IP_IN_RECEIVES], value[IPMIB_IP_IN_MCAST_PKTS],
         value[IPMIB_IP_IN_DISCARDS]);
    fill(traffic.out, value[IPMIB_IP_OUT_OCTETS], value[IPMIB_IP_OUT_TRANSMITS], value[IPMIB_IP_OUT_MCAST_PKTS],
         value[IPMIB_IP_OUT_DISCARDS]);
    linkCounters.setIn(traffic, runningTime(time));
    return traffic;
}

IpmibIpCounters Interface::ipTraffic(std::uint32_t version, Time time) const
{
    IpmibIpCounters counters{};
    (version == IPMIB_IPV6 ? ip6Counters : ip4Counters).setIn(counters, runningTime(time));
    return counters;
}

} // namespace ipmib::simulated
