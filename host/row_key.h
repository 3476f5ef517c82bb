// SPDX-License-Identifier: BSD-3-Clause
// The index of one row as values, and how it is written as, and read from, the sub-identifiers of an instance.
#pragma once

#include "index_part.h"
#include "oid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ipmib::host
{

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
