// SPDX-License-Identifier: BSD-3-Clause
// The pointer from an address to the row of its prefix in ipAddressPrefixTable.
#include "addr/prefix_pointer.h"

#include "addr/ip_address_prefix.h"
#include "stats/interface_walk.h"

#include <cstddef>

namespace ipmib
{

namespace
{

constexpr std::uint32_t ipAddressPrefixOrigin[] = {1, 3, 6, 1, 2, 1, 4, 32, 1, 5};

void append(PrefixPointer *pointer, std::uint32_t id)
{
    pointer->ids[pointer->count++] = id;
}

// The address's first `length` bits, zero behind them.
void maskAddress(const std::uint8_t *address, std::uint32_t length, std::uint8_t *masked)
{
    for (std::uint32_t byte = 0; byte < addressSize; ++byte) {
        const std::uint32_t first = byte * 8;
        const std::uint32_t kept = length <= first ? 0 : length - first < 8 ? length - first : 8;
        masked[byte] = static_cast<std::uint8_t>(address[byte] & (0xFF00u >> kept));
    }
}

// The prefix that an address belongs to.
struct Sought {
    std::uint32_t if_index;
    std::uint32_t length; // bits
    std::uint8_t masked[addressSize];

    explicit Sought(const FullAddressRecord &address) : if_index(address.if_index), length(address.prefix_length)
    {
        maskAddress(address.address, length, masked);
    }
    bool isIn(const AddressPrefixRow &row) const
    {
        return row.if_index == if_index && row.prefix_length == length && sameAddress(row.address, masked);
    }
};

template <auto getNext>
std::uint32_t advance(AddressPrefixRow *row)
{
    const AddressPrefixRow key = *row;
    *row = {};
    return getNext(key.if_index, key.address_type, key.address, key.prefix_length, row);
}

// The interface's own rows as a walk of the table meets them: it enters an interface of the selection at its first row.
bool findAmongOwnRows(const Sought &sought, AddressPrefixRow *row)
{
    *row = {};
    row->if_index = sought.if_index;
    while (advance<ip_AddressPrefix_GetNextOfInterface>(row) == 0 && row->if_index == sought.if_index) {
        if (sought.isIn(*row)) {
            return true;
        }
    }
    return false;
}

// The whole table is walked, as a manager would, up to the row that fits.
bool findAmongAllRows(const Sought &sought, AddressPrefixRow *row)
{
    *row = {};
    std::uint32_t result = ip_AddressPrefix_GetFirst(row);
    while (result == 0) {
        if (sought.isIn(*row)) {
            return true;
        }
        result = advance<ip_AddressPrefix_GetNext>(row);
    }
    return false;
}

// All rows that fit make the same pointer, so an address whose interface the walk visits finds its row there first.
bool findPrefix(const FullAddressRecord &address, AddressPrefixRow *row)
{
    const Sought sought(address);
    return (isWalked(sought.if_index) && findAmongOwnRows(sought, row)) || findAmongAllRows(sought, row);
}

} // namespace

void ip_Address_PrefixPointer(const FullAddressRecord &address, PrefixPointer *pointer)
{
    pointer->count = 0;
    for (const std::uint32_t id : ipAddressPrefixOrigin) {
        append(pointer, id);
    }
    AddressPrefixRow row;
    if (!findPrefix(address, &row)) {
        append(pointer, 0);
        append(pointer, 0);
        return;
    }
    const std::uint32_t octets = row.address_type == typeIpv6z ? zonedSize : addressSize;
    append(pointer, row.if_index);
    append(pointer, row.address_type);
    append(pointer, octets);
    const auto *const bytes = reinterpret_cast<const std::uint8_t *>(&row) + offsetof(AddressPrefixRow, address);
    for (std::uint32_t octet = 0; octet < octets; ++octet) { // a zone lies behind the address
        append(pointer, bytes[octet]);
    }
    append(pointer, row.prefix_length);
}

} // namespace ipmib
