// SPDX-License-Identifier: BSD-3-Clause
// Random identifiers around the instances that a module has, and what a walk owes for each: the sorted list of all
// instances is the truth.
#pragma once

#include "../oid.h"

#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace ipmib::host::testing
{

// A vector that orders right on big-endian machines too (see compare).
struct Identifier : std::vector<SubId> {
    using vector::vector;

    friend std::strong_ordering operator<=>(const Identifier &left, const Identifier &right)
    {
        return compare(left, right);
    }
};
using Random = std::mt19937;

std::string text(OidView identifier);

template <typename Container>
const auto &pick(Random &random, const Container &container)
{
    return container[random() % std::size(container)];
}

class Instances
{
  public:
    // The names of all objects that are served, and of all their instances, in any order.
    Instances(std::vector<Identifier> objects, std::vector<Identifier> instances);

    const std::vector<Identifier> &all() const { return instances_; }
    bool has(OidView identifier) const;
    bool hasObjectOf(OidView identifier) const;

    // The instance that follows within the region, or null.
    const Identifier *after(OidView asked, OidView region) const;

    // An instance, or something before, between, inside or behind instances: truncated, overlong, out of range.
    Identifier random(Random &random) const;
    // The root of the tree, an object, a part of an instance: what a walk may be limited to.
    Identifier randomRegion(Random &random) const;

  private:
    std::vector<Identifier> objects_;
    std::vector<Identifier> instances_;
};

} // namespace ipmib::host::testing
