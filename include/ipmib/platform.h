/* SPDX-License-Identifier: BSD-3-Clause */
/* The device services that the module calls. A platform library provides all of them; the module adds nothing to what
 * they answer, so what is stated here is what makes its tables right. Every function returns 0 on success and non-zero
 * on failure unless it says otherwise, and is called on the request thread with records that the caller cleared. */
#ifndef IPMIB_PLATFORM_H
#define IPMIB_PLATFORM_H

#include <ipmib/records.h>
#include <ipmib/version.h>

#define IPMIB_PLATFORM_VERSION IPMIB_CONTRACT_VERSION(1, 0)

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default) /* these names are what libraries are linked by, whatever the default is */

/* --- State of the services -----------------------------------------------------------------------------------------
 */

/* 0 while the IPv6, or the IPv4, service runs. The argument is 1. */
uint32_t IP6_DaemonCheck(uint32_t one);
uint32_t IP_DaemonCheck(uint32_t one);

/* --- Interface selection and iteration -----------------------------------------------------------------------------
 */

/* Starts a selection. The kind is 5. */
uint32_t IF_Select_Init(uint32_t kind, IfSelection *selection);
/* Adds one interface type code to the selection: the standard selection adds 36 of them. */
uint32_t IF_SelectType_Set(uint32_t type, IfSelection *selection);
/* Adds a group of types: 2 is the group of all interfaces that can have IPv6 neighbours. */
uint32_t IF_SelectTypeSetGroup(uint32_t group, IfSelection *selection);
/* Restricts the selection by a condition: 8 keeps the interfaces that exist. */
uint32_t IF_SelectCondition_Set(uint32_t condition, IfSelection *selection);

/* Opens an iteration; 0 is a failure. Closes it; the argument is the address of the handle. */
uintptr_t IF_IteratorInitialize(void);
uint32_t IF_IteratorFinalize(uintptr_t *iterator);

/* The lowest selected ifIndex, and the lowest one above if_index (which may be 0, or an interface that is gone); 0 for
 * none. ifIndexes must ascend, or walks break. */
uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator);
uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator, uint32_t if_index);

/* 1 when the interface exists, else 0. */
uint32_t IF_IsValidIfIndex(uint32_t if_index);

/* --- Traffic counters ----------------------------------------------------------------------------------------------
 */

/* IPv6 counters of the system; the first argument is 0x8000. */
uint32_t IP6_GetMibStat(uint32_t what, Ip6MibStat *stat);
/* IPv6, and IPv4, counters of one interface. They must succeed for every selected interface: a walk leaves a version's
 * block at the first failure. They are called with 0 behind the last interface and must fail there. The constant is 10.
 */
uint32_t IP6_GetIfStat(uint32_t if_index, uint32_t family, Ip6MibStat *stat);
uint32_t IP_GetMibIfStat(uint32_t if_index, IpMibIfStat *stat);
/* ICMPv6 counters of the system. The result is not examined. */
uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat);

/* --- IPv6 interfaces and neighbours --------------------------------------------------------------------------------
 */

/* The default hop limit itself. */
uint32_t ND_GetHopLimit(void);
/* Neighbour discovery timers and advertisement settings of one interface. */
uint32_t ND_GetIfConfigInfo(uint32_t if_index, NdIfConfigInfo *info);
/* The 8-byte interface identifier; fails when the interface has no IPv6. */
uint32_t IP6Mib_GetIFID(uint32_t if_index, uint8_t *identifier);
/* The main link-local address; only whether there is one is looked at. */
uint32_t IP6ADDR_DRVK_GetMainLLA(uint32_t if_index, FullAddressRecord *address);
/* The link MTU, bytes. */
uint32_t IP6_GetIfMTU(uint32_t if_index, uint32_t *mtu);

/* The neighbour with exactly this interface and address. The last argument is the address length, or in one place a
 * pointer: the answer must not depend on it. */
uint32_t ND_GetNetToPhysicalTable(uint32_t if_index, const uint8_t *address, NeighbourEntry *entry, uintptr_t length);
/* The neighbour of entry's interface that follows entry's address, in ascending order of addresses. Mode 1 finds
 * addresses outside fe80::/10, mode 2 link-local ones. */
uint32_t ND_GetNextNetToPhysicalTable(uint32_t mode, NeighbourEntry *entry);

/* --- IPv6 prefixes, addresses and default routers ------------------------------------------------------------------
 */

/* The first prefix of an interface, and the one that follows the key in the record (which need not exist), ascending by
 * (prefix, length) and never inside fe80::/10. The second argument is -1. */
uint32_t IP6CFG_GetFirstFullPrefix(uint32_t if_index, int32_t minus_one, FullPrefixRecord *record);
uint32_t IP6CFG_GetNextFullPrefix(uint32_t if_index, int32_t minus_one, FullPrefixRecord *record);

/* Whether the interface has a link-local address; the buffer's content is not looked at. */
uint32_t IP6Addr_GetLinkLocalAddr(uint32_t if_index, LinkLocalBuffer *buffer);

/* The first address outside fe80::/10, and the one that follows the address in the record, ascending. The constants are
 * 0 and 14. */
uint32_t IP6Mib_GetFirstAddrInVrf(uint32_t vrf, uint32_t kind, FullAddressRecord *record);
uint32_t IP6Mib_GetNextAddrInVrf(uint32_t vrf, uint32_t kind, FullAddressRecord *record);
/* One address by its 16 bytes. The constants are 0 and -1. */
uint32_t IP6Mib_GetAddrFullInfoInVrf(uint32_t vrf, const uint8_t *address, int32_t minus_one,
                                     FullAddressRecord *record);
/* The link-local address of one interface. */
uint32_t IP6Mib_GetLinkLocalFullAddr(uint32_t if_index, FullAddressRecord *record);

/* The first default router of a class, and the one that follows the key, ascending by (address, ifIndex). Class 14
 * holds the routers outside fe80::/10, class 2 the link-local ones. */
uint32_t IP6Mib_GetFirstGatewayInVrf(uint32_t vrf, uint32_t gateway_class, GatewayRecord *gateway);
uint32_t IP6Mib_GetNextGatewayInVrf(uint32_t vrf, uint32_t gateway_class, const GatewayKey *key,
                                    GatewayRecord *gateway);
/* One default router of any class by its key. */
uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway);
uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway);

/* Time since boot: whole seconds, and a second word that is not used. The result is not examined. */
uint32_t TIME_GetSystemBootTime(uint32_t *seconds, uint32_t *other);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
