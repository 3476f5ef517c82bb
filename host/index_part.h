// SPDX-License-Identifier: BSD-3-Clause
// One part of a row's index, as the tree declares it.
#pragma once

#include <ipmib/mib_tree.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ipmib::host
{

struct IndexPart {
    std::uint32_t parameter; // under which its value travels
    std::uint32_t valueType; // VT_* in a reply
    bool isOctets;
    bool hasFixedLength; // octets without a length in front
    // What rows may hold: the values of a number, the lengths of octets.
    std::uint32_t low;
    std::uint32_t high;
    bool isObjectId = false; // an identifier, of at most maxIndexIds sub-identifiers, with their number in front
};

inline constexpr std::size_t maxIndexParts = 8;
inline constexpr std::size_t maxIndexIds = 32;

using IndexParts = std::vector<IndexPart>;

// Empty when the object's syntax cannot be part of an index.
std::optional<IndexPart> indexPart(const MibTreeNode &column);

// The columns of an index list.
inline std::span<const MibTreeNode *const> columnsOf(const MibIndexList &list)
{
    return {list.ppstColumns, list.ulCount};
}

} // namespace ipmib::host
