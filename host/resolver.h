// SPDX-License-Identifier: BSD-3-Clause
// Turns object identifiers into requests to a module, and its replies into typed values.
//
// The resolver owns lexicographic truth: whatever a module answers, a get-next never yields an identifier that is not
// greater than the one asked, never loops, and never skips a row that the module can give.
#pragma once

#include "oid.h"

#include <ipmib/message.h>
#include <ipmib/mib_tree.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
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
    objectId
};

// A value. Octets and identifiers point into storage that stays valid until the resolver is used again.
struct Value {
    ValueType type = ValueType::integer32;
    std::uint64_t number = 0;             // numbers; a negative integer32 as its 32-bit two's complement
    std::span<const std::uint8_t> octets; // octets, and the 4 of an address
    std::span<const SubId> objectId;      // identifiers
};

enum class Status : std::uint8_t {
    ok,
    noSuchObject,   // get: no served object has this identifier as its prefix
    noSuchInstance, // get: the object is served, the row does not exist
    endOfRegion,    // get-next: nothing follows within the region
    genErr          // the module's answer was unusable; the reason was logged
};

// One variable of a packet, in and out.
struct Variable {
    OidView asked;
    Status status = Status::genErr;
    Oid name; // get-next: the identifier found, when the status is ok
    Value value;
};

class Resolver
{
  public:
    using Log = void (*)(int priority, const char *line); // priorities as in syslog

    // Serves the tree rooted here by asking this callback. The tree must stay valid as long as the resolver.
    Resolver(const MibTreeNode &root, MorCallback callback, Log log);
    ~Resolver();
    Resolver(const Resolver &) = delete;
    Resolver &operator=(const Resolver &) = delete;

    // A part of the tree that the module serves: the entry of a table, or a scalar.
    struct Region {
        Oid root;
        const MibTreeNode *node;
    };
    // All regions, ascending.
    const std::vector<Region> &regions() const;

    // Answers the variables of one packet. Those that ask for columns of one row share one request to the module and so
    // one snapshot.
    void get(std::span<Variable> variables);
    // The same for the successors; only instances within the region count.
    void getNext(std::span<Variable> variables, OidView region);

    // How many requests the module has been sent, for measurements.
    std::uint64_t requestCount() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace ipmib::host
