// SPDX-License-Identifier: BSD-3-Clause
// The 279 records of the tree under their exported names, ip_tree_node_<descriptor>.
#pragma once

#include <ipmib/mib_tree.h>

extern "C" {
#pragma GCC visibility push(default)
#define NODE(parent, subId, name, ...) extern const MibTreeNode ip_tree_node_##name;
#include "mibtree/ip_mib.def"
#pragma GCC visibility pop
}
