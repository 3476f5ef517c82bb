// SPDX-License-Identifier: BSD-3-Clause
// Where a row stands in the order of its list: by address, then by a number.
#pragma once

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

// The keys next to one; the ends stay.
Key justBefore(Key key);
Key justAfter(Key key);
// A key between two that are not side by side; else the first.
Key between(const Key &first, const Key &second);
// The key, and those that differ from it in its last byte alone.
void addKeysAround(const Key &key, std::vector<Key> &keys);

} // namespace ipmib::portcheck
