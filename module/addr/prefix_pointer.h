// SPDX-License-Identifier: BSD-3-Clause
// The pointer from an address to the row of its prefix in ipAddressPrefixTable.
#pragma once

#include <ipmib/records.h>

#include <cstdint>

namespace ipmib
{

struct PrefixPointer {
    static constexpr std::uint32_t capacity = 34; // column 10, ifIndex, type, octet count, 20 octets, length

    std::uint32_t ids[capacity];
    std::uint32_t count;
};

// Points at the origin column of the address's prefix, or at 0.0 below that column when no row of the table fits.
void ip_Address_PrefixPointer(const FullAddressRecord &address, PrefixPointer *pointer);

} // namespace ipmib
