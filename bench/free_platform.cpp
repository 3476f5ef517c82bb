// SPDX-License-Identifier: BSD-3-Clause
// Services that cost next to nothing: a small device whose answers are constants, so that what a request costs is the
// module's own work. Every table has rows; the interfaces are 1 to 4.
#include "free_platform.h"

#include <ipmib/message.h>
#include <ipmib/platform.h>

#include <cstring>

namespace
{

constexpr std::uint32_t interfaces = 4;
constexpr std::uint8_t linkLocal[16] = {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
constexpr std::uint8_t lowest[16] = {0x20, 0x01, 0x0D, 0xB8};
constexpr std::uint8_t highest = 200; // the last byte of the last neighbour, address and router

// The address after the key: the key's last byte counts up from 1.
bool nextAddress(std::uint8_t *address)
{
    if (std::memcmp(address, lowest, 15) < 0) {
        std::memcpy(address, lowest, sizeof lowest);
    }
    return std::memcmp(address, lowest, 15) == 0 && address[15]++ < highest;
}

void fillAddress(FullAddressRecord *record, std::uint32_t ifIndex)
{
    record->if_index = ifIndex;
    record->prefix_length = 64;
}

} // namespace

std::uint32_t freePrefixes = 4; // on each interface

extern "C" {

std::uint32_t IP6_DaemonCheck(std::uint32_t)
{
    return 0;
}
std::uint32_t IP_DaemonCheck(std::uint32_t)
{
    return 0;
}
std::uint32_t IF_Select_Init(std::uint32_t, IfSelection *)
{
    return 0;
}
std::uint32_t IF_SelectType_Set(std::uint32_t, IfSelection *)
{
    return 0;
}
std::uint32_t IF_SelectTypeSetGroup(std::uint32_t, IfSelection *)
{
    return 0;
}
std::uint32_t IF_SelectCondition_Set(std::uint32_t, IfSelection *)
{
    return 0;
}
std::uintptr_t IF_IteratorInitialize()
{
    return 1;
}
std::uint32_t IF_IteratorFinalize(std::uintptr_t *)
{
    return 0;
}
std::uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *, std::uintptr_t)
{
    return 1;
}
std::uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *, std::uintptr_t, std::uint32_t ifIndex)
{
    return ifIndex < interfaces ? ifIndex + 1 : 0;
}
std::uint32_t IF_IsValidIfIndex(std::uint32_t ifIndex)
{
    return ifIndex >= 1 && ifIndex <= interfaces ? 1 : 0;
}
std::uint32_t IP6_GetMibStat(std::uint32_t, Ip6MibStat *)
{
    return 0;
}
std::uint32_t IP6_GetIfStat(std::uint32_t ifIndex, std::uint32_t, Ip6MibStat *)
{
    return ifIndex == 0 ? RC_NO_MORE : 0;
}
std::uint32_t IP_GetMibIfStat(std::uint32_t ifIndex, IpMibIfStat *)
{
    return ifIndex == 0 ? RC_NO_MORE : 0;
}
std::uint32_t ICMP6_GetMibStat(Icmp6MibStat *)
{
    return 0;
}
std::uint32_t ND_GetHopLimit()
{
    return 64;
}
std::uint32_t ND_GetIfConfigInfo(std::uint32_t, NdIfConfigInfo *)
{
    return 0;
}
std::uint32_t IP6Mib_GetIFID(std::uint32_t, std::uint8_t *)
{
    return 0;
}
std::uint32_t IP6ADDR_DRVK_GetMainLLA(std::uint32_t, FullAddressRecord *)
{
    return 0;
}
std::uint32_t IP6_GetIfMTU(std::uint32_t, std::uint32_t *mtu)
{
    *mtu = 1500;
    return 0;
}
std::uint32_t ND_GetNetToPhysicalTable(std::uint32_t ifIndex, const std::uint8_t *address, NeighbourEntry *entry,
                                       std::uintptr_t)
{
    entry->if_index = ipmib_be32(ifIndex);
    std::memcpy(entry->address, address, 16);
    return 0;
}
std::uint32_t ND_GetNextNetToPhysicalTable(std::uint32_t mode, NeighbourEntry *entry)
{
    return mode == 1 && nextAddress(entry->address) ? 0 : 1;
}
std::uint32_t IP6CFG_GetFirstFullPrefix(std::uint32_t ifIndex, std::int32_t, FullPrefixRecord *record)
{
    std::memcpy(record->prefix, lowest, 16);
    record->if_index = ipmib_be32(ifIndex);
    record->length = ipmib_be32(64);
    return 0;
}
// Prefixes differ in the second group of 32 bits, machine order on purpose: a step is an addition.
std::uint32_t IP6CFG_GetNextFullPrefix(std::uint32_t, std::int32_t, FullPrefixRecord *record)
{
    std::uint32_t number;
    std::memcpy(&number, record->prefix + 4, sizeof number);
    ++number;
    std::memcpy(record->prefix + 4, &number, sizeof number);
    return number < freePrefixes ? 0 : 1;
}
std::uint32_t IP6Addr_GetLinkLocalAddr(std::uint32_t, LinkLocalBuffer *)
{
    return 0;
}
std::uint32_t IP6Mib_GetFirstAddrInVrf(std::uint32_t, std::uint32_t, FullAddressRecord *record)
{
    std::memcpy(record->address, lowest, 16);
    record->address[15] = 1;
    fillAddress(record, 1);
    return 0;
}
std::uint32_t IP6Mib_GetNextAddrInVrf(std::uint32_t, std::uint32_t, FullAddressRecord *record)
{
    fillAddress(record, interfaces); // its prefix is the last that the pointer's walk comes to
    return nextAddress(record->address) ? 0 : 1;
}
std::uint32_t IP6Mib_GetAddrFullInfoInVrf(std::uint32_t, const std::uint8_t *address, std::int32_t,
                                          FullAddressRecord *record)
{
    std::memcpy(record->address, address, 16);
    fillAddress(record, interfaces);
    return 0;
}
std::uint32_t IP6Mib_GetLinkLocalFullAddr(std::uint32_t ifIndex, FullAddressRecord *record)
{
    std::memcpy(record->address, linkLocal, 16);
    fillAddress(record, ifIndex);
    return 0;
}
std::uint32_t IP6Mib_GetFirstGatewayInVrf(std::uint32_t, std::uint32_t, GatewayRecord *gateway)
{
    std::memcpy(gateway->address, lowest, 16);
    return 0;
}
std::uint32_t IP6Mib_GetNextGatewayInVrf(std::uint32_t, std::uint32_t, const GatewayKey *key, GatewayRecord *gateway)
{
    std::memcpy(gateway->address, key->address, 16);
    return nextAddress(gateway->address) ? 0 : 1;
}
std::uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    std::memcpy(gateway->address, key->address, 16);
    return 0;
}
std::uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return IP6Mib_GetGatewayByKey(key, gateway);
}
std::uint32_t TIME_GetSystemBootTime(std::uint32_t *seconds, std::uint32_t *)
{
    *seconds = 1000;
    return 0;
}

} // extern "C"
