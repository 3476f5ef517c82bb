/* SPDX-License-Identifier: BSD-3-Clause */
/* The smallest platform that keeps every promise: one interface, one address with its prefix, nobody around. A port
 * begins as a copy of it, and replaces one group of services after the other by what its device knows. */
#include <ipmib/contract_note.h>
#include <ipmib/message.h>
#include <ipmib/platform.h>

#include <string.h>
#include <time.h>

IPMIB_CONTRACT_NOTE; /* a host that has another contract refuses the library before it loads it */

enum { THE_INTERFACE = 1, MTU = 1500, HOP_LIMIT = 64, PREFIX_LENGTH = 64 };
enum { ORIGIN_MANUAL_PREFIX = 2, ORIGIN_MANUAL_ADDRESS = 8, FOR_EVER = 0xFFFFFFFF };

static const uint8_t address[16] = {0x20, 0x01, 0x0d, 0xb8, [15] = 1};
static const uint8_t prefix[16] = {0x20, 0x01, 0x0d, 0xb8};

/* The services run. */

uint32_t IP6_DaemonCheck(uint32_t one)
{
    return one == 1 ? 0 : RC_NOT_FOUND;
}

uint32_t IP_DaemonCheck(uint32_t one)
{
    return one == 1 ? 0 : RC_NOT_FOUND;
}

/* Interfaces: the one is of every type. */

uint32_t IF_Select_Init(uint32_t kind, IfSelection *selection)
{
    (void)kind;
    memset(selection, 0, sizeof *selection);
    return 0;
}

uint32_t IF_SelectType_Set(uint32_t type, IfSelection *selection)
{
    return (void)type, (void)selection, 0;
}

uint32_t IF_SelectTypeSetGroup(uint32_t group, IfSelection *selection)
{
    return (void)group, (void)selection, 0;
}

uint32_t IF_SelectCondition_Set(uint32_t condition, IfSelection *selection)
{
    return (void)condition, (void)selection, 0;
}

uintptr_t IF_IteratorInitialize(void)
{
    return 1; /* no state is needed, but 0 would be a failure */
}

uint32_t IF_IteratorFinalize(uintptr_t *iterator)
{
    *iterator = 0;
    return 0;
}

uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator, uint32_t if_index)
{
    (void)selection, (void)iterator;
    return if_index < THE_INTERFACE ? THE_INTERFACE : 0;
}

uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator)
{
    return IF_GetNextIfIndexByIfSelect(selection, iterator, 0);
}

uint32_t IF_IsValidIfIndex(uint32_t if_index)
{
    return if_index == THE_INTERFACE;
}

static uint32_t exists(uint32_t if_index)
{
    return IF_IsValidIfIndex(if_index) ? 0 : RC_NOT_FOUND;
}

/* Counters: no traffic yet. Records come cleared. */

uint32_t IP6_GetMibStat(uint32_t what, Ip6MibStat *stat)
{
    return (void)what, (void)stat, 0;
}

uint32_t IP6_GetIfStat(uint32_t if_index, uint32_t family, Ip6MibStat *stat)
{
    return (void)family, (void)stat, exists(if_index);
}

uint32_t IP_GetMibIfStat(uint32_t if_index, IpMibIfStat *stat)
{
    return (void)stat, exists(if_index);
}

uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat)
{
    return (void)stat, 0;
}

/* IPv6 on an interface. */

uint32_t ND_GetHopLimit(void)
{
    return HOP_LIMIT;
}

uint32_t ND_GetIfConfigInfo(uint32_t if_index, NdIfConfigInfo *info)
{
    info->retransmit_ms = 1000;
    info->reachable_ms = 30000;
    info->flags = ND_FLAG_NO_MTU_OPTION; /* no advertisements */
    info->max_interval_s = 600;
    info->min_interval_s = 198;
    return exists(if_index);
}

uint32_t IP6Mib_GetIFID(uint32_t if_index, uint8_t *identifier)
{
    memcpy(identifier, address + 8, 8);
    return exists(if_index);
}

uint32_t IP6_GetIfMTU(uint32_t if_index, uint32_t *mtu)
{
    *mtu = MTU;
    return exists(if_index);
}

/* Link-local addresses: none. */

uint32_t IP6ADDR_DRVK_GetMainLLA(uint32_t if_index, FullAddressRecord *record)
{
    return (void)if_index, (void)record, RC_NOT_FOUND;
}

uint32_t IP6Addr_GetLinkLocalAddr(uint32_t if_index, LinkLocalBuffer *buffer)
{
    return (void)if_index, (void)buffer, RC_NOT_FOUND;
}

uint32_t IP6Mib_GetLinkLocalFullAddr(uint32_t if_index, FullAddressRecord *record)
{
    return (void)if_index, (void)record, RC_NOT_FOUND;
}

/* Addresses and prefixes: one of each. */

uint32_t IP6Mib_GetAddrFullInfoInVrf(uint32_t vrf, const uint8_t *wanted, int32_t minus_one, FullAddressRecord *record)
{
    (void)vrf, (void)minus_one;
    if (memcmp(wanted, address, sizeof address) != 0) {
        return RC_NOT_FOUND;
    }
    memset(record, 0, sizeof *record);
    record->if_index = THE_INTERFACE;
    memcpy(record->address, address, sizeof address);
    record->prefix_length = PREFIX_LENGTH;
    record->origin = ORIGIN_MANUAL_ADDRESS;
    return 0;
}

uint32_t IP6Mib_GetNextAddrInVrf(uint32_t vrf, uint32_t kind, FullAddressRecord *record)
{
    (void)kind;
    if (memcmp(record->address, address, sizeof address) >= 0) {
        return RC_NO_MORE;
    }
    return IP6Mib_GetAddrFullInfoInVrf(vrf, address, -1, record);
}

uint32_t IP6Mib_GetFirstAddrInVrf(uint32_t vrf, uint32_t kind, FullAddressRecord *record)
{
    (void)kind;
    return IP6Mib_GetAddrFullInfoInVrf(vrf, address, -1, record);
}

uint32_t IP6CFG_GetFirstFullPrefix(uint32_t if_index, int32_t minus_one, FullPrefixRecord *record)
{
    (void)minus_one;
    if (exists(if_index) != 0) {
        return RC_NO_MORE;
    }
    memset(record, 0, sizeof *record);
    record->if_index = ipmib_be32(if_index);
    memcpy(record->prefix, prefix, sizeof prefix);
    record->length = ipmib_be32(PREFIX_LENGTH);
    record->origin = ipmib_be32(ORIGIN_MANUAL_PREFIX);
    record->valid_s = ipmib_be32(FOR_EVER);
    record->preferred_s = ipmib_be32(FOR_EVER);
    record->flags = 0x80; /* on-link */
    return 0;
}

uint32_t IP6CFG_GetNextFullPrefix(uint32_t if_index, int32_t minus_one, FullPrefixRecord *record)
{
    const int order = memcmp(record->prefix, prefix, sizeof prefix);
    if (order > 0 || (order == 0 && ipmib_be32_get(record->length) >= PREFIX_LENGTH)) {
        return RC_NO_MORE;
    }
    return IP6CFG_GetFirstFullPrefix(if_index, minus_one, record);
}

/* Neighbours and default routers: none. */

uint32_t ND_GetNetToPhysicalTable(uint32_t if_index, const uint8_t *wanted, NeighbourEntry *entry, uintptr_t length)
{
    return (void)if_index, (void)wanted, (void)entry, (void)length, RC_NOT_FOUND;
}

uint32_t ND_GetNextNetToPhysicalTable(uint32_t mode, NeighbourEntry *entry)
{
    return (void)mode, (void)entry, RC_NO_MORE;
}

uint32_t IP6Mib_GetFirstGatewayInVrf(uint32_t vrf, uint32_t gateway_class, GatewayRecord *gateway)
{
    return (void)vrf, (void)gateway_class, (void)gateway, RC_NO_MORE;
}

uint32_t IP6Mib_GetNextGatewayInVrf(uint32_t vrf, uint32_t gateway_class, const GatewayKey *key, GatewayRecord *gateway)
{
    return (void)vrf, (void)gateway_class, (void)key, (void)gateway, RC_NO_MORE;
}

uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return (void)key, (void)gateway, RC_NOT_FOUND;
}

uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return (void)key, (void)gateway, RC_NOT_FOUND;
}

/* Time. */

uint32_t TIME_GetSystemBootTime(uint32_t *seconds, uint32_t *other)
{
    struct timespec now = {0, 0};
    clock_gettime(CLOCK_BOOTTIME, &now);
    *seconds = (uint32_t)now.tv_sec;
    *other = 0;
    return 0;
}
