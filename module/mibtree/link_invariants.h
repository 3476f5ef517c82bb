// SPDX-License-Identifier: BSD-3-Clause
// What an agent may rely on in a tree of records, as functions of the records themselves.
//
// Lists of nodes are depth-first. The functions know nothing of the catalogue, so that a wrong link in it does not go
// on to make its own check pass.
#pragma once

#include <ipmib/mib_tree.h>

#include <cstddef>
#include <cstdint>

namespace ipmib::mibtree::invariant
{

// Nodes of a tree, which lie elsewhere.
class Records
{
  public:
    template <class Nodes>
    constexpr Records(const Nodes &nodes) : begin_(nodes.data()), size_(nodes.size())
    {
    }
    constexpr const MibTreeNode *const *begin() const { return begin_; }
    constexpr const MibTreeNode *const *end() const { return begin_ + size_; }
    constexpr std::size_t size() const { return size_; }
    constexpr const MibTreeNode *front() const { return begin_[0]; }

  private:
    const MibTreeNode *const *begin_;
    std::size_t size_;
};

// --- Counting and walking ---

constexpr bool isLeaf(const MibTreeNode &node)
{
    return node.ulKind == MIB_NODE_COLUMN || node.ulKind == MIB_NODE_SCALAR;
}

constexpr bool isIdentifier(const MibTreeNode &node)
{
    return node.ulKind == MIB_NODE_PLAIN || node.ulKind == MIB_NODE_GROUP;
}

constexpr std::size_t countIf(Records nodes, bool (*condition)(const MibTreeNode &))
{
    std::size_t count = 0;
    for (const MibTreeNode *node : nodes) {
        count += condition(*node) ? 1 : 0;
    }
    return count;
}

constexpr bool all(Records nodes, bool (*condition)(const MibTreeNode &))
{
    return countIf(nodes, condition) == nodes.size();
}

constexpr std::size_t countKind(Records nodes, std::uint32_t kind)
{
    std::size_t count = 0;
    for (const MibTreeNode *node : nodes) {
        count += node->ulKind == kind ? 1 : 0;
    }
    return count;
}

template <class Condition>
constexpr std::size_t countChildren(const MibTreeNode &node, Condition condition)
{
    std::size_t count = 0;
    for (const MibTreeNode *child = node.pstFirstChild; child != nullptr; child = child->pstNextSibling) {
        count += condition(*child) ? 1 : 0;
    }
    return count;
}

template <class Condition>
constexpr bool allChildren(const MibTreeNode &node, Condition condition)
{
    return countChildren(node, [condition](const MibTreeNode &child) { return !condition(child); }) == 0;
}

// The depth-first successor of a node below `top`, or null at the end.
constexpr const MibTreeNode *following(const MibTreeNode *node, const MibTreeNode *top)
{
    if (node->pstFirstChild != nullptr) {
        return node->pstFirstChild;
    }
    while (node != top && node != nullptr && node->pstNextSibling == nullptr) {
        node = node->pstParent;
    }
    return node == top || node == nullptr ? nullptr : node->pstNextSibling;
}

// --- Structure ---

constexpr bool reachesEachOnce(Records nodes)
{
    const MibTreeNode *visited = nodes.front();
    for (const MibTreeNode *node : nodes) {
        if (visited != node) {
            return false;
        }
        visited = following(visited, nodes.front());
    }
    return visited == nullptr && nodes.front()->pstParent == nullptr && nodes.front()->pstNextSibling == nullptr;
}

constexpr bool isParentOfItsChildren(const MibTreeNode &node)
{
    return allChildren(node, [&node](const MibTreeNode &child) { return child.pstParent == &node; });
}

constexpr bool childrenAscend(const MibTreeNode &node)
{
    return allChildren(node, [](const MibTreeNode &child) {
        return child.pstNextSibling == nullptr || child.ulSubId < child.pstNextSibling->ulSubId;
    });
}

constexpr bool standsInPlace(const MibTreeNode &node)
{
    switch (node.ulKind) {
    case MIB_NODE_TABLE:
        return isIdentifier(*node.pstParent) && node.pstFirstChild != nullptr &&
               node.pstFirstChild->ulKind == MIB_NODE_ENTRY && node.pstFirstChild->pstNextSibling == nullptr;
    case MIB_NODE_ENTRY:
        return node.pstParent->ulKind == MIB_NODE_TABLE && node.ulSubId == 1 &&
               allChildren(node, [](const MibTreeNode &child) { return child.ulKind == MIB_NODE_COLUMN; });
    case MIB_NODE_COLUMN:
        return node.pstParent->ulKind == MIB_NODE_ENTRY && node.pstFirstChild == nullptr;
    case MIB_NODE_SCALAR:
        return isIdentifier(*node.pstParent) && node.pstFirstChild == nullptr;
    default:
        return node.pstParent == nullptr || isIdentifier(*node.pstParent);
    }
}

constexpr bool isGroupWithMembers(const MibTreeNode &node)
{
    const std::size_t members = countChildren(node, [](const MibTreeNode &child) {
        return child.ulKind == MIB_NODE_TABLE || child.ulKind == MIB_NODE_SCALAR;
    });
    return !isIdentifier(node) || (node.ulKind == MIB_NODE_GROUP) == (members != 0);
}

constexpr bool leavesAreChained(Records nodes)
{
    const MibTreeNode *expected = nodes.front()->pstNextLeaf;
    for (const MibTreeNode *node : nodes) {
        if (isLeaf(*node)) {
            if (expected != node) {
                return false;
            }
            expected = node->pstNextLeaf;
            continue;
        }
        const MibTreeNode *leaf = node;
        while (leaf != nullptr && !isLeaf(*leaf)) {
            leaf = following(leaf, node);
        }
        if (node->pstNextLeaf != leaf) {
            return false;
        }
    }
    return expected == nullptr;
}

} // namespace ipmib::mibtree::invariant
