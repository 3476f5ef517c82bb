// SPDX-License-Identifier: BSD-3-Clause
// The indexes of rows in C++, as sub-identifiers: how an instance becomes one, and which one stands just below an
// instance that is none.
#pragma once

#include "oid.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ipmib::host
{

// Which sub-identifiers may stand at one place of the indexes of a table's rows.
struct SubIdRange {
    SubId low = 0;
    SubId high = UINT32_MAX;
    // The number of octets that follow in the identifier. In an index as many places follow as it is high, and those
    // that the identifier does without are 0.
    bool isLength = false;
};
using IndexShape = std::span<const SubIdRange>;

inline constexpr SubIdRange anyOctet{0, 255};
inline constexpr SubIdRange anyIfIndex{1, INT32_MAX};
constexpr SubIdRange only(SubId number)
{
    return {number, number};
}
constexpr SubIdRange lengthUpTo(SubId most)
{
    return {0, most, true};
}

inline constexpr std::size_t maxIndexPlaces = 64;

// Indexes have as many places as their shape, and stand in the order of their identifiers.

// The index whose identifier this is; false when it is none.
bool readIndex(IndexShape shape, OidView instance, std::span<SubId> index);
// The greatest index that is not greater than the instance, which may be anything, or that is smaller. False when there
// is none: every row stands behind the instance.
bool indexBelow(IndexShape shape, OidView instance, bool smaller, std::span<SubId> index);
// Appends what no index behind the instance, which may be anything, is in front of: the first places of the least that
// could be. False when there can be none.
bool appendLowestBehind(IndexShape shape, OidView instance, Oid &name);
// False when the identifier would grow too long.
bool appendIndex(IndexShape shape, OidView index, Oid &name);

} // namespace ipmib::host
