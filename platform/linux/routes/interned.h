// SPDX-License-Identifier: BSD-3-Clause
// Values that many rows share, each kept once under a number for as long as somebody uses it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace ipmib::platform
{

// Value has operator== and a member hash().
template <class Value>
class Interned
{
  public:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    // Null for a value that nobody uses. Does not use it.
    std::uint32_t find(const Value &value) const
    {
        if (buckets_.empty()) {
            return none;
        }
        std::uint32_t at = buckets_[value.hash() & (buckets_.size() - 1)];
        while (at != none && !(entries_[at].value == value)) {
            at = entries_[at].next;
        }
        return at;
    }

    // One more use.
    std::uint32_t take(const Value &value)
    {
        std::uint32_t at = find(value);
        if (at == none) {
            at = add(value);
        }
        ++entries_[at].uses;
        return at;
    }

    // One use less; the value goes with the last one.
    void leave(std::uint32_t number)
    {
        Entry &entry = entries_[number];
        if (--entry.uses != 0) {
            return;
        }
        if (!isRetired(number)) {
            retire(number);
        }
        entry.value = Value{};
        entry.next = free_;
        free_ = number;
    }

    // Nobody finds the value any more: who takes it gets another number. Those who use it keep theirs.
    void retire(std::uint32_t number)
    {
        Entry &entry = entries_[number];
        std::uint32_t *link = &buckets_[entry.value.hash() & (buckets_.size() - 1)];
        while (*link != number) {
            link = &entries_[*link].next;
        }
        *link = entry.next;
        entry.next = retired;
        --size_;
    }
    bool isRetired(std::uint32_t number) const { return entries_[number].next == retired; }

    const Value &operator[](std::uint32_t number) const { return entries_[number].value; }
    std::uint32_t uses(std::uint32_t number) const { return entries_[number].uses; }
    std::size_t size() const { return size_; }
    // Numbers are below this.
    std::uint32_t end() const { return static_cast<std::uint32_t>(entries_.size()); }
    std::size_t memory() const { return entries_.size() * sizeof(Entry) + buckets_.capacity() * sizeof(buckets_[0]); }

  private:
    static constexpr std::uint32_t retired = none - 1;
    struct Entry {
        Value value{};
        std::uint32_t uses = 0;
        std::uint32_t next = none; // of the bucket, or the next free entry
    };

    std::uint32_t add(const Value &value)
    {
        if (size_ == buckets_.size()) {
            grow();
        }
        std::uint32_t at = free_;
        if (at == none) {
            at = end();
            entries_.emplace_back();
        } else {
            free_ = entries_[at].next;
        }
        std::uint32_t &bucket = buckets_[value.hash() & (buckets_.size() - 1)];
        entries_[at].value = value;
        entries_[at].next = bucket;
        bucket = at;
        ++size_;
        return at;
    }

    void grow()
    {
        constexpr std::size_t fewest = 64;
        buckets_.assign(buckets_.empty() ? fewest : 2 * buckets_.size(), none);
        for (std::uint32_t number = 0; number < end(); ++number) {
            if (entries_[number].uses != 0 && !isRetired(number)) {
                std::uint32_t &bucket = buckets_[entries_[number].value.hash() & (buckets_.size() - 1)];
                entries_[number].next = bucket;
                bucket = number;
            }
        }
    }

    std::deque<Entry> entries_;
    std::vector<std::uint32_t> buckets_; // as many as a power of two
    std::uint32_t free_ = none;
    std::size_t size_ = 0;
};

// For hash(): mixes one more word into what is there.
inline std::uint64_t mixed(std::uint64_t hash, std::uint64_t word)
{
    hash = (hash ^ word) * 0x9E3779B97F4A7C15;
    return hash ^ hash >> 29;
}

} // namespace ipmib::platform
