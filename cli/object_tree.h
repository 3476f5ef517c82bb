// SPDX-License-Identifier: BSD-3-Clause
// The objects of a module's tree by name and by identifier.
#pragma once

#include "host/oid.h"

#include <ipmib/mib_tree.h>

#include <string_view>
#include <unordered_map>
#include <vector>

namespace ipmib::cli
{

struct Object {
    const MibTreeNode *node;
    host::Oid oid;
};

class ObjectTree
{
  public:
    explicit ObjectTree(const MibTreeNode &root);

    // In the order of identifiers.
    const std::vector<Object> &objects() const { return objects_; }
    // Null when there is none.
    const Object *named(std::string_view name) const;
    const Object *find(host::OidView oid) const;
    // The object with the longest identifier that this one begins with.
    const Object *deepest(host::OidView oid) const;

  private:
    void visit(const MibTreeNode &node, host::Oid oid);

    std::vector<Object> objects_;
    std::unordered_map<std::string_view, std::size_t> byName_;
};

inline bool isLeaf(const MibTreeNode &node)
{
    return node.ulKind == MIB_NODE_COLUMN || node.ulKind == MIB_NODE_SCALAR;
}

} // namespace ipmib::cli
