// SPDX-License-Identifier: BSD-3-Clause
// An IPv6 address as two numbers, so that tables of them are ordered and searched by whole words.
#pragma once

#include <endian.h>

#include <compare>
#include <cstdint>
#include <cstring>

namespace ipmib::platform
{

struct PackedAddress {
    std::uint64_t high = 0;
    std::uint64_t low = 0;

    static PackedAddress of(const void *bytes)
    {
        std::uint64_t words[2];
        std::memcpy(words, bytes, sizeof words);
        return {be64toh(words[0]), be64toh(words[1])};
    }
    void copyTo(void *bytes) const
    {
        const std::uint64_t words[2] = {htobe64(high), htobe64(low)};
        std::memcpy(bytes, words, sizeof words);
    }

    // The first `length` bits, zero behind them.
    PackedAddress masked(unsigned length) const
    {
        return {length >= 64 ? high : high & upper(length), length <= 64 ? 0 : low & upper(length - 64)};
    }

    bool isLinkLocal() const { return high >> 54 == 0xFE80u >> 6; }
    bool isMulticast() const { return high >> 56 == 0xFF; }
    bool isLoopback() const { return high == 0 && low == 1; }

    friend auto operator<=>(const PackedAddress &, const PackedAddress &) = default;

  private:
    // The upper `bits` bits of a word, of which there are 0 to 64.
    static std::uint64_t upper(unsigned bits) { return bits == 0 ? 0 : bits >= 64 ? ~0ull : ~(~0ull >> bits); }
};

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
