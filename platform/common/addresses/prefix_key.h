// SPDX-License-Identifier: BSD-3-Clause
// What names a prefix: its interface, its bits and their number. Prefixes are ordered so, too.
#pragma once

#include "addresses/packed_address.h"

namespace ipmib::platform
{

struct PrefixKey {
    std::uint32_t ifIndex;
    PackedAddress prefix;
    std::uint8_t length; // bits; more than 128 in a key stands behind every length that there is

    static PrefixKey of(std::uint32_t ifIndex, const PackedAddress &address, unsigned length)
    {
        return {ifIndex, address.masked(length), static_cast<std::uint8_t>(length)};
    }

    friend auto operator<=>(const PrefixKey &, const PrefixKey &) = default;
};

} // namespace ipmib::platform
