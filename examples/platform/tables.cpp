// SPDX-License-Identifier: BSD-3-Clause
// A platform in C++ (17 or later) that keeps every promise, with several rows of each kind: tables in order, and one
// way to look for what follows a key. A port fills the tables from what its device knows, whenever that changes.
#include <ipmib/contract_note.h>
#include <ipmib/message.h>
#include <ipmib/platform.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <iterator>
#include <tuple>

IPMIB_CONTRACT_NOTE; // a host that has another contract refuses the library before it loads it

namespace
{

using Bytes = std::array<std::uint8_t, 16>; // compares as addresses do

struct Address {
    Bytes address;
    std::uint32_t ifIndex;
    std::uint32_t length;

    auto key() const { return std::tie(address); }
};
struct Prefix {
    std::uint32_t ifIndex;
    Bytes prefix;
    std::uint32_t length;

    auto key() const { return std::tie(ifIndex, prefix, length); }
};
struct Neighbour {
    std::uint32_t ifIndex;
    Bytes address;
    std::array<std::uint8_t, 6> linkLayer;

    auto key() const { return std::tie(ifIndex, address); }
};
struct Router {
    Bytes address;
    std::uint32_t ifIndex;

    auto key() const { return std::tie(address, ifIndex); }
};

// Each in the order of its key().
constexpr std::uint32_t interfaces[] = {1, 4};
constexpr Address addresses[] = {
    {{0x20, 0x01, 0x0d, 0xb8, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01}, 1, 64},
    {{0x20, 0x01, 0x0d, 0xb8, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01}, 4, 64},
};
constexpr Address linkLocals[] = {
    {{0xfe, 0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01}, 1, 10},
    {{0xfe, 0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0x00, 0x01}, 4, 10},
};
constexpr Prefix prefixes[] = {
    {1, {0x20, 0x01, 0x0d, 0xb8, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}, 64},
    {4, {0x20, 0x01, 0x0d, 0xb8, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}, 64},
};
constexpr Neighbour neighbours[] = {
    {1,
     {0x20, 0x01, 0x0d, 0xb8, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02},
     {0x02, 0, 0x5e, 0, 0x53, 0x02}},
    {1,
     {0x20, 0x01, 0x0d, 0xb8, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x03},
     {0x02, 0, 0x5e, 0, 0x53, 0x03}},
    {1,
     {0xfe, 0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02},
     {0x02, 0, 0x5e, 0, 0x53, 0x02}},
};
constexpr Router routers[] = {
    {{0xfe, 0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02}, 1},
};

constexpr std::uint32_t mtu = 1500;
constexpr std::uint32_t hopLimit = 64;
constexpr std::uint32_t forEver = 0xFFFFFFFF;
constexpr std::uint32_t longestRouterLifetime = 65535; // seconds
constexpr std::uint32_t withinLinkLocal = 2;           // as a mode of neighbours and as a class of routers

bool isLinkLocal(const Bytes &address)
{
    return address[0] == 0xfe && (address[1] & 0xc0) == 0x80;
}

Bytes bytesOf(const std::uint8_t *address)
{
    Bytes bytes{};
    std::copy_n(address, bytes.size(), bytes.begin());
    return bytes;
}

std::uint32_t secondsSinceBoot()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint32_t>(now.tv_sec);
}

// The first row behind the key; null when none follows. The key need not be in the table.
template <typename Row, std::size_t count, typename Key>
const Row *after(const Row (&rows)[count], const Key &key)
{
    const Row *const row = std::upper_bound(std::begin(rows), std::end(rows), key,
                                            [](const Key &asked, const Row &one) { return asked < one.key(); });
    return row == std::end(rows) ? nullptr : row;
}

// The row with this key; null when there is none.
template <typename Row, std::size_t count, typename Key>
const Row *at(const Row (&rows)[count], const Key &key)
{
    const Row *const row = std::lower_bound(std::begin(rows), std::end(rows), key,
                                            [](const Row &one, const Key &asked) { return one.key() < asked; });
    return row == std::end(rows) || row->key() != key ? nullptr : row;
}

bool exists(std::uint32_t ifIndex)
{
    return std::binary_search(std::begin(interfaces), std::end(interfaces), ifIndex);
}

std::uint32_t found(bool isFound)
{
    return isFound ? 0 : RC_NOT_FOUND;
}

// Every field is filled, each time.

std::uint32_t fill(const Address *row, FullAddressRecord *record)
{
    if (row == nullptr) {
        return RC_NO_MORE;
    }
    *record = FullAddressRecord{};
    record->if_index = row->ifIndex;
    std::copy(row->address.begin(), row->address.end(), record->address);
    record->prefix_length = row->length;
    record->origin = 8; // manual
    return 0;
}

std::uint32_t fill(const Prefix *row, FullPrefixRecord *record)
{
    if (row == nullptr) {
        return RC_NO_MORE;
    }
    *record = FullPrefixRecord{};
    record->if_index = ipmib_be32(row->ifIndex);
    std::copy(row->prefix.begin(), row->prefix.end(), record->prefix);
    record->length = ipmib_be32(row->length);
    record->origin = ipmib_be32(2); // manual
    record->valid_s = ipmib_be32(forEver);
    record->preferred_s = ipmib_be32(forEver);
    record->flags = 0x80; // on-link
    return 0;
}

std::uint32_t fill(const Neighbour *row, NeighbourEntry *entry)
{
    if (row == nullptr) {
        return RC_NO_MORE;
    }
    *entry = NeighbourEntry{};
    entry->if_index = ipmib_be32(row->ifIndex);
    std::copy(row->address.begin(), row->address.end(), entry->address);
    std::copy(row->linkLayer.begin(), row->linkLayer.end(), entry->link_layer);
    entry->type = ipmib_be32(2);  // dynamic
    entry->state = ipmib_be32(1); // reachable
    entry->last_updated_s = ipmib_be32(secondsSinceBoot());
    return 0;
}

std::uint32_t fill(const Router *row, GatewayRecord *record)
{
    if (row == nullptr) {
        return RC_NO_MORE;
    }
    *record = GatewayRecord{};
    record->if_index = ipmib_be32(row->ifIndex);
    std::copy(row->address.begin(), row->address.end(), record->address);
    record->lifetime_s = ipmib_be32(longestRouterLifetime); // it is configured
    record->learned_at_s = ipmib_be32(secondsSinceBoot());
    return 0;
}

std::uint32_t find(const GatewayKey *key, GatewayRecord *record)
{
    const Bytes address = bytesOf(key->address);
    const std::uint32_t ifIndex = ipmib_be32_get(key->if_index);
    return fill(at(routers, std::tie(address, ifIndex)), record) == 0 ? 0 : RC_NOT_FOUND;
}

} // namespace

// The services run.

uint32_t IP6_DaemonCheck(uint32_t)
{
    return 0;
}

uint32_t IP_DaemonCheck(uint32_t)
{
    return 0;
}

// Interfaces: both are of every type.

uint32_t IF_Select_Init(uint32_t, IfSelection *selection)
{
    *selection = IfSelection{};
    return 0;
}

uint32_t IF_SelectType_Set(uint32_t, IfSelection *)
{
    return 0;
}

uint32_t IF_SelectTypeSetGroup(uint32_t, IfSelection *)
{
    return 0;
}

uint32_t IF_SelectCondition_Set(uint32_t, IfSelection *)
{
    return 0;
}

uintptr_t IF_IteratorInitialize()
{
    return 1;
}

uint32_t IF_IteratorFinalize(uintptr_t *iterator)
{
    *iterator = 0;
    return 0;
}

uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *, uintptr_t, uint32_t if_index)
{
    const std::uint32_t *const next = std::upper_bound(std::begin(interfaces), std::end(interfaces), if_index);
    return next == std::end(interfaces) ? 0 : *next;
}

uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *selection, uintptr_t iterator)
{
    return IF_GetNextIfIndexByIfSelect(selection, iterator, 0);
}

uint32_t IF_IsValidIfIndex(uint32_t if_index)
{
    return exists(if_index) ? 1 : 0;
}

// Counters: no traffic yet. Records come cleared.

uint32_t IP6_GetMibStat(uint32_t, Ip6MibStat *)
{
    return 0;
}

uint32_t IP6_GetIfStat(uint32_t if_index, uint32_t, Ip6MibStat *)
{
    return exists(if_index) ? 0 : RC_NO_MORE;
}

uint32_t IP_GetMibIfStat(uint32_t if_index, IpMibIfStat *)
{
    return exists(if_index) ? 0 : RC_NO_MORE;
}

uint32_t ICMP6_GetMibStat(Icmp6MibStat *)
{
    return 0;
}

// IPv6 on an interface.

uint32_t ND_GetHopLimit()
{
    return hopLimit;
}

uint32_t ND_GetIfConfigInfo(uint32_t if_index, NdIfConfigInfo *info)
{
    info->retransmit_ms = 1000;
    info->reachable_ms = 30000;
    info->max_interval_s = 600;
    info->min_interval_s = 198;
    info->flags = ND_FLAG_NO_MTU_OPTION; // no advertisements
    return found(exists(if_index));
}

uint32_t IP6Mib_GetIFID(uint32_t if_index, uint8_t *identifier)
{
    const Address *const own = std::find_if(std::begin(linkLocals), std::end(linkLocals),
                                            [=](const Address &row) { return row.ifIndex == if_index; });
    if (own == std::end(linkLocals)) {
        return RC_NOT_FOUND;
    }
    std::copy_n(own->address.begin() + 8, 8, identifier);
    return 0;
}

uint32_t IP6_GetIfMTU(uint32_t if_index, uint32_t *bytes)
{
    *bytes = mtu;
    return found(exists(if_index));
}

// Link-local addresses: one for each interface.

uint32_t IP6Mib_GetLinkLocalFullAddr(uint32_t if_index, FullAddressRecord *record)
{
    const Address *const own = std::find_if(std::begin(linkLocals), std::end(linkLocals),
                                            [=](const Address &row) { return row.ifIndex == if_index; });
    return own == std::end(linkLocals) ? RC_NOT_FOUND : fill(own, record);
}

uint32_t IP6ADDR_DRVK_GetMainLLA(uint32_t if_index, FullAddressRecord *record)
{
    return IP6Mib_GetLinkLocalFullAddr(if_index, record);
}

uint32_t IP6Addr_GetLinkLocalAddr(uint32_t if_index, LinkLocalBuffer *)
{
    FullAddressRecord record{};
    return IP6Mib_GetLinkLocalFullAddr(if_index, &record);
}

// Addresses and prefixes.

uint32_t IP6Mib_GetAddrFullInfoInVrf(uint32_t, const uint8_t *wanted, int32_t, FullAddressRecord *record)
{
    const Bytes address = bytesOf(wanted);
    return fill(at(addresses, std::tie(address)), record) == 0 ? 0 : RC_NOT_FOUND;
}

uint32_t IP6Mib_GetNextAddrInVrf(uint32_t, uint32_t, FullAddressRecord *record)
{
    const Bytes address = bytesOf(record->address);
    return fill(after(addresses, std::tie(address)), record);
}

uint32_t IP6Mib_GetFirstAddrInVrf(uint32_t, uint32_t, FullAddressRecord *record)
{
    return fill(&addresses[0], record);
}

uint32_t IP6CFG_GetNextFullPrefix(uint32_t if_index, int32_t, FullPrefixRecord *record)
{
    const Bytes prefix = bytesOf(record->prefix);
    const std::uint32_t length = ipmib_be32_get(record->length);
    const Prefix *const next = after(prefixes, std::tie(if_index, prefix, length));
    return fill(next != nullptr && next->ifIndex == if_index ? next : nullptr, record);
}

uint32_t IP6CFG_GetFirstFullPrefix(uint32_t if_index, int32_t any, FullPrefixRecord *record)
{
    return IP6CFG_GetNextFullPrefix(if_index, any, record); // the record comes cleared
}

// Neighbours, of all interfaces in one table.

uint32_t ND_GetNetToPhysicalTable(uint32_t if_index, const uint8_t *wanted, NeighbourEntry *entry, uintptr_t)
{
    const Bytes address = bytesOf(wanted);
    return fill(at(neighbours, std::tie(if_index, address)), entry) == 0 ? 0 : RC_NOT_FOUND;
}

uint32_t ND_GetNextNetToPhysicalTable(uint32_t mode, NeighbourEntry *entry)
{
    const std::uint32_t ifIndex = ipmib_be32_get(entry->if_index);
    Bytes address = bytesOf(entry->address);
    for (;;) {
        const Neighbour *const next = after(neighbours, std::tie(ifIndex, address));
        if (next == nullptr || next->ifIndex != ifIndex) {
            return RC_NO_MORE;
        }
        if (isLinkLocal(next->address) == (mode == withinLinkLocal)) {
            return fill(next, entry);
        }
        address = next->address;
    }
}

// Default routers, of both classes in one table.

uint32_t IP6Mib_GetNextGatewayInVrf(uint32_t, uint32_t gateway_class, const GatewayKey *key, GatewayRecord *gateway)
{
    Bytes address = bytesOf(key->address);
    std::uint32_t ifIndex = ipmib_be32_get(key->if_index);
    for (;;) {
        const Router *const next = after(routers, std::tie(address, ifIndex));
        if (next == nullptr || isLinkLocal(next->address) == (gateway_class == withinLinkLocal)) {
            return fill(next, gateway);
        }
        address = next->address;
        ifIndex = next->ifIndex;
    }
}

uint32_t IP6Mib_GetFirstGatewayInVrf(uint32_t vrf, uint32_t gateway_class, GatewayRecord *gateway)
{
    const GatewayKey lowest{};
    return IP6Mib_GetNextGatewayInVrf(vrf, gateway_class, &lowest, gateway);
}

uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return find(key, gateway);
}

uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *gateway)
{
    return find(key, gateway);
}

// Time.

uint32_t TIME_GetSystemBootTime(uint32_t *seconds, uint32_t *other)
{
    *seconds = secondsSinceBoot();
    *other = 0;
    return 0;
}
