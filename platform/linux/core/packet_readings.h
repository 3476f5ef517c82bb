// SPDX-License-Identifier: BSD-3-Clause
// What is read of the kernel at most once for a packet of requests, however often it is asked for.
#pragma once

#include <cstdint>
#include <unordered_map>

namespace ipmib::platform
{

// One value for each key.
template <class Key, class Value>
class PacketReadings
{
  public:
    // All is to be read again.
    void newPacket() { ++packet_; }
    void forget(const Key &key) { entries_.erase(key); }

    // Whether this packet has read it, or asked for it.
    bool isFresh(const Key &key) const { return has(key, &Entry::readIn); }
    bool isAsked(const Key &key) const { return has(key, &Entry::askedIn); }

    // The value as this packet has read it. Unless it has, read(value) is called: false when there is nothing to read,
    // and then the value stays as an earlier packet has read it. Null when none has.
    template <class Read>
    const Value *get(const Key &key, Read read)
    {
        auto known = entries_.find(key);
        if (known == entries_.end()) {
            Value value{};
            if (!read(value)) {
                return nullptr;
            }
            known = entries_.emplace(key, Entry{packet_, packet_, value}).first;
        } else if (known->second.readIn != packet_) {
            read(known->second.value);
        }
        known->second.readIn = packet_;
        known->second.askedIn = packet_;
        return &known->second.value;
    }

    // Read by other means in this packet.
    void put(const Key &key, const Value &value)
    {
        Entry &entry = entries_[key];
        entry.readIn = packet_;
        entry.value = value;
    }

  private:
    struct Entry { // the packets that did so last
        std::uint64_t readIn = 0;
        std::uint64_t askedIn = 0;
        Value value{};
    };

    bool has(const Key &key, std::uint64_t Entry::*packet) const
    {
        const auto known = entries_.find(key);
        return known != entries_.end() && known->second.*packet == packet_;
    }

    std::unordered_map<Key, Entry> entries_;
    std::uint64_t packet_ = 1;
};

} // namespace ipmib::platform
