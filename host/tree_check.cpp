// SPDX-License-Identifier: BSD-3-Clause
// The rules that the resolver relies on, checked in one walk over the tree.
#include "tree_check.h"

#include "oid.h"
#include "row_key.h"

#include <algorithm>
#include <vector>

namespace ipmib::host
{
namespace
{

// Whether a request can carry the column as part of an index.
bool isKeyPart(const MibTreeNode &column)
{
    const auto part = indexPart(column);
    return part && !part->isObjectId;
}

constexpr std::size_t maxNodes = 100'000;
constexpr std::uint32_t maxItems = 65'536;

std::uint32_t tableOf(std::uint32_t parameterId)
{
    return parameterId >> 8;
}

class Check
{
  public:
    std::string run(const MibTreeNode &root)
    {
        if (root.pstParent || root.pstNextSibling) {
            return "its root has a parent or a sibling";
        }
        if (visit(root, 1)) {
            std::sort(parameterIds_.begin(), parameterIds_.end());
            if (std::adjacent_find(parameterIds_.begin(), parameterIds_.end()) != parameterIds_.end()) {
                return "two objects have the same parameter id";
            }
        }
        return problem_;
    }

  private:
    bool fail(const MibTreeNode &node, const char *rule)
    {
        problem_ = std::string(node.pszName ? node.pszName : "a node without a name") + ": " + rule;
        return false;
    }

    bool visit(const MibTreeNode &node, std::size_t depth)
    {
        // Two sub-identifiers more are needed for an instance.
        if (++nodes_ > maxNodes || depth + 2 > maxOidLength) {
            return fail(node, "the tree is too large, or its links run in a circle");
        }
        if (!node.pszName) {
            return fail(node, "the name is missing");
        }
        const bool isLeaf = node.ulKind == MIB_NODE_COLUMN || node.ulKind == MIB_NODE_SCALAR;
        if (isLeaf) {
            return checkLeaf(node);
        }
        if (node.ulParamId != 0) {
            return fail(node, "only columns and scalars have a parameter id");
        }
        return checkChildren(node, depth) && (node.ulKind != MIB_NODE_ENTRY || checkIndex(node));
    }

    bool checkChildren(const MibTreeNode &node, std::size_t depth)
    {
        const MibTreeNode *previous = nullptr;
        for (const MibTreeNode *child = node.pstFirstChild; child; child = child->pstNextSibling) {
            if (child->pstParent != &node) {
                return fail(*child, "its parent link names another node");
            }
            if (previous && previous->ulSubId >= child->ulSubId) {
                return fail(*child, "its sub-identifier is not greater than its elder sibling's");
            }
            if ((child->ulKind == MIB_NODE_COLUMN) != (node.ulKind == MIB_NODE_ENTRY)) {
                return fail(*child, "columns, and nothing else, stand under entries");
            }
            if (!visit(*child, depth + 1)) {
                return false;
            }
            previous = child;
        }
        return true;
    }

    bool checkLeaf(const MibTreeNode &node)
    {
        if (node.pstFirstChild) {
            return fail(node, "a column or scalar has children");
        }
        if (!node.pstSyntax) {
            return fail(node, "a column or scalar has no syntax");
        }
        if (node.ulKind == MIB_NODE_COLUMN && node.pstIndex != node.pstParent->pstIndex) {
            return fail(node, "its index list is not its entry's");
        }
        if (node.ulParamId != 0) {
            parameterIds_.push_back(node.ulParamId);
        }
        return checkRestriction(node);
    }

    bool checkRestriction(const MibTreeNode &node)
    {
        const MibRestriction *restriction = node.pstSyntax->pstRestrict;
        if (!restriction) {
            return true;
        }
        const bool isEnum = restriction->ulRestrictKind == MIB_RESTRICT_ENUM;
        const MibListRef *list = isEnum ? restriction->pstEnums : restriction->pstRanges;
        const bool isKnown = isEnum || restriction->ulRestrictKind == MIB_RESTRICT_RANGE;
        return (isKnown && list && list->pItems && restriction->ulCount >= 1 && restriction->ulCount <= maxItems) ||
               fail(node, "its list of labels or ranges is missing");
    }

    bool checkIndex(const MibTreeNode &entry)
    {
        const MibIndexList *list = entry.pstIndex;
        if (!list || !list->ppstColumns || list->ulCount < 1 || list->ulCount > maxIndexParts) {
            return fail(entry, "its index list is missing or too long");
        }
        std::uint32_t table = 0;
        for (const MibTreeNode *column = entry.pstFirstChild; column; column = column->pstNextSibling) {
            if (!isServed(*column)) {
                continue;
            }
            if (table != 0 && tableOf(column->ulParamId) != table) {
                return fail(entry, "its columns' parameter ids name several tables");
            }
            table = tableOf(column->ulParamId);
        }
        for (const MibTreeNode *column : columnsOf(*list)) {
            if (!column || column->pstParent != &entry) {
                return fail(entry, "its index names a column that is not its own");
            }
            if (table != 0 && (tableOf(column->ulParamId) != table || !isKeyPart(*column))) {
                return fail(entry,
                            "an index column has no parameter id of its table, or a syntax that no index can have");
            }
        }
        return true;
    }

    std::size_t nodes_ = 0;
    std::vector<std::uint32_t> parameterIds_;
    std::string problem_;
};

} // namespace

std::string checkTree(const MibTreeNode *root)
{
    return root ? Check().run(*root) : "it has no root";
}

} // namespace ipmib::host
