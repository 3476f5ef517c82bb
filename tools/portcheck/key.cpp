// SPDX-License-Identifier: BSD-3-Clause
// Keys that no row has: beside those of rows, and between them.
#include "key.h"

namespace ipmib::portcheck
{

namespace
{

// The address as a number, plus or minus 1; the ends stay.
void step(std::uint8_t *address, bool up)
{
    for (int place = 15; place >= 0; --place) {
        std::uint8_t &byte = address[place];
        byte = static_cast<std::uint8_t>(up ? byte + 1 : byte - 1);
        if (byte != (up ? 0x00 : 0xFF)) {
            return;
        }
    }
    std::memset(address, up ? 0xFF : 0x00, 16);
}

} // namespace

Key justBefore(Key key)
{
    if (key.number > 0) {
        --key.number;
    } else {
        step(key.address, false);
    }
    return key;
}

Key justAfter(Key key)
{
    if (key.number > 0) {
        ++key.number;
    } else {
        step(key.address, true);
    }
    return key;
}

Key between(const Key &first, const Key &second)
{
    Key key = first;
    if (std::memcmp(first.address, second.address, sizeof first.address) == 0) {
        key.number += (second.number - first.number) / 2;
        return key;
    }
    for (unsigned place = 0, left = 0; place < 16; ++place) { // half of their difference is added from the left
        const unsigned sum = left * 256 + first.address[place] + second.address[place];
        key.address[place] = static_cast<std::uint8_t>(sum / 2);
        left = sum % 2;
        if (sum / 2 > 0xFF) {
            ++key.address[place - 1];
        }
    }
    key.number = 0;
    return first < key ? key : first;
}

void addKeysAround(const Key &key, std::vector<Key> &keys)
{
    Key around = key;
    for (unsigned last = 0; last < 256; ++last) {
        around.address[15] = static_cast<std::uint8_t>(last);
        keys.push_back(around);
    }
}

} // namespace ipmib::portcheck
