// SPDX-License-Identifier: BSD-3-Clause
// ipNetToPhysicalTable: the IPv6 neighbour cache; on each interface the link-local neighbours follow all others.
#include "addr/address.h"
#include "frame/described_table.h"
#include "frame/gate.h"
#include "frame/tables.h"

#include <ipmib/module.h>
#include <ipmib/platform.h>

#include <cstddef>

using namespace ipmib;

namespace
{

constexpr Column columns[] = {
    number(VT_INTEGER, offsetof(IpNetToPhysicalRow, if_index)),     // ipNetToPhysicalIfIndex
    number(VT_INTEGER, offsetof(IpNetToPhysicalRow, address_type)), // ipNetToPhysicalNetAddressType
    octetsOf(offsetof(IpNetToPhysicalRow, address),
             offsetof(IpNetToPhysicalRow, address_length)), // ipNetToPhysicalNetAddress
    octets(offsetof(IpNetToPhysicalRow, link_layer),
           sizeof IpNetToPhysicalRow::link_layer),                    // ipNetToPhysicalPhysAddress
    number(VT_TIMETICKS, offsetof(IpNetToPhysicalRow, last_updated)), // ipNetToPhysicalLastUpdated
    number(VT_INTEGER, offsetof(IpNetToPhysicalRow, type)),           // ipNetToPhysicalType
    number(VT_INTEGER, offsetof(IpNetToPhysicalRow, state)),          // ipNetToPhysicalState
    number(VT_INTEGER, offsetof(IpNetToPhysicalRow, row_status)),     // ipNetToPhysicalRowStatus
};
constexpr Table ipNetToPhysical = describedTable<tableIpNetToPhysical, columns>;

constexpr std::uint32_t outsideLinkLocal = 1; // modes of the platform's next call
constexpr std::uint32_t withinLinkLocal = 2;

// One walk over the interfaces that can have neighbours. Unlike the standard walk it opens its iterator first, and
// takes a group of types in place of the list.
class NeighbourInterfaces
{
  public:
    NeighbourInterfaces() : iterator_(IF_IteratorInitialize())
    {
        if (iterator_ != 0) {
            IF_Select_Init(5, &selection_);
            IF_SelectTypeSetGroup(2, &selection_);
            IF_SelectCondition_Set(8, &selection_);
        }
    }
    ~NeighbourInterfaces()
    {
        if (iterator_ != 0) {
            IF_IteratorFinalize(&iterator_);
        }
    }
    NeighbourInterfaces(const NeighbourInterfaces &) = delete;
    NeighbourInterfaces &operator=(const NeighbourInterfaces &) = delete;

    explicit operator bool() const { return iterator_ != 0; }
    std::uint32_t first() { return IF_GetFirstIfIndexByIfSelect(&selection_, iterator_); }
    std::uint32_t next(std::uint32_t ifIndex) { return IF_GetNextIfIndexByIfSelect(&selection_, iterator_, ifIndex); }

  private:
    std::uintptr_t iterator_;
    IfSelection selection_{};
};

void fillRow(const NeighbourEntry &entry, IpNetToPhysicalRow *row)
{
    constexpr std::uint32_t ticksPerSecond = 100;
    constexpr std::uint32_t active = 1;

    row->if_index = ipmib_be32_get(entry.if_index);
    setAddress(row, entry.address, row->if_index);
    std::memcpy(row->link_layer, entry.link_layer, sizeof row->link_layer);
    row->last_updated = ipmib_be32_get(entry.last_updated_s) * ticksPerSecond;
    row->type = ipmib_be32_get(entry.type) + 1;
    row->state = ipmib_be32_get(entry.state);
    row->row_status = active;
}

bool findNextEntry(std::uint32_t mode, std::uint32_t ifIndex, const std::uint8_t *key, NeighbourEntry *entry)
{
    *entry = {};
    entry->if_index = ipmib_be32(ifIndex);
    std::memcpy(entry->address, key, addressSize);
    return ND_GetNextNetToPhysicalTable(mode, entry) == 0;
}

// The interface's neighbour after the key: behind the last one outside fe80::/10 comes the first within.
bool findNextOn(std::uint32_t ifIndex, std::uint32_t type, const std::uint8_t *key, NeighbourEntry *entry)
{
    if (type != typeIpv6) {
        return findNextEntry(withinLinkLocal, ifIndex, key, entry);
    }
    return findNextEntry(outsideLinkLocal, ifIndex, key, entry) ||
           findNextEntry(withinLinkLocal, ifIndex, linkLocalPrefix, entry);
}

// A request's index. The octets are kept whatever their length; it is the lookup that judges them.
struct NeighbourIndex : CountedIndex {
    std::uint32_t if_index = 0;
    std::uint32_t type = 0;
    AddressKey key;
    std::uint32_t octet_length = 0;

    static constexpr std::uint32_t allParts = 3;

    explicit NeighbourIndex(MorRequest *request)
    {
        if_index = count(readIndexPart(request, ipNetToPhysical.parameterId(0)));
        type = count(readIndexPart(request, ipNetToPhysical.parameterId(1)));
        if (MorPara *const address = MOR_GetParaFromMsgByMOR(request, 0, ipNetToPhysical.parameterId(2))) {
            octet_length = MOR_GetParaLen(address);
            const auto fit = key.replaceMisfit(type, octet_length);
            ++parts;
            if (fit == AddressKey::Fit::exact || parts != allParts) { // an incomplete index is taken as it stands
                key.copyFromOrDigit(address);
            }
        }
    }
};

} // namespace

std::uint32_t ip_IpNetToPhysical_Proc(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    return serve(operation, request, reply, ip_IpNetToPhysical_Get);
}

std::uint32_t ip_IpNetToPhysical_Get(std::uint32_t operation, MorRequest *request, MorReply *reply)
{
    const NeighbourIndex index(request);
    if (const std::uint32_t error = requireIp6(operation, reply)) {
        return error;
    }
    IpNetToPhysicalRow row{};
    const std::uint32_t result =
        operation == OP_GET
            ? ip_IpNetToPhysical_GetByIndex(index.if_index, index.type, index.key.bytes, index.octet_length, &row)
        : index.parts != 0 ? ip_IpNetToPhysical_GetNextByIndex(index.if_index, index.type, index.key.bytes, &row)
                           : ip_IpNetToPhysical_GetFirstByIndex(&row);
    return answer(ipNetToPhysical, operation, result, &row, request, reply);
}

std::uint32_t ip_IpNetToPhysical_GetByIndex(std::uint32_t if_index, std::uint32_t address_type,
                                            const std::uint8_t *address, std::uint32_t address_length,
                                            IpNetToPhysicalRow *row)
{
    if (address_type == typeIpv6 && address_length != addressSize) {
        return RC_NO_MORE;
    }
    if (address_type == typeIpv6z &&
        (address_length != zonedSize || ipmib_be32_read(address + addressSize) != if_index)) {
        return RC_NO_MORE;
    }
    NeighbourEntry entry{};
    if (ND_GetNetToPhysicalTable(if_index, address, &entry, address_length) != 0) {
        return RC_NO_MORE;
    }
    fillRow(entry, row);
    return 0;
}

std::uint32_t ip_IpNetToPhysical_GetNextByIndex(std::uint32_t if_index, std::uint32_t address_type,
                                                const std::uint8_t *address, IpNetToPhysicalRow *row)
{
    constexpr std::uint8_t onesAddress[addressSize] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                       0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    const std::uint8_t *key = address;
    switch (address_type) {
    case 0:
    case typeIpv4:
        return ip_IpNetToPhysical_GetNext(if_index, typeIpv6, zeroAddress, row);
    case typeIpv6:
        return ip_IpNetToPhysical_GetNext(if_index, typeIpv6, key, row);
    case typeIpv4z:
        key = zeroAddress;
        break;
    case typeIpv6z:
        break;
    default:
        key = onesAddress;
        break;
    }
    if (ipmib_be32_read(address + addressSize) < if_index) { // the same address may be a neighbour in the later zone
        NeighbourEntry entry{};
        if (ND_GetNetToPhysicalTable(if_index, key, &entry, reinterpret_cast<std::uintptr_t>(row)) == 0) {
            fillRow(entry, row);
            return 0;
        }
    }
    return ip_IpNetToPhysical_GetNext(if_index, typeIpv6z, key, row);
}

std::uint32_t ip_IpNetToPhysical_GetNext(std::uint32_t if_index, std::uint32_t address_type, const std::uint8_t *key,
                                         IpNetToPhysicalRow *row)
{
    NeighbourEntry entry;
    {
        NeighbourInterfaces interfaces;
        if (!interfaces) {
            return RC_NOT_FOUND;
        }
        std::uint32_t ifIndex = if_index != 0 ? if_index : interfaces.first();
        if (ifIndex == 0) {
            return RC_NO_MORE;
        }
        while (!findNextOn(ifIndex, address_type, key, &entry)) {
            ifIndex = interfaces.next(ifIndex);
            if (ifIndex == 0) {
                return RC_NO_MORE;
            }
            key = zeroAddress;
            address_type = typeIpv6;
        }
    }
    fillRow(entry, row);
    return 0;
}

std::uint32_t ip_IpNetToPhysical_GetFirstByIndex(IpNetToPhysicalRow *row)
{
    return ip_IpNetToPhysical_GetNext(0, typeIpv6, zeroAddress, row);
}
