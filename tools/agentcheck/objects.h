// SPDX-License-Identifier: BSD-3-Clause
// What an agent's objects have to be: the catalogue, without anybody who serves it, in the regions that are looked at
// one by one.
#pragma once

#include "variable.h"

#include "tables/mib/descriptions.h"

#include "host/catalogue.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ipmib::agentcheck
{

// The columns of a table, or the scalars that are children of one node.
struct Region {
    std::string name; // the table's, or the node's
    Name root;        // the table's entry, or the node
    bool isTable;
    std::vector<const host::Object *> objects; // ascending

    // That it is an instance of; null when it is none of them.
    const host::Object *objectOf(const Name &instance) const;
};

class Objects
{
  public:
    Objects();

    // In the order of identifiers.
    const std::vector<Region> &regions() const { return regions_; }
    // Null when there is none.
    const Region *region(std::string_view name) const;
    const host::Object &named(std::string_view name) const { return *catalogue_.named(name); }
    const host::Object *find(std::string_view name) const { return catalogue_.named(name); }
    // The column or scalar that the name is an instance of; null when there is none.
    const host::Object *objectOf(const Name &name) const;

    // "ipAddressIfIndex.1.4.192.0.2.1"
    std::string text(const Name &name) const;

  private:
    Region &regionOf(const host::Object &object);

    tables::Descriptions descriptions_;
    host::Catalogue catalogue_;
    std::vector<Region> regions_;
};

Name nameOf(const host::Object &object);
// With more sub-identifiers behind it.
Name extended(Name name, host::OidView more);
// What of the name follows the object's identifier.
host::OidView instanceOf(const Name &name, const host::Object &object);
bool isColumn(const MibTreeNode &node);
std::span<const MibTreeNode *const> indexOf(const MibTreeNode &node);
// The tag of its values.
Tag tagOf(const MibTreeNode &node);
bool isCounter(Tag tag);

} // namespace ipmib::agentcheck
