// SPDX-License-Identifier: BSD-3-Clause
// Looks a module's tree over before anything relies on it, so that a broken module is an error message and not a crash.
#pragma once

#include <ipmib/mib_tree.h>

#include <string>

namespace ipmib::host
{

// One line that names the first node that breaks a rule, and the rule; empty when the tree can be served. The walk is
// bounded, also over a tree whose links run in circles.
std::string checkTree(const MibTreeNode *root);

// Whether the module answers for this object: it has a parameter id, and the MIB lets it be read.
inline bool isServed(const MibTreeNode &node)
{
    return (node.ulKind == MIB_NODE_COLUMN || node.ulKind == MIB_NODE_SCALAR) && node.ulParamId != 0 &&
           node.ulAccess != MIB_ACCESS_NOT_ACCESSIBLE;
}

} // namespace ipmib::host
