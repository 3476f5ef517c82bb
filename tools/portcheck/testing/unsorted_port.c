/* SPDX-License-Identifier: BSD-3-Clause */
/* A right port as its maker might write it, in what C and C++ have in common: rows in the order in which they came to
 * be, each "next" a search for the lowest one that is greater. Its device has what is odd and allowed: interfaces far
 * apart, without IPv4, without IPv6 or without a link-local address, one link-local address on several of them, run-out
 * routers. EMPTY_DEVICE=interfaces leaves nothing but the interfaces, EMPTY_DEVICE=all not even these. */
#include "unsorted_rows.h"

#include <ipmib/contract_note.h>
#include <ipmib/message.h>
#include <ipmib/platform.h>

#include <stdlib.h>
#include <string.h>
#include <time.h>

IPMIB_CONTRACT_NOTE;

static int is(const char *variable, const char *value)
{
    const char *const found = getenv(variable);
    return found != NULL && strcmp(found, value) == 0;
}

/* How many of the rows there are on this device. */
#define COUNT(rows) (getenv("EMPTY_DEVICE") == NULL ? sizeof(rows) / sizeof(rows)[0] : 0)

static size_t interface_count(void)
{
    return is("EMPTY_DEVICE", "all") ? 0 : sizeof interfaces / sizeof interfaces[0];
}

static int order(const uint8_t *left, const uint8_t *right)
{
    return memcmp(left, right, 16);
}

static int is_link_local(const uint8_t *address)
{
    return address[0] == 0xFE && (address[1] & 0xC0) == 0x80;
}

static const Interface *interface_of(uint32_t if_index)
{
    const Interface *row;
    for (row = interfaces; row != interfaces + interface_count(); ++row) {
        if (row->if_index == if_index) {
            return row;
        }
    }
    return NULL;
}

/* Time: the device was started a minute before it is looked at first. */

static time_t started;

uint32_t TIME_GetSystemBootTime(uint32_t *seconds, uint32_t *other)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    started = started != 0 ? started : now.tv_sec - 60;
    *seconds = (uint32_t)(now.tv_sec - started);
    *other = 0;
    return 0;
}

uint32_t IP6_DaemonCheck(uint32_t one)
{
    return (void)one, 0;
}

uint32_t IP_DaemonCheck(uint32_t one)
{
    return (void)one, 0;
}

/* Interfaces: the selection holds its types, and whether it is that of neighbours. */

uint32_t IF_Select_Init(uint32_t kind, IfSelection *selection)
{
    (void)kind;
    memset(selection, 0, sizeof *selection);
    return 0;
}

uint32_t IF_SelectType_Set(uint32_t type, IfSelection *selection)
{
    selection->bytes[type % TYPES] = 1;
    return 0;
}

uint32_t IF_SelectTypeSetGroup(uint32_t group, IfSelection *selection)
{
    selection->bytes[TYPES] = group == 2;
    return 0;
}

uint32_t IF_SelectCondition_Set(uint32_t condition, IfSelection *selection)
{
    return (void)condition, (void)selection, 0;
}

static int opened; /* iterations */

uintptr_t IF_IteratorInitialize(void)
{
    return opened < 16 ? (uintptr_t)++opened : 0;
}

uint32_t IF_IteratorFinalize(uintptr_t *iterator)
{
    opened -= *iterator != 0;
    *iterator = 0;
    return 0;
}

static int is_selected(const IfSelection *selection, const Interface *row)
{
    return selection->bytes[TYPES] ? row->has_ipv6 != 0 : selection->bytes[row->type];
}

static int is_above(uint32_t if_index, uint32_t other)
{
    return is("MISTAKE", "compares-16-bits") ? (if_index & 0xFFFF) > (other & 0xFFFF) : if_index > other;
}

uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator, uint32_t if_index)
{
    uint32_t next = 0;
    const Interface *row;
    (void)iterator;
    for (row = interfaces; row != interfaces + interface_count(); ++row) {
        if (is_selected(selection, row) && is_above(row->if_index, if_index) &&
            (next == 0 || is_above(next, row->if_index))) {
            next = row->if_index;
        }
    }
    return next;
}

uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator)
{
    return IF_GetNextIfIndexByIfSelect(selection, iterator, 0);
}

uint32_t IF_IsValidIfIndex(uint32_t if_index)
{
    if (is("MISTAKE", "knows-what-is-between")) {
        return if_index >= 1 && if_index <= 2147483600;
    }
    return interface_of(if_index) != NULL;
}

/* Counters: they grow with each look. */

static uint32_t looks = 1000;

uint32_t IP6_GetMibStat(uint32_t what, Ip6MibStat *stat)
{
    (void)what;
    stat->in_receives = stat->in_delivers = ++looks;
    stat->out_requests = stat->out_transmits = looks / 2;
    stat->in_octets = UINT64_C(5000000000) + looks * 100;
    stat->out_octets = looks * 100;
    return 0;
}

uint32_t IP6_GetIfStat(uint32_t if_index, uint32_t family, Ip6MibStat *stat)
{
    const Interface *const found = interface_of(if_index);
    (void)family;
    return found == NULL ? RC_NO_MORE : found->has_ipv6 ? IP6_GetMibStat(0, stat) : 0;
}

uint32_t IP_GetMibIfStat(uint32_t if_index, IpMibIfStat *stat)
{
    const Interface *const found = interface_of(if_index);
    if (found != NULL && found->has_ipv4) {
        stat->in_receives = ++looks;
    }
    return found != NULL ? 0 : RC_NO_MORE;
}

uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat)
{
    stat->counter[ICMP6_STAT_IN_MSGS] = ++looks;
    stat->counter[ICMP6_STAT_IN_TYPE + 134] = looks / 2;
    return 0;
}

/* IPv6 on an interface */

uint32_t ND_GetHopLimit(void)
{
    return 64;
}

static const Interface *with_ipv6(uint32_t if_index)
{
    const Interface *const found = interface_of(if_index);
    return found != NULL && found->has_ipv6 ? found : NULL;
}

uint32_t ND_GetIfConfigInfo(uint32_t if_index, NdIfConfigInfo *info)
{
    const Interface *const found = with_ipv6(if_index);
    if (found == NULL) {
        return RC_NOT_FOUND;
    }
    info->reachable_ms = 30000;
    info->max_interval_s = 600;
    info->min_interval_s = 200;
    info->default_lifetime_s = 1800;
    info->flags = found->flags;
    return 0;
}

uint32_t IP6Mib_GetIFID(uint32_t if_index, uint8_t *identifier)
{
    const Interface *const found = with_ipv6(if_index);
    if (found == NULL) {
        return RC_NOT_FOUND;
    }
    memcpy(identifier, found->link_local.bytes + 8, 8);
    return 0;
}

static const Interface *with_link_local(uint32_t if_index)
{
    const Interface *const found = with_ipv6(if_index);
    return found != NULL && is_link_local(found->link_local.bytes) ? found : NULL;
}

uint32_t IP6ADDR_DRVK_GetMainLLA(uint32_t if_index, FullAddressRecord *record)
{
    const Interface *const found = with_link_local(if_index);
    (void)record;
    return found != NULL && found->state == 0 ? 0 : RC_NOT_FOUND;
}

uint32_t IP6Addr_GetLinkLocalAddr(uint32_t if_index, LinkLocalBuffer *buffer)
{
    return (void)buffer, with_link_local(if_index) != NULL ? 0 : RC_NOT_FOUND;
}

uint32_t IP6Mib_GetLinkLocalFullAddr(uint32_t if_index, FullAddressRecord *record)
{
    const Interface *const found = with_link_local(if_index);
    if (found == NULL) {
        return RC_NOT_FOUND;
    }
    record->if_index = if_index;
    memcpy(record->address, found->link_local.bytes, 16);
    record->prefix_length = 10;
    record->origin = 64;
    record->state = found->state;
    record->created_s = record->last_changed_s = 30;
    return 0;
}

uint32_t IP6_GetIfMTU(uint32_t if_index, uint32_t *mtu)
{
    const Interface *const found = interface_of(if_index);
    *mtu = found != NULL ? found->mtu : 0;
    return found != NULL ? 0 : RC_NOT_FOUND;
}

/* Neighbours */

static uint32_t give_neighbour(const Neighbour *row, NeighbourEntry *entry, uint32_t otherwise)
{
    if (row == NULL) {
        return otherwise;
    }
    memset(entry, 0, sizeof *entry);
    entry->if_index = ipmib_be32(row->if_index);
    memcpy(entry->address, row->address.bytes, 16);
    entry->link_layer[0] = row->state == 7 ? 0 : 2;
    entry->type = ipmib_be32(row->type);
    entry->state = ipmib_be32(row->state);
    entry->last_updated_s = ipmib_be32(row->updated_s);
    return 0;
}

uint32_t ND_GetNetToPhysicalTable(uint32_t if_index, const uint8_t *address, NeighbourEntry *entry, uintptr_t length)
{
    const Neighbour *row;
    (void)length;
    for (row = neighbours; row != neighbours + COUNT(neighbours); ++row) {
        if (row->if_index == if_index && order(row->address.bytes, address) == 0) {
            return give_neighbour(row, entry, 0);
        }
    }
    return RC_NOT_FOUND;
}

uint32_t ND_GetNextNetToPhysicalTable(uint32_t mode, NeighbourEntry *entry)
{
    const Neighbour *next = NULL, *row;
    for (row = neighbours; row != neighbours + COUNT(neighbours); ++row) {
        if (row->if_index == ipmib_be32_get(entry->if_index) && is_link_local(row->address.bytes) == (mode == 2) &&
            order(row->address.bytes, entry->address) > 0 &&
            (next == NULL || order(row->address.bytes, next->address.bytes) < 0)) {
            next = row;
        }
    }
    return give_neighbour(next, entry, RC_NO_MORE);
}

/* Prefixes */

static int prefix_order(const Prefix *row, const uint8_t *prefix, uint32_t length)
{
    const int found = order(row->prefix.bytes, prefix);
    return found != 0 ? found : (row->length > length) - (row->length < length);
}

uint32_t IP6CFG_GetNextFullPrefix(uint32_t if_index, int32_t any, FullPrefixRecord *record)
{
    const Prefix *next = NULL, *row;
    (void)any;
    for (row = prefixes; row != prefixes + COUNT(prefixes); ++row) {
        if (row->if_index == if_index && prefix_order(row, record->prefix, ipmib_be32_get(record->length)) > 0 &&
            (next == NULL || prefix_order(row, next->prefix.bytes, next->length) < 0)) {
            next = row;
        }
    }
    if (next == NULL) {
        return RC_NO_MORE;
    }
    memset(record, 0, sizeof *record);
    record->if_index = ipmib_be32(if_index);
    memcpy(record->prefix, next->prefix.bytes, 16);
    record->length = ipmib_be32(next->length);
    record->origin = ipmib_be32(next->origin);
    record->valid_s = ipmib_be32(next->valid_s);
    record->preferred_s = ipmib_be32(next->preferred_s);
    record->flags = next->flags;
    record->learned_at_s = ipmib_be32(25);
    return 0;
}

uint32_t IP6CFG_GetFirstFullPrefix(uint32_t if_index, int32_t any, FullPrefixRecord *record)
{
    return IP6CFG_GetNextFullPrefix(if_index, any, record); /* behind ::/0, which no interface has */
}

/* Addresses */

static uint32_t give_address(const Address *row, FullAddressRecord *record, uint32_t otherwise)
{
    if (row == NULL) {
        return otherwise;
    }
    memset(record, 0, sizeof *record);
    record->if_index = row->if_index;
    memcpy(record->address, row->address.bytes, 16);
    record->prefix_length = row->length;
    record->origin = row->origin;
    record->flags = row->flags;
    record->state = row->state;
    record->created_s = row->created_s;
    record->last_changed_s = row->changed_s;
    return 0;
}

uint32_t IP6Mib_GetNextAddrInVrf(uint32_t vrf, uint32_t kind, FullAddressRecord *record)
{
    const Address *next = NULL, *row;
    (void)vrf, (void)kind;
    for (row = addresses; row != addresses + COUNT(addresses); ++row) {
        if (order(row->address.bytes, record->address) > 0 &&
            (next == NULL || order(row->address.bytes, next->address.bytes) < 0)) {
            next = row;
        }
    }
    return give_address(next, record, RC_NO_MORE);
}

uint32_t IP6Mib_GetFirstAddrInVrf(uint32_t vrf, uint32_t kind, FullAddressRecord *record)
{
    return IP6Mib_GetNextAddrInVrf(vrf, kind, record); /* behind ::, which nobody has */
}

uint32_t IP6Mib_GetAddrFullInfoInVrf(uint32_t vrf, const uint8_t *address, int32_t any, FullAddressRecord *record)
{
    const Address *row;
    (void)vrf, (void)any;
    for (row = addresses; row != addresses + COUNT(addresses); ++row) {
        if (order(row->address.bytes, address) == 0) {
            return give_address(row, record, 0);
        }
    }
    return RC_NOT_FOUND;
}

/* Default routers */

static uint32_t give_router(const Router *row, GatewayRecord *record, uint32_t otherwise)
{
    if (row == NULL) {
        return otherwise;
    }
    record->if_index = ipmib_be32(row->if_index);
    memcpy(record->address, row->address.bytes, 16);
    record->flags = ipmib_be32(row->flags);
    record->lifetime_s = ipmib_be32(row->lifetime_s);
    record->learned_at_s = ipmib_be32(row->learned_at_s);
    return 0;
}

static int router_order(const Router *row, const uint8_t *address, uint32_t if_index)
{
    const int found = order(row->address.bytes, address);
    return found != 0 ? found : (row->if_index > if_index) - (row->if_index < if_index);
}

uint32_t IP6Mib_GetNextGatewayInVrf(uint32_t vrf, uint32_t gateway_class, const GatewayKey *key, GatewayRecord *record)
{
    const Router *next = NULL, *row;
    (void)vrf;
    for (row = routers; row != routers + COUNT(routers); ++row) {
        if (is_link_local(row->address.bytes) == (gateway_class == 2) &&
            router_order(row, key->address, ipmib_be32_get(key->if_index)) > 0 &&
            (next == NULL || router_order(row, next->address.bytes, next->if_index) < 0)) {
            next = row;
        }
    }
    return give_router(next, record, RC_NO_MORE);
}

uint32_t IP6Mib_GetFirstGatewayInVrf(uint32_t vrf, uint32_t gateway_class, GatewayRecord *record)
{
    GatewayKey zero;
    memset(&zero, 0, sizeof zero);
    return IP6Mib_GetNextGatewayInVrf(vrf, gateway_class, &zero, record);
}

uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *record)
{
    const Router *row;
    for (row = routers; row != routers + COUNT(routers); ++row) {
        if (router_order(row, key->address, ipmib_be32_get(key->if_index)) == 0) {
            return give_router(row, record, 0);
        }
    }
    return RC_NOT_FOUND;
}

uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *record)
{
    return IP6Mib_GetGatewayByKey(key, record);
}
