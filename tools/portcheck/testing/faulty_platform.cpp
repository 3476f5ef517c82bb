// SPDX-License-Identifier: BSD-3-Clause
// The simulated platform with one mistake in it, which the environment variable MISTAKE names:
//
//   RECORD.FIELD:bytes    the field is in the wrong byte order (words: its two words are)
//   RECORD.FIELD:one      it is one more than it should be
//   RECORD.FIELD:stale    it is that of the record that was given out before
//   RECORD.FIELD:empty    it is not filled
//   RECORD.FIELD:=NUMBER  it is this number
//   LIST:repeats          the second row follows itself
//   LIST:unsorted         the last two rows are in the wrong order, and "next" is the first that is greater
//   LIST:disordered       the same, and "next" is what stands behind the key
//   LIST:ends             the last row is never reached
//   LIST:endless          behind the last row comes the first
//   LIST:forgets          nothing follows a key that is no row's
//   LIST:lacks            the second row is not listed
//   LIST:first            the first row is the second
//   LIST:stays            the last row follows itself
//   LIST:inclusive        every row follows itself
//   LIST:cursor           what follows is what stands behind the row that was answered last, whatever is asked
//   LIST:mixed            it holds rows that belong to the link-local ones, or to the others
//   fails SERVICE         the service answers "not found"; of those with an interface, for interface 3
//   anything else         what it says, see below
//
// It lies in front of the simulated platform: it answers in its place, and asks it for what is right.
#include "wrong_fields.h"
#include "wrong_lists.h"

#include <ipmib/message.h>
#include <ipmib/platform.h>

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

using namespace ipmib::portcheck;

namespace
{

// The service of this name that the simulated platform has.
#define SIMULATED(name)                                                                                                \
    ([] {                                                                                                              \
        static auto *const found = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name));                         \
        return found;                                                                                                  \
    }())

// The right rows.

Rows<NeighbourEntry> neighbours(std::uint32_t ifIndex, std::uint32_t mode)
{
    Rows<NeighbourEntry> rows;
    NeighbourEntry entry{};
    entry.if_index = ipmib_be32(ifIndex);
    while (SIMULATED(ND_GetNextNetToPhysicalTable)(mode, &entry) == 0) {
        rows.push_back({Key::of(entry.address), entry});
    }
    return rows;
}

Rows<FullPrefixRecord> prefixes(std::uint32_t ifIndex)
{
    Rows<FullPrefixRecord> rows;
    FullPrefixRecord record{};
    for (std::uint32_t result = SIMULATED(IP6CFG_GetFirstFullPrefix)(ifIndex, -1, &record); result == 0;
         result = SIMULATED(IP6CFG_GetNextFullPrefix)(ifIndex, -1, &record)) {
        rows.push_back({Key::of(record.prefix, ipmib_be32_get(record.length)), record});
    }
    return rows;
}

Rows<FullAddressRecord> addresses()
{
    Rows<FullAddressRecord> rows;
    FullAddressRecord record{};
    for (std::uint32_t result = SIMULATED(IP6Mib_GetFirstAddrInVrf)(0, 14, &record); result == 0;
         result = SIMULATED(IP6Mib_GetNextAddrInVrf)(0, 14, &record)) {
        rows.push_back({Key::of(record.address), record});
    }
    return rows;
}

Rows<GatewayRecord> routers(std::uint32_t gatewayClass)
{
    Rows<GatewayRecord> rows;
    GatewayRecord record{};
    GatewayKey key{};
    for (std::uint32_t result = SIMULATED(IP6Mib_GetFirstGatewayInVrf)(0, gatewayClass, &record); result == 0;
         result = SIMULATED(IP6Mib_GetNextGatewayInVrf)(0, gatewayClass, &key, &record)) {
        rows.push_back({Key::of(record.address, ipmib_be32_get(record.if_index)), record});
        key.if_index = record.if_index;
        std::memcpy(key.address, record.address, sizeof key.address);
    }
    return rows;
}

Rows<std::uint32_t> interfaces(IfSelection *selection, std::uintptr_t iterator)
{
    Rows<std::uint32_t> rows;
    for (std::uint32_t ifIndex = SIMULATED(IF_GetFirstIfIndexByIfSelect)(selection, iterator); ifIndex != 0;
         ifIndex = SIMULATED(IF_GetNextIfIndexByIfSelect)(selection, iterator, ifIndex)) {
        Key key;
        key.number = ifIndex;
        rows.push_back({key, ifIndex});
    }
    return rows;
}

} // namespace

extern "C" {
#pragma GCC visibility push(default)

std::uint32_t IP6_DaemonCheck(std::uint32_t one)
{
    return has("service-down") ? 1 : SIMULATED(IP6_DaemonCheck)(one);
}

// --- Interfaces

namespace
{
unsigned selections = 0;
IfSelection latestSelection;
} // namespace

std::uint32_t IF_Select_Init(std::uint32_t kind, IfSelection *selection)
{
    ++selections;
    if (has("writes-too-far")) {
        volatile std::uint8_t *const bytes = selection->bytes;
        bytes[sizeof *selection + 8] = 1;
    }
    return has("selection-not-reset") ? 0 : SIMULATED(IF_Select_Init)(kind, selection);
}

std::uint32_t IF_SelectTypeSetGroup(std::uint32_t group, IfSelection *selection)
{
    return has("selects-no-group") ? 0 : SIMULATED(IF_SelectTypeSetGroup)(group, selection);
}

std::uint32_t IF_SelectCondition_Set(std::uint32_t condition, IfSelection *selection)
{
    const std::uint32_t result = SIMULATED(IF_SelectCondition_Set)(condition, selection);
    latestSelection = *selection;
    return result;
}

std::uintptr_t IF_IteratorInitialize()
{
    return has("no-iterator") ? 0 : SIMULATED(IF_IteratorInitialize)();
}

std::uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *selection, std::uintptr_t iterator, std::uint32_t ifIndex)
{
    std::uint32_t next = 0;
    if (has("one-selection")) {
        selection = &latestSelection;
    }
    if (const std::string kind = mistakeIn("interfaces"); !kind.empty()) {
        Rows<std::uint32_t> rows = interfaces(selection, iterator);
        Key key;
        key.number = ifIndex;
        answer(nextIn(rows, key, Key(), kind), &next);
    } else if (!(has("fickle-selection") && selections % 2 == 0 && ifIndex >= 3)) {
        next = SIMULATED(IF_GetNextIfIndexByIfSelect)(selection, iterator, ifIndex);
    }
    return spoiled("ifIndex", &next, next == 0), next;
}

std::uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *selection, std::uintptr_t iterator)
{
    if (has("interfaces:first")) {
        return interfaces(selection, iterator)[1].record;
    }
    return IF_GetNextIfIndexByIfSelect(selection, iterator, 0);
}

std::uint32_t IF_IsValidIfIndex(std::uint32_t ifIndex)
{
    if (has("denies-interface") && ifIndex == 7) {
        return 0;
    }
    if (has("zero-is-success")) {
        return SIMULATED(IF_IsValidIfIndex)(ifIndex) == 1 ? 0 : 1;
    }
    return has("knows-every-interface") ? 1 : SIMULATED(IF_IsValidIfIndex)(ifIndex);
}

// --- Counters

std::uint32_t IP6_GetMibStat(std::uint32_t what, Ip6MibStat *stat)
{
    return fails("IP6_GetMibStat") ? RC_NOT_FOUND : SPOILED(Ip6MibStat, stat, SIMULATED(IP6_GetMibStat)(what, stat));
}

std::uint32_t IP6_GetIfStat(std::uint32_t ifIndex, std::uint32_t family, Ip6MibStat *stat)
{
    static std::uint64_t falling = 1000000;
    if (ifIndex == 0 && has("counters-of-none")) {
        return 0;
    }
    if (fails("IP6_GetIfStat") && ifIndex == 3) {
        return RC_NOT_FOUND;
    }
    if (has("counters-of-the-system") && SIMULATED(IF_IsValidIfIndex)(ifIndex) == 1) {
        return SIMULATED(IP6_GetMibStat)(0x8000, stat);
    }
    const std::uint32_t result = SIMULATED(IP6_GetIfStat)(ifIndex, family, stat);
    if (has("counters-in-each-others-place")) {
        std::swap(stat->in_octets, stat->in_receives);
    }
    if (has("swapped-words")) {
        stat->in_octets = std::uint64_t{27270000} << 32;
    }
    if (has("backward-counters")) {
        stat->in_octets = falling--;
    }
    return SPOILED(Ip6MibStat, stat, result);
}

std::uint32_t IP_GetMibIfStat(std::uint32_t ifIndex, IpMibIfStat *stat)
{
    if (ifIndex == 0 && has("ipv4-counters-of-none")) {
        return 0;
    }
    if (fails("IP_GetMibIfStat") && ifIndex == 3) {
        return RC_NOT_FOUND;
    }
    return SPOILED(IpMibIfStat, stat, SIMULATED(IP_GetMibIfStat)(ifIndex, stat));
}

std::uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat)
{
    while (has("hangs")) {
        pause();
    }
    return SPOILED(Icmp6MibStat, stat, SIMULATED(ICMP6_GetMibStat)(stat));
}

// --- IPv6 on an interface

std::uint32_t ND_GetHopLimit()
{
    std::uint32_t limit = SIMULATED(ND_GetHopLimit)();
    return spoiled("hopLimit", &limit, 0), limit;
}

std::uint32_t ND_GetIfConfigInfo(std::uint32_t ifIndex, NdIfConfigInfo *info)
{
    if (fails("ND_GetIfConfigInfo") && ifIndex == 3) {
        return RC_NOT_FOUND;
    }
    return SPOILED(NdIfConfigInfo, info, SIMULATED(ND_GetIfConfigInfo)(ifIndex, info));
}

std::uint32_t IP6Mib_GetIFID(std::uint32_t ifIndex, std::uint8_t *identifier)
{
    if (has("crashes")) {
        std::abort();
    }
    const std::uint32_t result = SIMULATED(IP6Mib_GetIFID)(ifIndex, identifier);
    if (result == 0) {
        spoil("identifier", identifier, 8);
        if (has("identifier-of-16-bytes")) {
            std::memset(identifier, 0, 16);
        }
        if (has("identifier-of-the-mac")) {
            identifier[0] ^= 2;
        }
        if (has("identifier-from-the-front")) {
            std::memcpy(identifier, "\xFE\x80\0\0\0\0\0", 8);
        }
    }
    return result;
}

std::uint32_t IP6_GetIfMTU(std::uint32_t ifIndex, std::uint32_t *mtu)
{
    const std::uint32_t result = SIMULATED(IP6_GetIfMTU)(ifIndex, mtu);
    if (result != 0 && has("mtu-of-none")) {
        *mtu = 1500;
        return 0;
    }
    if (result == 0 && has("mtu-of-64-bits")) {
        const std::uint64_t wide = *mtu;
        std::memcpy(mtu, &wide, sizeof wide);
    }
    return spoiled("mtu", mtu, result);
}

// --- Neighbours

std::uint32_t ND_GetNetToPhysicalTable(std::uint32_t ifIndex, const std::uint8_t *address, NeighbourEntry *entry,
                                       std::uintptr_t length)
{
    if (has("neighbour-lookup-by-length") && length != 16) {
        return RC_NOT_FOUND;
    }
    const std::uint32_t result = SIMULATED(ND_GetNetToPhysicalTable)(ifIndex, address, entry, length);
    if (result != 0 && has("invents-neighbours")) {
        return 0;
    }
    if (result != 0 && has("neighbours-of-any-interface")) {
        return SIMULATED(ND_GetNetToPhysicalTable)(2, address, entry, length);
    }
    return SPOILED(NeighbourEntry, entry, result);
}

std::uint32_t ND_GetNextNetToPhysicalTable(std::uint32_t mode, NeighbourEntry *entry)
{
    if (has("modes-exchanged")) {
        mode = 3 - mode;
    }
    const std::string kind = mistakeIn("neighbours");
    if (kind.empty()) {
        const NeighbourEntry before = *entry;
        const std::uint32_t result = SIMULATED(ND_GetNextNetToPhysicalTable)(mode, entry);
        if (result == 0 && has("link-layer-not-filled")) {
            std::memcpy(entry->link_layer, before.link_layer, sizeof entry->link_layer);
        }
        if (result == 0 && mode == 2 && has("scope-in-neighbours")) {
            entry->address[3] = static_cast<std::uint8_t>(ipmib_be32_get(entry->if_index));
        }
        return SPOILED(NeighbourEntry, entry, result);
    }
    constexpr std::uint8_t linkLocal[16] = {0xFE, 0x80};
    const std::uint32_t ifIndex = ipmib_be32_get(entry->if_index);
    Rows<NeighbourEntry> rows = neighbours(ifIndex, mode);
    if (kind == "mixed") {
        rows = mixed(neighbours(ifIndex, 1), neighbours(ifIndex, 2));
    }
    const Key start = mode == 2 ? Key::of(linkLocal) : Key();
    return answer(nextIn(rows, Key::of(entry->address), start, kind), entry);
}

// --- Prefixes and addresses

std::uint32_t IP6CFG_GetNextFullPrefix(std::uint32_t ifIndex, std::int32_t any, FullPrefixRecord *record)
{
    const std::string kind = mistakeIn("prefixes");
    const FullPrefixRecord before = *record;
    std::uint32_t result;
    if (has("prefixes-of-all-interfaces")) {
        Rows<FullPrefixRecord> rows = mixed(mixed(prefixes(2), prefixes(3)), prefixes(7));
        result = answer(nextIn(rows, Key::of(record->prefix, ipmib_be32_get(record->length)), Key(), ""), record);
    } else if (kind.empty()) {
        result = SIMULATED(IP6CFG_GetNextFullPrefix)(ifIndex, any, record);
    } else {
        Rows<FullPrefixRecord> rows = prefixes(ifIndex);
        if (kind == "mixed" && !rows.empty()) {
            rows.push_back(rows.back());
            std::memcpy(rows.back().record.prefix, "\xFE\x80\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 16);
            rows.back().key = Key::of(rows.back().record.prefix, ipmib_be32_get(rows.back().record.length));
        }
        result = answer(nextIn(rows, Key::of(record->prefix, ipmib_be32_get(record->length)), Key(), kind), record);
    }
    if (result == 0 && has("lifetimes-not-filled")) {
        record->valid_s = before.valid_s;
        record->preferred_s = before.preferred_s;
    }
    if (result == 0 && has("unmasked-prefix")) {
        record->prefix[15] |= 1;
    }
    return SPOILED(FullPrefixRecord, record, result);
}

std::uint32_t IP6CFG_GetFirstFullPrefix(std::uint32_t ifIndex, std::int32_t any, FullPrefixRecord *record)
{
    if (Rows<FullPrefixRecord> rows = prefixes(ifIndex); has("prefixes:first") && rows.size() > 1) {
        return answer(&rows[1], record);
    }
    *record = {};
    return IP6CFG_GetNextFullPrefix(ifIndex, any, record);
}

std::uint32_t IP6Addr_GetLinkLocalAddr(std::uint32_t ifIndex, LinkLocalBuffer *buffer)
{
    return fails("IP6Addr_GetLinkLocalAddr") ? RC_NOT_FOUND : SIMULATED(IP6Addr_GetLinkLocalAddr)(ifIndex, buffer);
}

std::uint32_t IP6Mib_GetNextAddrInVrf(std::uint32_t vrf, std::uint32_t kindOfAddress, FullAddressRecord *record)
{
    const std::string kind = mistakeIn("addresses");
    if (kind.empty()) {
        const std::uint32_t stateBefore = record->state;
        const std::uint32_t result = SIMULATED(IP6Mib_GetNextAddrInVrf)(vrf, kindOfAddress, record);
        record->state = has("state-not-filled") ? stateBefore : record->state;
        return SPOILED(FullAddressRecord, record, result);
    }
    Rows<FullAddressRecord> rows = addresses();
    FullAddressRecord linkLocal{};
    if (kind == "mixed" && SIMULATED(IP6Mib_GetLinkLocalFullAddr)(2, &linkLocal) == 0) {
        rows.push_back({Key::of(linkLocal.address), linkLocal});
        sort(rows);
    }
    return answer(nextIn(rows, Key::of(record->address), Key(), kind), record);
}

std::uint32_t IP6Mib_GetFirstAddrInVrf(std::uint32_t vrf, std::uint32_t kind, FullAddressRecord *record)
{
    if (has("addresses:first")) {
        return answer(&addresses()[1], record);
    }
    *record = {};
    return IP6Mib_GetNextAddrInVrf(vrf, kind, record);
}

std::uint32_t IP6Mib_GetAddrFullInfoInVrf(std::uint32_t vrf, const std::uint8_t *address, std::int32_t any,
                                          FullAddressRecord *record)
{
    if (fails("IP6Mib_GetAddrFullInfoInVrf")) {
        return RC_NOT_FOUND;
    }
    if (has("nearest-address")) {
        std::memcpy(record->address, address, sizeof record->address);
        record->address[15] = static_cast<std::uint8_t>(record->address[15] - 1);
        return SIMULATED(IP6Mib_GetNextAddrInVrf)(0, 14, record) == 0
                   ? 0
                   : SIMULATED(IP6Mib_GetFirstAddrInVrf)(0, 14, record);
    }
    const std::uint32_t result = SIMULATED(IP6Mib_GetAddrFullInfoInVrf)(vrf, address, any, record);
    if (has("lookup-on-one-interface")) {
        record->if_index = 2;
    }
    return SPOILED(FullAddressRecord, record, result);
}

std::uint32_t IP6ADDR_DRVK_GetMainLLA(std::uint32_t ifIndex, FullAddressRecord *record)
{
    return fails("IP6ADDR_DRVK_GetMainLLA") ? RC_NOT_FOUND : SIMULATED(IP6ADDR_DRVK_GetMainLLA)(ifIndex, record);
}

std::uint32_t IP6Mib_GetLinkLocalFullAddr(std::uint32_t ifIndex, FullAddressRecord *record)
{
    if (fails("IP6Mib_GetLinkLocalFullAddr")) {
        return RC_NOT_FOUND;
    }
    const std::uint32_t result = SIMULATED(IP6Mib_GetLinkLocalFullAddr)(ifIndex, record);
    if (result == 0 && has("addresses-in-machine-words")) {
        for (std::uint8_t *word = record->address; word != record->address + 16; word += 4) {
            std::reverse(word, word + 4);
        }
    }
    record->address[3] = has("scope-in-link-local") ? static_cast<std::uint8_t>(ifIndex) : record->address[3];
    record->state = has("tentative-in-use") ? 64 : record->state;
    record->prefix_length = has("link-local-length") ? 64 : record->prefix_length;
    record->address[0] = has("global-as-link-local") ? 0x20 : record->address[0];
    record->if_index = has("link-local-of-another") ? 3 : record->if_index;
    return result;
}

// --- Default routers

namespace
{
std::uint32_t emptied(GatewayRecord *record, std::uint32_t result)
{
    if (has("routers-not-filled")) {
        record->flags = record->lifetime_s = record->learned_at_s = {};
    }
    return result;
}
} // namespace

std::uint32_t IP6Mib_GetNextGatewayInVrf(std::uint32_t vrf, std::uint32_t gatewayClass, const GatewayKey *key,
                                         GatewayRecord *record)
{
    const std::string kind = mistakeIn("routers");
    if (kind.empty()) {
        return emptied(record, SPOILED(GatewayRecord, record,
                                       SIMULATED(IP6Mib_GetNextGatewayInVrf)(vrf, gatewayClass, key, record)));
    }
    Rows<GatewayRecord> rows = kind == "mixed" ? mixed(routers(2), routers(14)) : routers(gatewayClass);
    return answer(nextIn(rows, Key::of(key->address, ipmib_be32_get(key->if_index)), Key(), kind), record);
}

std::uint32_t IP6Mib_GetFirstGatewayInVrf(std::uint32_t vrf, std::uint32_t gatewayClass, GatewayRecord *record)
{
    if (has("routers:first")) {
        return answer(&routers(gatewayClass)[1], record);
    }
    const GatewayKey zero{};
    return IP6Mib_GetNextGatewayInVrf(vrf, gatewayClass, &zero, record);
}

std::uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *key, GatewayRecord *record)
{
    if (has("routers-of-any-interface")) {
        const Rows<GatewayRecord> rows = mixed(routers(2), routers(14));
        const auto row = std::find_if(rows.begin(), rows.end(), [key](const auto &one) {
            return std::memcmp(one.record.address, key->address, sizeof key->address) == 0;
        });
        return answer(row == rows.end() ? nullptr : &*row, record);
    }
    return fails("IP6Mib_GetGatewayByKey")
               ? RC_NOT_FOUND
               : emptied(record, SPOILED(GatewayRecord, record, SIMULATED(IP6Mib_GetGatewayByKey)(key, record)));
}

std::uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *key, GatewayRecord *record)
{
    if (fails("IP6ADDR_DRVK_GetGatewayByKey")) {
        return RC_NOT_FOUND;
    }
    const std::uint32_t result = SPOILED(GatewayRecord, record, SIMULATED(IP6ADDR_DRVK_GetGatewayByKey)(key, record));
    if (has("another-lifetime")) {
        record->lifetime_s = ipmib_be32(1);
    }
    return emptied(record, result);
}

// --- Time

std::uint32_t TIME_GetSystemBootTime(std::uint32_t *seconds, std::uint32_t *other)
{
    static std::uint32_t loaded = 0;
    const std::uint32_t result = SIMULATED(TIME_GetSystemBootTime)(seconds, other);
    if (has("clock-in-milliseconds")) {
        loaded = loaded == 0 ? *seconds : loaded;
        *seconds = loaded + (*seconds - loaded) * 1000;
    }
    if (has("clock-runs-backwards")) {
        static std::uint32_t lost = 0;
        *seconds -= lost++;
    }
    if (has("seconds-since-1970")) {
        *seconds += 1790000000;
    }
    if (has("no-clock")) {
        *seconds = 0;
    }
    return result;
}

#pragma GCC visibility pop
} // extern "C"

namespace
{

struct AtLoad {
    AtLoad()
    {
        if (has("crash-at-start")) {
            std::abort();
        }
    }
} const atLoad;

} // namespace
