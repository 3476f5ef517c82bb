// SPDX-License-Identifier: BSD-3-Clause
// What a device answers as it was recorded from another, and what it lacks of what it would answer otherwise.
#pragma once

#include "support/walk/recorded_object.h"

#include <ipmib/platform_recorded.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ipmib::simulated
{

class Recorded
{
  public:
    using Name = std::span<const std::uint32_t>;

    // In any order, before `complete`.
    void add(const support::RecordedObject &object);
    void lack(Name root);
    // Answers with a name that has been added twice, or with nothing.
    std::vector<std::uint32_t> complete();

    // For the host, see IpmibRecordedHooks.
    std::uint32_t any() const { return entries_.empty() && lacking_.empty() ? 0 : 1; }
    bool find(const std::uint32_t *name, std::size_t length, IpmibRecordedObject &object) const;
    bool next(const std::uint32_t *name, std::size_t length, IpmibRecordedObject &object) const;
    std::size_t lacks(const std::uint32_t *name, std::size_t length) const;

  private:
    // A fleet has many devices: names and values lie one behind the other in memory.
    struct Piece {
        std::uint32_t begin = 0;
        std::uint32_t size = 0;
    };
    struct Entry {
        Piece name;
        Piece octets;
        Piece objectId;
        std::uint32_t type;
        std::uint64_t number;
    };
    Piece keep(Name ids);
    Name ids(const Piece &piece) const { return Name(ids_).subspan(piece.begin, piece.size); }
    bool isInFront(const Piece &left, Name right) const;
    void describe(const Entry &entry, IpmibRecordedObject &object) const;

    std::vector<Entry> entries_; // by name
    std::vector<Piece> lacking_; // in order, none within another
    std::vector<std::uint32_t> ids_;
    std::string octets_;
};

} // namespace ipmib::simulated
