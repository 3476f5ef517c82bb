// SPDX-License-Identifier: BSD-3-Clause
// What answers for objects: variables in, typed values out. A module behind the resolver is a source, rows in C++ are
// another, and several of them make one table (merged_source.h).
#pragma once

#include "oid.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ipmib::host
{

// SMI types as they stand on the wire.
enum class ValueType : std::uint8_t {
    integer32,
    unsigned32,
    counter32,
    counter64,
    timeTicks,
    octets,
    ipAddress,
    objectId,
    opaque
};

// A value. Octets and identifiers point into storage that stays valid until its source is used again.
struct Value {
    ValueType type = ValueType::integer32;
    std::uint64_t number = 0;             // numbers; a negative integer32 as its 32-bit two's complement
    std::span<const std::uint8_t> octets; // octets, those of opaque values, and the 4 of an address
    std::span<const SubId> objectId;      // identifiers
};

enum class Status : std::uint8_t {
    ok,
    noSuchObject,   // get: no served object has this identifier as its prefix
    noSuchInstance, // get: the object is served, the row does not exist
    endOfRegion,    // get-next: nothing follows within the region
    genErr          // the source's answer was unusable; the reason was logged
};

// One variable of a packet, in and out.
struct Variable {
    OidView asked;
    Status status = Status::genErr;
    Oid name; // get-next: the identifier found, when the status is ok
    Value value;
};

class Source
{
  public:
    Source() = default;
    virtual ~Source() = default;
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    // The columns and scalars that it has values for, without instances; ascending.
    virtual std::vector<Oid> objects() const = 0;

    // Somebody is about to serve it. What costs something while nobody asks begins here; more than once is as good as
    // once. Throws std::runtime_error with one line for the user.
    virtual void start() {}
    // Asked when a packet has begun: whether its rows have been read, since `start`, and are as new as the packet may
    // expect without having to wait for that. Before, it answers from those that there are by then, or after a wait;
    // whoever serves it keeps questions back for a while.
    virtual bool areRead() const { return true; }
    // From now on the rows are those of this instance of the platform, by its number; at first, of the one with 0.
    virtual void select(std::size_t instance) { static_cast<void>(instance); }
    // That instance has ended; the number may become another one's.
    virtual void forget(std::size_t instance) { static_cast<void>(instance); }
    // A packet of requests begins: what was found out for the one before is forgotten.
    virtual void beginPacket() {}

    // Answers the variables of one packet. Those that ask for columns of one row are answered from one look at it.
    virtual void get(std::span<Variable> variables) = 0;
    // The same for the successors. Only instances within the region count; a variable that lies before the region asks
    // for the region's first instance, which may be the region's root itself.
    virtual void getNext(std::span<Variable> variables, OidView region) = 0;
    // An identifier that no successor of this one is in front of, as far as that can be told without looking at rows:
    // of several sources, one whose answer cannot be the smallest need not be asked. False when none can follow.
    virtual bool lowestBehind(OidView asked, Oid &lowest)
    {
        lowest.assign(asked);
        return true;
    }
};

} // namespace ipmib::host
