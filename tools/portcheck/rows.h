// SPDX-License-Identifier: BSD-3-Clause
// The rows that a platform has, list by list, and where a row stands in its list. What breaks a promise is told to the
// probe on the way.
#pragma once

#include "probe.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace ipmib::portcheck
{

struct Key {
    std::uint8_t address[16] = {};
    std::uint32_t number = 0; // prefix length, or ifIndex

    static Key of(const std::uint8_t *address, std::uint32_t number = 0)
    {
        Key key;
        std::memcpy(key.address, address, sizeof key.address);
        key.number = number;
        return key;
    }

    bool isZero() const { return *this == Key{}; }

    friend bool operator<(const Key &left, const Key &right)
    {
        const int order = std::memcmp(left.address, right.address, sizeof left.address);
        return order != 0 ? order < 0 : left.number < right.number;
    }
    friend bool operator==(const Key &left, const Key &right)
    {
        return std::memcmp(left.address, right.address, sizeof left.address) == 0 && left.number == right.number;
    }
};

inline bool isLinkLocal(const std::uint8_t *address)
{
    return address[0] == 0xFE && (address[1] & 0xC0) == 0x80;
}

// Clears the bits behind the first `length`.
inline void maskTo(std::uint8_t *address, std::uint32_t length)
{
    for (std::uint32_t byte = 0; byte < 16; ++byte) {
        const std::uint32_t kept = length <= byte * 8 ? 0 : length - byte * 8 < 8 ? length - byte * 8 : 8;
        address[byte] = static_cast<std::uint8_t>(address[byte] & (0xFF00u >> kept));
    }
}

inline bool isMasked(const std::uint8_t *address, std::uint32_t length)
{
    std::uint8_t masked[16];
    std::memcpy(masked, address, sizeof masked);
    maskTo(masked, length);
    return std::memcmp(masked, address, sizeof masked) == 0;
}

enum class Selection { standard, withNeighbours };

std::vector<std::uint32_t> interfacesOf(Probe &probe, Selection selection);

enum NeighbourMode : std::uint32_t { outsideLinkLocal = 1, withinLinkLocal = 2 };
std::vector<NeighbourEntry> neighboursOf(Probe &probe, std::uint32_t ifIndex, NeighbourMode mode);

std::vector<FullPrefixRecord> prefixesOf(Probe &probe, std::uint32_t ifIndex);

std::vector<FullAddressRecord> addressesOf(Probe &probe);

enum RouterClass : std::uint32_t { linkLocalRouters = 2, globalRouters = 14 };
std::vector<GatewayRecord> routersOf(Probe &probe, RouterClass routerClass);
// Of both classes, without a word of what is wrong with them.
std::vector<GatewayRecord> routersQuietly(Probe &probe);

} // namespace ipmib::portcheck
