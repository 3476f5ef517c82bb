// SPDX-License-Identifier: BSD-3-Clause
// ipAddressTable: the system's IPv6 addresses; the global ones, then the link-local ones of each interface.
#include "addr/address.h"
#include "addr/prefix_pointer.h"
#include "frame/described_table.h"
#include "frame/tables.h"
#include "stats/interface_walk.h"

#include <cstddef>

namespace ipmib
{

namespace
{

struct AddressRow {
    std::uint32_t address_type;
    std::uint8_t address[addressSize];
    IpmibBe32 zone;
    std::uint32_t address_length;
    std::uint32_t if_index;
    std::uint32_t kind;
    PrefixPointer prefix;
    std::uint32_t origin;
    std::uint32_t status;
    std::uint32_t created;      // hundredths of a second since boot
    std::uint32_t last_changed; // hundredths of a second since boot
    std::uint32_t row_status;
    std::uint32_t storage_type;
};

constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(AddressRow, address_type)),                             // ipAddressAddrType
    octetsOf(offsetof(AddressRow, address), offsetof(AddressRow, address_length)),      // ipAddressAddr
    number(VT_INTEGER, offsetof(AddressRow, if_index)),                                 // ipAddressIfIndex
    number(VT_INTEGER, offsetof(AddressRow, kind)),                                     // ipAddressType
    identifierOf(offsetof(AddressRow, prefix.ids), offsetof(AddressRow, prefix.count)), // ipAddressPrefix
    number(VT_INTEGER, offsetof(AddressRow, origin)),                                   // ipAddressOrigin
    number(VT_INTEGER, offsetof(AddressRow, status)),                                   // ipAddressStatus
    number(VT_TIMETICKS, offsetof(AddressRow, created)),                                // ipAddressCreated
    number(VT_TIMETICKS, offsetof(AddressRow, last_changed)),                           // ipAddressLastChanged
    number(VT_INTEGER, offsetof(AddressRow, row_status)),                               // ipAddressRowStatus
    number(VT_INTEGER, offsetof(AddressRow, storage_type)),                             // ipAddressStorageType
};
constexpr Table ipAddress = describedTable<tableIpAddress, columns>;

constexpr std::uint32_t defaultVrf = 0;
constexpr std::uint32_t globalKind = 14;
constexpr std::uint32_t ticksPerSecond = 100;

std::uint32_t ip_Address_MapOrigin(std::uint32_t code)
{
    switch (code) {
    case 4:
    case 8:
        return 2; // manual
    case 16:
        return 4; // dhcp
    case 64:
        return 5; // linklayer
    case 128:
        return 6; // random
    default:
        return 1; // other
    }
}

std::uint32_t mapStatus(std::uint32_t code)
{
    switch (code) {
    case 4:
        return 2; // deprecated
    case 64:
        return 6; // tentative
    case 128:
        return 7; // duplicate
    default:
        return 1; // preferred
    }
}

void ip_Address_FromFullAddr(const FullAddressRecord &record, AddressRow *row)
{
    constexpr std::uint32_t anycastFlag = 0x1;
    constexpr std::uint32_t unicast = 1;
    constexpr std::uint32_t anycast = 2;
    constexpr std::uint32_t active = 1;
    constexpr std::uint32_t volatileStorage = 2;

    row->if_index = record.if_index;
    setAddress(row, record.address, record.if_index);
    row->kind = (record.flags & anycastFlag) != 0 ? anycast : unicast;
    row->origin = ip_Address_MapOrigin(record.origin);
    row->status = mapStatus(record.state);
    row->created = record.created_s * ticksPerSecond;
    row->last_changed = record.last_changed_s * ticksPerSecond;
    row->row_status = active;
    row->storage_type = volatileStorage;
    ip_Address_PrefixPointer(record, &row->prefix);
}

// Only records whose leading field is 0 count.
bool readLinkLocal(std::uint32_t ifIndex, FullAddressRecord *record)
{
    *record = {};
    return IP6Mib_GetLinkLocalFullAddr(ifIndex, record) == 0 && record->lead == 0;
}

// The smallest link-local address above the key. Zones take no part: of equal addresses the first interface's is found,
// and never one that equals the key. Returns 0 or RC_NO_MORE.
std::uint32_t ip_Address_NextLinkLocal(const std::uint8_t *key, FullAddressRecord *best)
{
    *best = {};
    InterfaceWalk walk;
    for (std::uint32_t ifIndex = walk.next(0); ifIndex != 0; ifIndex = walk.next(ifIndex)) {
        FullAddressRecord record;
        if (readLinkLocal(ifIndex, &record) && compareAddresses(record.address, key) > 0 &&
            (isZero(best->address) || compareAddresses(record.address, best->address) < 0)) {
            *best = record;
        }
    }
    return isZero(best->address) ? RC_NO_MORE : 0;
}

// The link-local address equal to the key on the first interface behind the key's zone.
bool findInLaterZone(const AddressKey &key, FullAddressRecord *record)
{
    InterfaceWalk walk;
    for (std::uint32_t ifIndex = walk.next(0); ifIndex != 0; ifIndex = walk.next(ifIndex)) {
        if (readLinkLocal(ifIndex, record) && sameAddress(record->address, key.bytes) &&
            key.zone() < record->if_index) {
            return true;
        }
    }
    return false;
}

// A request's index.
struct AddressIndex : CountedIndex {
    std::uint32_t type = 0;
    AddressKey key;

    static constexpr std::uint32_t allParts = 2;

    explicit AddressIndex(MorRequest *request)
    {
        type = count(readIndexPart(request, ipAddress.parameterId(0)));
        if (MorPara *const address = MOR_GetParaFromMsgByMOR(request, 0, ipAddress.parameterId(1))) {
            if (key.replaceMisfit(type, MOR_GetParaLen(address)) == AddressKey::Fit::exact) {
                key.copyFrom(address);
            }
            ++parts;
        }
    }
};

// The link-local address equal to the key on the interface that its zone names. A last interface that answers with a
// record that does not count leaves success behind without one: the request is then answered from an empty row.
std::uint32_t findLinkLocal(const AddressKey &key, FullAddressRecord *record, bool *ret_found)
{
    *ret_found = false;
    std::uint32_t result = RC_NOT_FOUND;
    InterfaceWalk walk;
    for (std::uint32_t ifIndex = walk.next(0); ifIndex != 0; ifIndex = walk.next(ifIndex)) {
        *record = {};
        result = IP6Mib_GetLinkLocalFullAddr(ifIndex, record);
        if (result != 0 || record->lead != 0) {
            continue;
        }
        if (sameAddress(record->address, key.bytes) && record->if_index == key.zone()) {
            *ret_found = true;
            return 0;
        }
        result = RC_NOT_FOUND;
    }
    return result;
}

std::uint32_t getLinkLocal(const AddressKey &key, AddressRow *row)
{
    FullAddressRecord record;
    bool found;
    const std::uint32_t result = findLinkLocal(key, &record, &found);
    if (found) {
        ip_Address_FromFullAddr(record, row);
    }
    return result;
}

std::uint32_t getByIndex(const AddressIndex &index, AddressRow *row)
{
    if (index.parts != AddressIndex::allParts) {
        return RC_NOT_FOUND;
    }
    if (index.type == typeIpv6z) {
        return getLinkLocal(index.key, row);
    }
    FullAddressRecord record{};
    constexpr std::int32_t anyInterface = -1;
    if (index.type != typeIpv6 ||
        IP6Mib_GetAddrFullInfoInVrf(defaultVrf, index.key.bytes, anyInterface, &record) != 0) {
        return RC_NOT_FOUND;
    }
    ip_Address_FromFullAddr(record, row);
    return 0;
}

// The smallest first address. The platform is asked once for each interface, though the question does not name one.
std::uint32_t getFirst(FullAddressRecord *best)
{
    *best = {};
    {
        InterfaceWalk walk;
        for (std::uint32_t ifIndex = walk.next(0); ifIndex != 0; ifIndex = walk.next(ifIndex)) {
            FullAddressRecord record{};
            if (IP6Mib_GetFirstAddrInVrf(defaultVrf, globalKind, &record) == 0 && record.lead == 0 &&
                (isZero(best->address) || compareAddresses(record.address, best->address) < 0)) {
                *best = record;
            }
        }
    }
    return isZero(best->address) ? ip_Address_NextLinkLocal(zeroAddress, best) : 0;
}

std::uint32_t getNextGlobal(const AddressKey &key, FullAddressRecord *record)
{
    *record = {};
    std::memcpy(record->address, key.bytes, addressSize);
    while (IP6Mib_GetNextAddrInVrf(defaultVrf, globalKind, record) == 0) {
        if (!sameAddress(record->address, key.bytes)) {
            return 0;
        }
    }
    return ip_Address_NextLinkLocal(zeroAddress, record);
}

std::uint32_t findNext(const AddressIndex &index, FullAddressRecord *record)
{
    switch (index.type) {
    case 0:
    case typeIpv4:
        *record = {};
        return IP6Mib_GetFirstAddrInVrf(defaultVrf, globalKind, record) == 0
                   ? 0
                   : ip_Address_NextLinkLocal(zeroAddress, record);
    case typeIpv6:
        return getNextGlobal(index.key, record);
    case typeIpv4z:
        return ip_Address_NextLinkLocal(zeroAddress, record);
    case typeIpv6z:
        return findInLaterZone(index.key, record) ? 0 : ip_Address_NextLinkLocal(index.key.bytes, record);
    default:
        return RC_NOT_FOUND;
    }
}

// Behind the last row the walk fails rather than ends, and an all-zero address is no row.
std::uint32_t getNext(const AddressIndex &index, FullAddressRecord *record)
{
    return findNext(index, record) == 0 && !isZero(record->address) ? 0 : RC_NOT_FOUND;
}

} // namespace

std::uint32_t ip_Address_Proc(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const AddressIndex index(request);
    AddressRow row{};
    std::uint32_t result;
    if (operation == OP_GET) {
        result = getByIndex(index, &row);
    } else {
        FullAddressRecord record;
        result = index.parts == 0 ? getFirst(&record) : getNext(index, &record);
        if (result == 0) {
            ip_Address_FromFullAddr(record, &row);
        }
    }
    return answer(ipAddress, operation, result, &row, request, reply);
}

} // namespace ipmib
