// SPDX-License-Identifier: BSD-3-Clause
// A small device that keeps every promise, and on request breaks one: `--platform PATH:FAULT`.
#include <ipmib/message.h>
#include <ipmib/platform.h>
#include <ipmib/platform_hooks.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <string>

namespace
{

std::string fault;

bool has(const char *name)
{
    return fault == name;
}

using Address = std::uint8_t[16];

struct Row {
    std::uint32_t ifIndex;
    Address address;
    std::uint32_t length;
};

constexpr std::uint32_t interfaces[] = {2, 3, 7};
constexpr Row prefixes[] = {
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 1}, 64},
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 2}, 64},
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 3}, 64},
    {3, {0x20, 0x01, 0x0D, 0xB8, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 128},
};
constexpr Row addresses[] = {
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 64},
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 64},
    {3, {0x20, 0x01, 0x0D, 0xB8, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 128},
};
constexpr Row linkLocals[] = {
    {2, {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 10},
    {3, {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 10},
    {7, {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9}, 10},
};
constexpr Row neighbours[] = {
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x10}, 0},
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x20}, 0},
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x30}, 0},
    {2, {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x10}, 0},
    {2, {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x20}, 0},
};
constexpr Row routers[] = {
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x10}, 0},
    {2, {0x20, 0x01, 0x0D, 0xB8, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x20}, 0},
    {2, {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x10}, 0},
    {3, {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x10}, 0},
};
unsigned selections = 0;
constexpr std::uint32_t now = 5000; // when the library was loaded

bool isLinkLocal(const std::uint8_t *address)
{
    return address[0] == 0xFE && (address[1] & 0xC0) == 0x80;
}

int compare(const std::uint8_t *left, const std::uint8_t *right)
{
    return std::memcmp(left, right, sizeof(Address));
}

std::uint32_t inOtherOrder(std::uint32_t value)
{
    return __builtin_bswap32(value);
}

std::uint32_t answer(bool found)
{
    return found ? 0 : RC_NO_MORE;
}

bool isInterface(std::uint32_t ifIndex)
{
    return std::find(std::begin(interfaces), std::end(interfaces), ifIndex) != std::end(interfaces);
}

template <std::size_t count>
const Row *find(const Row (&rows)[count], std::uint32_t ifIndex, const std::uint8_t *address)
{
    for (const Row &row : rows) {
        if (row.ifIndex == ifIndex && compare(row.address, address) == 0) {
            return &row;
        }
    }
    return nullptr;
}

void fill(const Row &row, FullPrefixRecord *record)
{
    *record = {};
    record->if_index = ipmib_be32(has("swapped-prefix-interface") ? inOtherOrder(row.ifIndex) : row.ifIndex);
    std::memcpy(record->prefix, row.address, sizeof record->prefix);
    record->prefix[15] = has("unmasked-prefix") ? 1 : record->prefix[15];
    record->length = ipmib_be32(row.length);
    record->origin = ipmib_be32(2);
    record->valid_s = ipmib_be32(7200);
    record->preferred_s = ipmib_be32(has("prefix-lifetimes") ? 7201 : 3600);
}

void fill(const Row &row, FullAddressRecord *record)
{
    *record = {};
    record->if_index = has("swapped-address-interface") ? inOtherOrder(row.ifIndex) : row.ifIndex;
    std::memcpy(record->address, row.address, sizeof record->address);
    record->prefix_length = row.length;
    record->created_s = has("address-in-ticks") ? now * 100 : 10;
    record->last_changed_s = record->created_s + 10;
    record->lead = has("leading-field") ? 1 : 0;
}

void fill(const Row &row, NeighbourEntry *entry)
{
    *entry = {};
    entry->if_index = ipmib_be32(has("swapped-neighbour-interface") ? inOtherOrder(row.ifIndex) : row.ifIndex);
    std::memcpy(entry->address, row.address, sizeof entry->address);
    entry->type = ipmib_be32(2);
    entry->state = ipmib_be32(has("neighbour-state") ? 0 : 1);
    entry->last_updated_s = ipmib_be32(has("neighbour-in-ticks") ? now * 100 : now - 100);
}

void fill(const Row &row, GatewayRecord *gateway)
{
    *gateway = {};
    gateway->if_index = ipmib_be32(has("swapped-router-interface") ? inOtherOrder(row.ifIndex) : row.ifIndex);
    std::memcpy(gateway->address, row.address, sizeof gateway->address);
    gateway->lead = ipmib_be32(has("router-lead") ? 0x10000 : 0);
    gateway->lifetime_s = ipmib_be32(1800);
    gateway->learned_at_s = ipmib_be32(has("router-in-ticks") ? now * 100 : now - 10);
}

bool isBehind(const Row &row, const std::uint8_t *address, std::uint32_t number, std::uint32_t keyNumber)
{
    const int order = compare(row.address, address);
    return order != 0 ? order > 0 : number > keyNumber;
}

int start(const IpmibPlatformHost *host, char *, size_t)
{
    fault = host->argument;
    if (has("crash-at-start")) {
        std::abort();
    }
    return 0;
}

int descriptor()
{
    return -1;
}

void nothing() {}

} // namespace

extern "C" {

extern __attribute__((visibility("default"))) const IpmibPlatformHooks ipmib_platform_hooks;
const IpmibPlatformHooks ipmib_platform_hooks = [] {
    IpmibPlatformHooks hooks{};
    hooks.size = sizeof(IpmibPlatformHooks);
    hooks.start = start;
    hooks.stop = nothing;
    hooks.descriptor = descriptor;
    hooks.dispatch = nothing;
    hooks.begin_packet = nothing;
    hooks.reload = nothing;
    return hooks;
}();

std::uint32_t IP6_DaemonCheck(std::uint32_t)
{
    return has("service-down") ? 1 : 0;
}
std::uint32_t IP_DaemonCheck(std::uint32_t)
{
    return 0;
}

std::uint32_t IF_Select_Init(std::uint32_t, IfSelection *selection)
{
    ++selections;
    if (has("writes-too-far")) {
        volatile std::uint8_t *const bytes = selection->bytes;
        bytes[sizeof *selection + 8] = 1;
    }
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
    return has("no-iterator") ? 0 : 1;
}
std::uint32_t IF_IteratorFinalize(std::uintptr_t *)
{
    return 0;
}
std::uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *, std::uintptr_t)
{
    return has("other-first-interface") ? interfaces[1] : interfaces[0];
}
std::uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *, std::uintptr_t, std::uint32_t ifIndex)
{
    if (has("fickle-selection") && selections % 2 == 0 && ifIndex >= 3) {
        return 0;
    }
    if (has("descending-interfaces") && ifIndex == 3) {
        return 2;
    }
    if (has("forgets-removed-interfaces") && ifIndex != 0 && !isInterface(ifIndex)) {
        return 0;
    }
    const std::uint32_t *next = std::upper_bound(std::begin(interfaces), std::end(interfaces), ifIndex);
    return next == std::end(interfaces) ? 0 : has("swapped-interfaces") ? inOtherOrder(*next) : *next;
}
std::uint32_t IF_IsValidIfIndex(std::uint32_t ifIndex)
{
    if (has("denies-interface") && ifIndex == 7) {
        return 0;
    }
    return has("knows-every-interface") || isInterface(ifIndex) ? 1 : 0;
}

std::uint32_t IP6_GetMibStat(std::uint32_t, Ip6MibStat *stat)
{
    stat->in_receives = 12345;
    return answer(!has("no-system-counters"));
}
std::uint32_t IP6_GetIfStat(std::uint32_t ifIndex, std::uint32_t, Ip6MibStat *stat)
{
    static std::uint64_t falling = 1000000;
    stat->in_receives = has("swapped-counters") ? __builtin_bswap64(50) : 50;
    stat->in_octets = has("backward-counters") ? falling-- : stat->in_receives;
    if (ifIndex == 0) {
        return answer(has("counters-of-none"));
    }
    return answer(isInterface(ifIndex) && !(has("no-ipv6-counters") && ifIndex == 3));
}
std::uint32_t IP_GetMibIfStat(std::uint32_t ifIndex, IpMibIfStat *stat)
{
    stat->in_receives = has("swapped-words") ? std::uint64_t{70} << 32 : 70;
    return answer(isInterface(ifIndex) && !(has("no-ipv4-counters") && ifIndex == 3));
}
std::uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat)
{
    while (has("hangs")) {
        pause();
    }
    stat->counter[ICMP6_STAT_IN_MSGS] = 9;
    return 0;
}

std::uint32_t ND_GetHopLimit()
{
    return has("swapped-hop-limit") ? inOtherOrder(64) : 64;
}
std::uint32_t ND_GetIfConfigInfo(std::uint32_t ifIndex, NdIfConfigInfo *info)
{
    info->reachable_ms = has("swapped-timers") ? inOtherOrder(30000) : 30000;
    info->retransmit_ms = 1000;
    info->max_interval_s = 600;
    info->min_interval_s = has("intervals") ? 601 : 200;
    info->flags = ND_FLAG_SEND_ADVERTS;
    return answer(isInterface(ifIndex));
}
std::uint32_t IP6Mib_GetIFID(std::uint32_t ifIndex, std::uint8_t *identifier)
{
    if (has("crashes")) {
        std::abort();
    }
    identifier[7] = static_cast<std::uint8_t>(ifIndex);
    return answer(isInterface(ifIndex));
}
std::uint32_t IP6ADDR_DRVK_GetMainLLA(std::uint32_t ifIndex, FullAddressRecord *record)
{
    return IP6Mib_GetLinkLocalFullAddr(ifIndex, record);
}
std::uint32_t IP6_GetIfMTU(std::uint32_t, std::uint32_t *mtu)
{
    *mtu = has("swapped-mtu") ? inOtherOrder(1500) : 1500;
    return 0;
}

std::uint32_t ND_GetNetToPhysicalTable(std::uint32_t ifIndex, const std::uint8_t *address, NeighbourEntry *entry,
                                       std::uintptr_t length)
{
    const Row *row = find(neighbours, ifIndex, address);
    if (row == nullptr || (has("neighbour-lookup-by-length") && length != sizeof(Address))) {
        return answer(has("invents-neighbours"));
    }
    fill(*row, entry);
    return 0;
}
std::uint32_t ND_GetNextNetToPhysicalTable(std::uint32_t mode, NeighbourEntry *entry)
{
    const NeighbourEntry key = *entry;
    const std::uint32_t ifIndex = ipmib_be32_get(key.if_index);
    if (has("stands-still-at-neighbour") && compare(key.address, neighbours[1].address) == 0) {
        return 0;
    }
    if (has("unordered-neighbours") && mode == 1 && compare(key.address, neighbours[2].address) == 0) {
        fill(neighbours[1], entry);
        return 0;
    }
    constexpr Address zero = {};
    constexpr Address linkLocalStart = {0xFE, 0x80};
    const bool isStart = compare(key.address, zero) == 0 || compare(key.address, linkLocalStart) == 0;
    if (has("forgets-removed-neighbours") && !isStart && find(neighbours, ifIndex, key.address) == nullptr) {
        return RC_NO_MORE;
    }
    for (const Row &row : neighbours) {
        const bool isWanted = has("ignores-mode") || isLinkLocal(row.address) == (mode == 2);
        if (isWanted && row.ifIndex == ifIndex && isBehind(row, key.address, 0, 0)) {
            fill(row, entry);
            return 0;
        }
    }
    return RC_NO_MORE;
}

std::uint32_t IP6CFG_GetFirstFullPrefix(std::uint32_t ifIndex, std::int32_t, FullPrefixRecord *record)
{
    if (has("other-first-prefix") && ifIndex == 2) {
        fill(prefixes[1], record);
        return 0;
    }
    *record = {};
    return IP6CFG_GetNextFullPrefix(ifIndex, -1, record);
}
std::uint32_t IP6CFG_GetNextFullPrefix(std::uint32_t ifIndex, std::int32_t, FullPrefixRecord *record)
{
    const FullPrefixRecord key = *record;
    const std::uint32_t length = ipmib_be32_get(key.length);
    if (has("stands-still-at-prefix") && compare(key.prefix, prefixes[1].address) == 0) {
        return 0;
    }
    if (has("unordered-prefixes") && compare(key.prefix, prefixes[2].address) == 0) {
        fill(prefixes[0], record);
        return 0;
    }
    if (has("forgets-removed-prefixes") && length % 64 != 0) {
        return RC_NO_MORE;
    }
    for (const Row &row : prefixes) {
        const bool isHidden = has("address-without-prefix") && &row == &prefixes[1];
        if (row.ifIndex == ifIndex && !isHidden && isBehind(row, key.prefix, row.length, length)) {
            fill(row, record);
            return 0;
        }
    }
    constexpr Row withinLinkLocal = {3, {0xFE, 0x80}, 64};
    if (has("link-local-prefix") && ifIndex == 3 && isBehind(withinLinkLocal, key.prefix, 64, length)) {
        fill(withinLinkLocal, record);
        return 0;
    }
    return RC_NO_MORE;
}

std::uint32_t IP6Addr_GetLinkLocalAddr(std::uint32_t ifIndex, LinkLocalBuffer *)
{
    return answer(isInterface(ifIndex) && !has("link-local-without-row"));
}
std::uint32_t IP6Mib_GetFirstAddrInVrf(std::uint32_t, std::uint32_t, FullAddressRecord *record)
{
    if (has("other-first-address")) {
        fill(addresses[1], record);
        return 0;
    }
    *record = {};
    return IP6Mib_GetNextAddrInVrf(0, 14, record);
}
std::uint32_t IP6Mib_GetNextAddrInVrf(std::uint32_t, std::uint32_t, FullAddressRecord *record)
{
    const FullAddressRecord key = *record;
    if (has("stands-still-at-address") && compare(key.address, addresses[1].address) == 0) {
        return 0;
    }
    if (has("unordered-addresses") && compare(key.address, addresses[2].address) == 0) {
        fill(addresses[0], record);
        return 0;
    }
    for (const Row &row : addresses) {
        if (isBehind(row, key.address, 0, 0)) {
            fill(row, record);
            return 0;
        }
    }
    if (has("link-local-among-addresses") && isBehind(linkLocals[0], key.address, 0, 0)) {
        fill(linkLocals[0], record);
        return 0;
    }
    return RC_NO_MORE;
}
std::uint32_t IP6Mib_GetAddrFullInfoInVrf(std::uint32_t, const std::uint8_t *address, std::int32_t,
                                          FullAddressRecord *record)
{
    for (const Row &row : addresses) {
        if (compare(row.address, address) == 0 && !has("no-exact-address")) {
            fill(row, record);
            return 0;
        }
    }
    return RC_NOT_FOUND;
}
std::uint32_t IP6Mib_GetLinkLocalFullAddr(std::uint32_t ifIndex, FullAddressRecord *record)
{
    for (const Row &row : linkLocals) {
        if (row.ifIndex == ifIndex) {
            fill(row, record);
            record->prefix_length = has("link-local-length") ? 64 : 10;
            record->address[0] = has("global-as-link-local") ? 0x20 : record->address[0];
            return 0;
        }
    }
    return RC_NOT_FOUND;
}

std::uint32_t IP6Mib_GetFirstGatewayInVrf(std::uint32_t, std::uint32_t gatewayClass, GatewayRecord *gateway)
{
    if (has("other-first-router") && gatewayClass == 2) {
        fill(routers[3], gateway);
        return 0;
    }
    const GatewayKey zero{};
    return IP6Mib_GetNextGatewayInVrf(0, gatewayClass, &zero, gateway);
}
std::uint32_t IP6Mib_GetNextGatewayInVrf(std::uint32_t, std::uint32_t gatewayClass, const GatewayKey *key,
                                         GatewayRecord *gateway)
{
    const std::uint32_t ifIndex = ipmib_be32_get(key->if_index);
    if (has("unordered-routers") && gatewayClass == 2 && ifIndex == 3) {
        fill(routers[2], gateway);
        return 0;
    }
    if (has("stands-still-at-router") && gatewayClass == 2 && ifIndex == 3) {
        fill(routers[3], gateway);
        return 0;
    }
    if (has("forgets-removed-routers") && ifIndex != 0 && find(routers, ifIndex, key->address) == nullptr) {
        return RC_NO_MORE;
    }
    for (const Row &row : routers) {
        const bool isWanted = has("ignores-router-class") || isLinkLocal(row.address) == (gatewayClass == 2);
        if (isWanted && isBehind(row, key->address, row.ifIndex, ifIndex)) {
            fill(row, gateway);
            return 0;
        }
    }
    return RC_NO_MORE;
}
std::uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    const Row *row = find(routers, ipmib_be32_get(key->if_index), key->address);
    if (row == nullptr) {
        return RC_NOT_FOUND;
    }
    fill(*row, gateway);
    return 0;
}
#ifndef WITHOUT_ONE_SERVICE
std::uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return has("no-exact-router") ? RC_NOT_FOUND : IP6Mib_GetGatewayByKey(key, gateway);
}
#endif

std::uint32_t TIME_GetSystemBootTime(std::uint32_t *seconds, std::uint32_t *)
{
    static const std::time_t loaded = std::time(nullptr);
    const auto passed = static_cast<std::uint32_t>(std::time(nullptr) - loaded);
    *seconds = now + passed * (has("clock-in-milliseconds") ? 1000 : 1);
    return 0;
}

} // extern "C"
