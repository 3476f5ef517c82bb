// SPDX-License-Identifier: BSD-3-Clause
// A copy of the tree that a test can write faults into.
#pragma once

#include "mibtree/link_invariants.h"
#include "mibtree/nodes.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace ipmib::mibtree
{

// Links and index lists are the copy's own; its syntaxes are still those of the original.
class TreeCopy
{
  public:
    TreeCopy()
    {
        const std::vector<const MibTreeNode *> originals{
#define NODE(parent, subId, name, ...) &ip_tree_node_##name,
#include "mibtree/ip_mib.def"
        };
        for (const MibTreeNode *original : originals) {
            copies_[original] = *original;
            records_.push_back(&copies_[original]);
        }
        for (auto &[original, node] : copies_) {
            for (const MibTreeNode **link :
                 {&node.pstParent, &node.pstFirstChild, &node.pstNextLeaf, &node.pstNextSibling}) {
                *link = copyOf(*link);
            }
        }
        columns_.reserve(originals.size());
        for (const MibTreeNode *original : originals) {
            if (original->ulKind == MIB_NODE_ENTRY) {
                copyIndex(*original->pstIndex);
            }
        }
        for (auto &[original, node] : copies_) {
            node.pstIndex = node.pstIndex == nullptr ? nullptr : &indexes_.at(node.pstIndex);
        }
    }

    invariant::Records records() const
    {
        return records_;
    }

    MibTreeNode &operator[](const MibTreeNode &original)
    {
        return copies_.at(&original);
    }
    MibIndexList &indexOf(const MibTreeNode &original)
    {
        return indexes_.at(original.pstIndex);
    }
    const MibTreeNode *&indexColumn(const MibTreeNode &original, std::size_t place)
    {
        return columns_[static_cast<std::size_t>(indexOf(original).ppstColumns - columns_.data()) + place];
    }

  private:
    const MibTreeNode *copyOf(const MibTreeNode *original) const
    {
        return original == nullptr ? nullptr : &copies_.at(original);
    }

    void copyIndex(const MibIndexList &index)
    {
        indexes_[&index] = {index.ulLead, index.ulCount, columns_.data() + columns_.size()};
        for (std::uint32_t i = 0; i < index.ulCount; ++i) {
            columns_.push_back(copyOf(index.ppstColumns[i]));
        }
    }

    std::map<const MibTreeNode *, MibTreeNode> copies_;
    std::map<const MibIndexList *, MibIndexList> indexes_;
    std::vector<const MibTreeNode *> columns_;
    std::vector<const MibTreeNode *> records_;
};

} // namespace ipmib::mibtree
