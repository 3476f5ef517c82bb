// SPDX-License-Identifier: BSD-3-Clause
// ipAddressPrefixTable: each interface's prefixes, then the one link-local prefix of an interface with such an address.
#include "addr/ip_address_prefix.h"
#include "frame/described_table.h"
#include "frame/tables.h"
#include "stats/interface_walk.h"

#include <cstddef>

namespace ipmib
{

namespace
{

constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(AddressPrefixRow, if_index)),                                  // ipAddressPrefixIfIndex
    number(VT_INTEGER, offsetof(AddressPrefixRow, address_type)),                              // ipAddressPrefixType
    octetsOf(offsetof(AddressPrefixRow, address), offsetof(AddressPrefixRow, address_length)), // ipAddressPrefixPrefix
    number(VT_UNSIGNED32, offsetof(AddressPrefixRow, prefix_length)),                          // ipAddressPrefixLength
    number(VT_INTEGER, offsetof(AddressPrefixRow, origin)),                                    // ipAddressPrefixOrigin
    number(VT_INTEGER, offsetof(AddressPrefixRow, on_link)),               // ipAddressPrefixOnLinkFlag
    number(VT_INTEGER, offsetof(AddressPrefixRow, autonomous)),            // ipAddressPrefixAutonomousFlag
    number(VT_UNSIGNED32, offsetof(AddressPrefixRow, preferred_lifetime)), // ipAddressPrefixAdvPreferredLifetime
    number(VT_UNSIGNED32, offsetof(AddressPrefixRow, valid_lifetime)),     // ipAddressPrefixAdvValidLifetime
};
constexpr Table ipAddressPrefix = describedTable<tableIpAddressPrefix, columns>;

constexpr std::uint32_t truth(bool value)
{
    return value ? 1 : 2;
}

// Origins as the platform codes them, and as the table reports them.
constexpr std::uint32_t learnedByDhcp = 8;
constexpr std::uint32_t learnedFromRouter = 16;
constexpr std::uint32_t originWellKnown = 3;

constexpr std::uint32_t mapOrigin(std::uint32_t code)
{
    switch (code) {
    case 1:
    case 2:
        return 2; // manual
    case 4:
        return originWellKnown;
    case learnedByDhcp:
        return 4; // dhcp
    case learnedFromRouter:
        return 5; // routeradv
    default:
        return 1; // other
    }
}

constexpr std::uint32_t remaining(std::uint32_t lifetime, std::uint32_t elapsed)
{
    return elapsed < lifetime ? lifetime - elapsed : 0;
}

constexpr std::int32_t anyPrefix = -1;

bool samePrefix(const FullPrefixRecord &record, const std::uint8_t *prefix, std::uint32_t length)
{
    return ipmib_be32_get(record.length) == length && sameAddress(record.prefix, prefix);
}

void ip_AddressPrefix_FromFullPrefix(const FullPrefixRecord &record, AddressPrefixRow *row)
{
    constexpr std::uint8_t onLink = 0x80;
    constexpr std::uint8_t autonomous = 0x40;

    row->if_index = ipmib_be32_get(record.if_index);
    setAddress(row, record.prefix, row->if_index);
    row->address_length = addressSize; // a listed prefix goes without its zone even when it is link-local
    row->prefix_length = ipmib_be32_get(record.length);
    const std::uint32_t code = ipmib_be32_get(record.origin);
    row->origin = mapOrigin(code);
    row->on_link = truth((record.flags & onLink) != 0);
    row->autonomous = truth((record.flags & autonomous) != 0);
    row->preferred_lifetime = ipmib_be32_get(record.preferred_s);
    row->valid_lifetime = ipmib_be32_get(record.valid_s);
    if (code == learnedByDhcp || code == learnedFromRouter) { // these run down, even when they began as infinite
        std::uint32_t now = 0;
        std::uint32_t unused = 0;
        TIME_GetSystemBootTime(&now, &unused);
        const std::uint32_t elapsed = now - ipmib_be32_get(record.learned_at_s);
        row->preferred_lifetime = remaining(row->preferred_lifetime, elapsed);
        row->valid_lifetime = remaining(row->valid_lifetime, elapsed);
    }
}

bool hasLinkLocalAddress(std::uint32_t ifIndex)
{
    LinkLocalBuffer unused{};
    return IP6Addr_GetLinkLocalAddr(ifIndex, &unused) == 0;
}

void ip_AddressPrefix_LinkLocalRow(std::uint32_t ifIndex, AddressPrefixRow *row)
{
    constexpr std::uint32_t forEver = 0xFFFFFFFF;

    row->if_index = ifIndex;
    setAddress(row, linkLocalPrefix, ifIndex);
    row->prefix_length = linkLocalPrefixLength;
    row->origin = originWellKnown;
    row->on_link = truth(true);
    row->autonomous = truth(true);
    row->preferred_lifetime = forEver;
    row->valid_lifetime = forEver;
}

// The row that every interface with a link-local address has, whatever the platform lists.
std::uint32_t linkLocalRowOf(std::uint32_t ifIndex, AddressPrefixRow *row)
{
    if (!hasLinkLocalAddress(ifIndex)) {
        return RC_NOT_FOUND;
    }
    ip_AddressPrefix_LinkLocalRow(ifIndex, row);
    return 0;
}

std::uint32_t firstRowOf(std::uint32_t ifIndex, AddressPrefixRow *row)
{
    FullPrefixRecord record{};
    if (IP6CFG_GetFirstFullPrefix(ifIndex, anyPrefix, &record) == 0) {
        ip_AddressPrefix_FromFullPrefix(record, row);
        return 0;
    }
    return linkLocalRowOf(ifIndex, row);
}

std::uint32_t firstRowAfter(std::uint32_t ifIndex, InterfaceWalk &walk, AddressPrefixRow *row)
{
    while ((ifIndex = walk.next(ifIndex)) != 0) {
        if (firstRowOf(ifIndex, row) == 0) {
            return 0;
        }
    }
    return RC_NOT_FOUND;
}

// The interface's prefix after the key, else its link-local row.
std::uint32_t rowAfterPrefix(std::uint32_t ifIndex, const std::uint8_t *key, std::uint32_t prefixLength,
                             AddressPrefixRow *row)
{
    FullPrefixRecord cursor{};
    cursor.if_index = ipmib_be32(ifIndex);
    std::memcpy(cursor.prefix, key, addressSize);
    cursor.length = ipmib_be32(prefixLength);
    while (IP6CFG_GetNextFullPrefix(ifIndex, anyPrefix, &cursor) == 0) {
        if (!samePrefix(cursor, key, prefixLength)) {
            ip_AddressPrefix_FromFullPrefix(cursor, row);
            return 0;
        }
    }
    return linkLocalRowOf(ifIndex, row);
}

// Whether (key, zone, length) comes before the interface's link-local row.
bool isBeforeLinkLocalRow(std::uint32_t ifIndex, const std::uint8_t *key, std::uint32_t prefixLength)
{
    if (const int order = compareAddresses(key, linkLocalPrefix)) {
        return order < 0;
    }
    const std::uint32_t zone = ipmib_be32_read(key + addressSize);
    return zone != ifIndex ? zone < ifIndex : prefixLength < linkLocalPrefixLength;
}

// A request's index; complete when all four parts were counted.
struct PrefixIndex : CountedIndex {
    std::uint32_t if_index = 0;
    std::uint32_t type = 0;
    AddressKey key;
    std::uint32_t octet_length = 0;
    std::uint32_t prefix_length = 0;

    static constexpr std::uint32_t allParts = 4;

    explicit PrefixIndex(MorRequest *request)
    {
        if_index = count(readIndexPartUnlessEmpty(request, ipAddressPrefix.parameterId(0)));
        type = count(readIndexPartUnlessEmpty(request, ipAddressPrefix.parameterId(1)));
        MorPara *const prefix = MOR_GetParaFromMsgByMOR(request, 0, ipAddressPrefix.parameterId(2));
        octet_length = prefix == nullptr ? 0 : MOR_GetParaLen(prefix);
        if (octet_length == 0) {
            return;
        }
        ++parts;
        if (const auto fit = key.replaceMisfit(type, octet_length); fit != AddressKey::Fit::exact) {
            prefix_length = fit == AddressKey::Fit::tooShort ? 0 : 128;
            ++parts; // the prefix length is settled too
            if (parts == allParts) {
                return;
            }
        }
        key.copyFrom(prefix);
        const IndexPart length = readIndexPartUnlessEmpty(request, ipAddressPrefix.parameterId(3));
        if (length.present) {
            prefix_length = count(length);
        }
    }
};

std::uint32_t getByIndex(const PrefixIndex &index, AddressPrefixRow *row)
{
    if (index.parts != PrefixIndex::allParts) {
        return RC_NOT_FOUND;
    }
    if (index.type == typeIpv6z) { // the address itself is not compared
        const bool fits = index.octet_length == zonedSize && index.prefix_length == linkLocalPrefixLength &&
                          index.key.zone() == index.if_index;
        return fits ? linkLocalRowOf(index.if_index, row) : RC_NOT_FOUND;
    }
    if (index.type != typeIpv6 || index.octet_length != addressSize) {
        return RC_NOT_FOUND;
    }
    FullPrefixRecord record{};
    std::uint32_t result = IP6CFG_GetFirstFullPrefix(index.if_index, anyPrefix, &record);
    while (result == 0 && !samePrefix(record, index.key.bytes, index.prefix_length)) {
        result = IP6CFG_GetNextFullPrefix(index.if_index, anyPrefix, &record);
    }
    if (result == 0) {
        ip_AddressPrefix_FromFullPrefix(record, row);
    }
    return result;
}

} // namespace

std::uint32_t ip_AddressPrefix_GetFirst(AddressPrefixRow *row)
{
    InterfaceWalk walk;
    return firstRowAfter(0, walk, row) == 0 ? 0 : RC_NO_MORE;
}

std::uint32_t ip_AddressPrefix_GetNextOfInterface(std::uint32_t ifIndex, std::uint32_t type, const std::uint8_t *key,
                                                  std::uint32_t prefixLength, AddressPrefixRow *row)
{
    switch (type) {
    case 0:
    case typeIpv4:
        return firstRowOf(ifIndex, row);
    case typeIpv6:
        return rowAfterPrefix(ifIndex, key, prefixLength, row);
    case typeIpv4z:
        return linkLocalRowOf(ifIndex, row);
    case typeIpv6z:
        if (!hasLinkLocalAddress(ifIndex) || !isBeforeLinkLocalRow(ifIndex, key, prefixLength)) {
            return RC_NOT_FOUND;
        }
        ip_AddressPrefix_LinkLocalRow(ifIndex, row);
        return 0;
    default:
        return RC_NOT_FOUND;
    }
}

std::uint32_t ip_AddressPrefix_GetNext(std::uint32_t ifIndex, std::uint32_t type, const std::uint8_t *key,
                                       std::uint32_t prefixLength, AddressPrefixRow *row)
{
    const std::uint32_t result = ip_AddressPrefix_GetNextOfInterface(ifIndex, type, key, prefixLength, row);
    InterfaceWalk walk; // opened and closed also when the row is found already
    return result == 0 ? 0 : firstRowAfter(ifIndex, walk, row);
}

std::uint32_t ip_AddressPrefix_Proc(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const PrefixIndex index(request);
    AddressPrefixRow row{};
    const std::uint32_t result =
        operation == OP_GET ? getByIndex(index, &row)
        : index.parts == 0
            ? ip_AddressPrefix_GetFirst(&row)
            : ip_AddressPrefix_GetNext(index.if_index, index.type, index.key.bytes, index.prefix_length, &row);
    return answer(ipAddressPrefix, operation, result, &row, request, reply);
}

} // namespace ipmib
