// SPDX-License-Identifier: BSD-3-Clause
// The bits of an address within and behind a prefix length.
#pragma once

#include <cstdint>
#include <cstring>

namespace ipmib::portcheck
{

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

} // namespace ipmib::portcheck
