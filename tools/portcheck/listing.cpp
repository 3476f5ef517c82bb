// SPDX-License-Identifier: BSD-3-Clause
// Keys beside those of rows.
#include "listing.h"

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

} // namespace ipmib::portcheck
