// SPDX-License-Identifier: BSD-3-Clause
// What a caller's interface selection holds: which type codes, which groups and which conditions.
#pragma once

#include <ipmib/records.h>

#include <cstdint>
#include <type_traits>

namespace ipmib::platform
{

class TypeSelection
{
  public:
    // The selection that lives in the caller's storage.
    static TypeSelection &in(IfSelection &storage) { return reinterpret_cast<TypeSelection &>(storage); }

    // These answer whether they understood.
    bool begin(std::uint32_t kind);
    bool addType(std::uint32_t code) // dozens of times for one walk over interfaces
    {
        if (code >= 256) {
            return false;
        }
        types_[code / 64] |= std::uint64_t{1} << (code % 64);
        return true;
    }
    bool addGroup(std::uint32_t group);
    bool addCondition(std::uint32_t condition);

    // Whether interfaces with this type code are selected.
    bool holds(std::uint8_t code) const { return allTypes_ || ((types_[code / 64] >> (code % 64)) & 1) != 0; }

  private:
    std::uint64_t types_[4]; // one bit for each code below 256
    bool allTypes_;
};

static_assert(sizeof(TypeSelection) <= sizeof(IfSelection) && alignof(TypeSelection) <= alignof(IfSelection));
static_assert(std::is_trivial_v<TypeSelection>, "the caller's storage needs no construction");

} // namespace ipmib::platform
