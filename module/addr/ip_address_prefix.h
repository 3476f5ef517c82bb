// SPDX-License-Identifier: BSD-3-Clause
// The rows of ipAddressPrefixTable, for the table itself and for the pointers into it.
#pragma once

#include "addr/address.h"

#include <cstdint>

namespace ipmib
{

struct AddressPrefixRow {
    std::uint32_t if_index;
    std::uint32_t address_type;
    std::uint8_t address[addressSize];
    IpmibBe32 zone;
    std::uint32_t address_length; // 20 for the link-local row alone
    std::uint32_t prefix_length;  // bits
    std::uint32_t origin;
    std::uint32_t on_link;
    std::uint32_t autonomous;
    std::uint32_t preferred_lifetime; // seconds
    std::uint32_t valid_lifetime;     // seconds
};

// The first row of the table. Returns 0 or RC_NO_MORE.
std::uint32_t ip_AddressPrefix_GetFirst(AddressPrefixRow *row);

// The row after a key; its bytes are the address and, for type 4, a zone. Returns 0 or RC_NOT_FOUND.
std::uint32_t ip_AddressPrefix_GetNext(std::uint32_t ifIndex, std::uint32_t type, const std::uint8_t *key,
                                       std::uint32_t prefixLength, AddressPrefixRow *row);

// The same among the rows of the key's interface alone, whether or not it is walked; type 0 asks for the first of them.
std::uint32_t ip_AddressPrefix_GetNextOfInterface(std::uint32_t ifIndex, std::uint32_t type, const std::uint8_t *key,
                                                  std::uint32_t prefixLength, AddressPrefixRow *row);

} // namespace ipmib
