// SPDX-License-Identifier: BSD-3-Clause
// The objects that a device has, by name and by identifier.
#pragma once

#include "host/catalogue.h"

namespace ipmib::cli
{

using host::Object;
using ObjectTree = host::Catalogue;

inline bool isLeaf(const MibTreeNode &node)
{
    return node.ulKind == MIB_NODE_COLUMN || node.ulKind == MIB_NODE_SCALAR;
}

} // namespace ipmib::cli
