// SPDX-License-Identifier: BSD-3-Clause
// The index of one row as values, and how it is written as, and read from, the sub-identifiers of an instance.
#pragma once

#include "oid.h"

#include <ipmib/mib_tree.h>

#include <array>
#include <cstddef>
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

// The values of all parts of an index. It holds any key of maxIndexParts parts, without allocation.
class RowKey
{
  public:
    std::uint32_t number(std::size_t part) const { return numbers_[part]; }
    std::span<const std::uint8_t> octets(std::size_t part) const { return {octets_[part].data(), numbers_[part]}; }

    Oid objectId(std::size_t part) const;

    void setNumber(std::size_t part, std::uint32_t number) { numbers_[part] = number; }
    // The part's octets, to be filled; at most maxOidLength.
    std::span<std::uint8_t> resizeOctets(std::size_t part, std::uint32_t length)
    {
        numbers_[part] = length;
        return {octets_[part].data(), length};
    }

    // At most maxIndexIds sub-identifiers.
    void setObjectId(std::size_t part, OidView identifier);

  private:
    // Only what has been set is initialised.
    std::array<std::uint32_t, maxIndexParts> numbers_;                         // of octets: their length
    std::array<std::array<std::uint8_t, maxOidLength>, maxIndexParts> octets_; // of an identifier: its numbers
    static_assert(maxIndexIds * sizeof(SubId) <= maxOidLength);
};

bool isSame(const IndexParts &parts, const RowKey &left, const RowKey &right);

// Appends the key's sub-identifiers; false when the identifier would grow too long.
bool appendKey(const IndexParts &parts, const RowKey &key, Oid &name);

// Reads the key of an instance; false unless the sub-identifiers are exactly one, each within what rows may hold.
bool readKey(const IndexParts &parts, OidView instance, RowKey &key);

} // namespace ipmib::host
