// SPDX-License-Identifier: BSD-3-Clause
// The numbers that arguments, records and results of services carry.
#pragma once

#include <ipmib/message.h>

#include <cstdint>

namespace ipmib::platform
{

// FullAddressRecord
enum : std::uint32_t {
    addressOriginOther = 0,
    addressOriginManual = 8,
    addressOriginDhcp = 16,
    addressOriginLinkLayer = 64,
    addressOriginRandom = 128
};
enum : std::uint32_t {
    addressStatePreferred = 0,
    addressStateDeprecated = 4,
    addressStateTentative = 64,
    addressStateDuplicate = 128
};
inline constexpr std::uint32_t addressFlagAnycast = 0x1;
inline constexpr std::uint8_t linkLocalPrefixLength = 10; // of the one link-local prefix of an interface

// FullPrefixRecord
enum : std::uint32_t {
    prefixOriginOther = 0,
    prefixOriginManual = 2,
    prefixOriginWellKnown = 4,
    prefixOriginDhcp = 8,
    prefixOriginRouter = 16
};
inline constexpr std::uint8_t prefixFlagOnLink = 0x80;
inline constexpr std::uint8_t prefixFlagAutonomous = 0x40;
inline constexpr std::uint32_t beyondEveryLength = 255; // of a prefix; what a key may carry instead of a longer one

// GatewayRecord, and the classes of gateways
enum : std::uint32_t { gatewayPreferenceMedium = 0, gatewayPreferenceHigh = 1, gatewayPreferenceLow = 3 };
inline constexpr unsigned gatewayPreferenceShift = 27;         // to bits 0x18 of the most significant byte
inline constexpr std::uint32_t gatewayLongestLifetime = 65535; // seconds, of what the table can tell
enum : std::uint32_t { gatewayClassLinkLocal = 2, gatewayClassGlobal = 14 };

// ND_GetNextNetToPhysicalTable
enum : std::uint32_t { neighboursGlobal = 1, neighboursLinkLocal = 2 };

inline constexpr std::uint32_t infiniteLifetime = 0xFFFFFFFF; // seconds

constexpr std::uint32_t success = 0;
constexpr std::uint32_t notFound = RC_NOT_FOUND;
constexpr std::uint32_t noMore = RC_NO_MORE;

} // namespace ipmib::platform
