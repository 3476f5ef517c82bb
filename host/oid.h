// SPDX-License-Identifier: BSD-3-Clause
// Object identifiers without allocation.
#pragma once

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace ipmib::host
{

using SubId = std::uint32_t;
using OidView = std::span<const SubId>;

// Lexicographic order, a prefix before what extends it. (std::lexicographical_compare_three_way, and with it < of two
// vectors, is no use here: on a big-endian machine GCC 12's takes the number of elements for a number of bytes.)
inline std::strong_ordering compare(OidView left, OidView right)
{
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (left[i] != right[i]) {
            return left[i] <=> right[i];
        }
    }
    return left.size() <=> right.size();
}

inline bool isWithin(OidView name, OidView root)
{
    return name.size() >= root.size() && std::equal(root.begin(), root.end(), name.begin());
}

// SNMP allows an identifier at most this many sub-identifiers.
inline constexpr std::size_t maxOidLength = 128;

class Oid
{
  public:
    Oid() = default;
    Oid(std::initializer_list<SubId> ids) { append(OidView{ids.begin(), ids.size()}); }
    explicit Oid(OidView ids) { append(ids); }
    Oid(const Oid &other) { append(other.view()); }
    Oid &operator=(const Oid &other)
    {
        if (this != &other) {
            assign(other.view());
        }
        return *this;
    }

    // Both return false, and change nothing, when the identifier would grow too long.
    bool append(SubId id) { return append(OidView{&id, 1}); }
    bool append(OidView ids)
    {
        if (ids.size() > maxOidLength - size_) {
            return false;
        }
        std::copy(ids.begin(), ids.end(), ids_.begin() + static_cast<std::ptrdiff_t>(size_));
        size_ += ids.size();
        return true;
    }

    // Grows by so many identifiers, which the caller fills in; empty when it would grow too long.
    std::span<SubId> extend(std::size_t count)
    {
        if (count > maxOidLength - size_) {
            return {};
        }
        size_ += count;
        return {ids_.data() + size_ - count, count};
    }

    // As if it were new; the identifiers must not be its own.
    bool assign(OidView ids)
    {
        size_ = 0;
        return append(ids);
    }

    OidView view() const { return {ids_.data(), size_}; }
    std::size_t size() const { return size_; }
    void clear() { size_ = 0; }

  private:
    std::size_t size_ = 0;
    std::array<SubId, maxOidLength> ids_; // only the first size_ are initialised
};

} // namespace ipmib::host
