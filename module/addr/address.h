// SPDX-License-Identifier: BSD-3-Clause
// How IPv6 addresses stand in rows and in request indexes: the link-local rule, the zone, and keys of odd length.
#pragma once

#include <ipmib/big_endian.h>
#include <ipmib/message.h>

#include <cstdint>
#include <cstring>

namespace ipmib
{

// InetAddressType codes of the rows. Others occur in requests: a table knows where in its order they fall.
inline constexpr std::uint32_t typeIpv4 = 1;
inline constexpr std::uint32_t typeIpv6 = 2;
inline constexpr std::uint32_t typeIpv4z = 3;
inline constexpr std::uint32_t typeIpv6z = 4;

inline constexpr std::uint32_t addressSize = 16;
inline constexpr std::uint32_t zonedSize = 20; // the address and a big-endian zone
inline constexpr std::uint8_t zeroAddress[addressSize] = {};
inline constexpr std::uint8_t linkLocalPrefix[addressSize] = {0xFE, 0x80};
inline constexpr std::uint32_t linkLocalPrefixLength = 10;

inline bool isLinkLocal(const std::uint8_t *address)
{
    return address[0] == 0xFE && (address[1] & 0xC0) == 0x80;
}

// Negative, 0 or positive. The search for the next link-local address compares those of all interfaces, so this is no
// call of memcmp.
inline int compareAddresses(const std::uint8_t *left, const std::uint8_t *right)
{
    for (std::uint32_t at = 0; at < addressSize; at += sizeof(std::uint32_t)) {
        const std::uint32_t ofLeft = ipmib_be32_read(left + at);
        const std::uint32_t ofRight = ipmib_be32_read(right + at);
        if (ofLeft != ofRight) {
            return ofLeft < ofRight ? -1 : 1;
        }
    }
    return 0;
}
inline bool sameAddress(const std::uint8_t *left, const std::uint8_t *right)
{
    return std::memcmp(left, right, addressSize) == 0; // which compilers know how to do in place
}
inline bool isZero(const std::uint8_t *address)
{
    return sameAddress(address, zeroAddress);
}

// Sets a row's address with its type and length: a link-local one is zoned by its interface, any other has no zone.
template <class Row>
void setAddress(Row *row, const std::uint8_t *address, std::uint32_t ifIndex)
{
    std::memcpy(row->address, address, addressSize);
    row->address_type = typeIpv6;
    row->address_length = addressSize;
    if (isLinkLocal(address)) {
        row->address_type = typeIpv6z;
        row->address_length = zonedSize;
        row->zone = ipmib_be32(ifIndex);
    }
}

// An address as an index part: as many octets as the request gave, zero behind them.
struct AddressKey {
    static constexpr std::uint32_t capacity = 512;

    std::uint8_t bytes[capacity] = {};

    std::uint32_t zone() const { return ipmib_be32_read(bytes + addressSize); }

    void copyFrom(MorPara *part) { MOR_GetDataFromPara(part, capacity, bytes); }

    // The same where an empty value is a key of its own: it leaves the digit behind.
    void copyFromOrDigit(MorPara *part)
    {
        bytes[0] = '0';
        copyFrom(part);
    }

    // An address whose length is not that of its type stands before or behind all addresses of the type, and the key is
    // set so. Other types have no length of their own.
    enum class Fit { exact, tooShort, tooLong };
    Fit replaceMisfit(std::uint32_t type, std::uint32_t length)
    {
        const std::uint32_t expected = type == typeIpv6 ? addressSize : zonedSize;
        if ((type != typeIpv6 && type != typeIpv6z) || length == expected) {
            return Fit::exact;
        }
        const Fit fit = length < expected ? Fit::tooShort : Fit::tooLong;
        std::memset(bytes, fit == Fit::tooShort ? 0 : 0xFF, addressSize);
        return fit;
    }
};

} // namespace ipmib
