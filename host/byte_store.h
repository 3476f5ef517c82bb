// SPDX-License-Identifier: BSD-3-Clause
// Memory for the octets and identifiers of one packet's values: it never moves what it handed out, and once it has
// grown to what packets need it allocates no more.
#pragma once

#include "source.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

namespace ipmib::host
{

class ByteStore
{
  public:
    // A copy of the bytes, at an address that suits any number, until the next clear.
    std::span<const std::uint8_t> keep(const void *bytes, std::size_t size);
    // Forgets everything, keeps the memory.
    void clear();

  private:
    static constexpr std::size_t chunkSize = 1 << 17; // holds the longest value that a reply may carry

    std::vector<std::unique_ptr<std::uint64_t[]>> chunks_;
    std::size_t current_ = 0; // the chunk that is being filled
    std::size_t used_ = 0;    // of that chunk
};

inline std::span<const std::uint8_t> ByteStore::keep(const void *bytes, std::size_t size)
{
    if (size == 0 || size > chunkSize) {
        return {};
    }
    if (!chunks_.empty() && size > chunkSize - used_) {
        ++current_;
        used_ = 0;
    }
    if (current_ == chunks_.size()) {
        chunks_.push_back(std::make_unique_for_overwrite<std::uint64_t[]>(chunkSize / sizeof(std::uint64_t)));
    }
    std::uint8_t *place = reinterpret_cast<std::uint8_t *>(chunks_[current_].get()) + used_;
    std::memcpy(place, bytes, size);
    used_ += (size + 7) & ~std::size_t{7};
    return {place, size};
}

inline void ByteStore::clear()
{
    current_ = 0;
    used_ = 0;
}

// The value with octets and identifiers of its own, for when its source is asked again.
inline Value kept(const Value &value, ByteStore &store)
{
    Value copy = value;
    if (!value.octets.empty()) {
        copy.octets = store.keep(value.octets.data(), value.octets.size());
    }
    if (!value.objectId.empty()) {
        const auto bytes = store.keep(value.objectId.data(), value.objectId.size_bytes());
        copy.objectId = {reinterpret_cast<const SubId *>(bytes.data()), value.objectId.size()};
    }
    return copy;
}

} // namespace ipmib::host
