// SPDX-License-Identifier: BSD-3-Clause
// Three interfaces that never change: 1, 2 and 3, the last of them down. Their counters and speeds are beyond 32 bits.
// One of them may have vanished before its counters are read.

#include "e2e/scripted_interfaces.h"

#include <cstdint>
#include <cstring>
#include <initializer_list>

namespace ipmib::e2e
{

namespace
{

constexpr const char *names[] = {"lo", "eth0", "spare"};
constexpr std::uint32_t count = 3;
constexpr std::uint64_t beyond32Bits = 0x1'0000'0000;
std::uint32_t vanished = 0;

int find(std::uint32_t ifIndex, IpmibInterface *interface)
{
    if (ifIndex < 1 || ifIndex > count) {
        return -1;
    }
    *interface = IpmibInterface{};
    interface->if_index = ifIndex;
    interface->type = 6;
    interface->mtu = 1500;
    interface->admin_status = IPMIB_ADMIN_UP;
    interface->oper_status = ifIndex == count ? IPMIB_OPER_LOWER_LAYER_DOWN : IPMIB_OPER_UP;
    interface->speed = 25'000'000'000;
    interface->promiscuous = ifIndex == 1 ? 1 : 0;
    interface->connector = ifIndex == 1 ? 0 : 1;
    interface->address_size = 6;
    std::memcpy(interface->address, "\x02\0\0\0\0\x01", 6);
    interface->address[5] = static_cast<std::uint8_t>(ifIndex);
    interface->name = names[ifIndex - 1];
    interface->alias = ifIndex == 2 ? "uplink" : "";
    return 0;
}

int next(std::uint32_t ifIndex, IpmibInterface *interface)
{
    return ifIndex >= count ? -1 : find(ifIndex + 1, interface);
}

int traffic(std::uint32_t ifIndex, IpmibInterfaceTraffic *traffic)
{
    if (ifIndex == vanished) {
        return -1;
    }
    std::uint64_t number = beyond32Bits + 100 * ifIndex;
    const auto fill = [&](IpmibTraffic &way) {
        for (std::uint64_t *counter :
             {&way.octets, &way.unicast, &way.multicast, &way.broadcast, &way.discards, &way.errors}) {
            *counter = ++number;
        }
    };
    fill(traffic->in);
    fill(traffic->out);
    traffic->in_unknown_protocols = ++number;
    return 0;
}

std::uint32_t countAll()
{
    return count;
}

std::uint64_t neverChanged()
{
    return 0;
}

} // namespace

void letVanish(std::uint32_t ifIndex)
{
    vanished = ifIndex;
}

const IpmibInterfaceHooks scriptedInterfaces = {find, next, traffic, countAll, neverChanged};

} // namespace ipmib::e2e
