// SPDX-License-Identifier: BSD-3-Clause
// What an agent may rely on in each record of a tree and in what hangs from it: syntax, index, parameter id, codes and
// texts. Functions of the records themselves, like those of the links.
#pragma once

#include "mibtree/link_invariants.h"

#include <ipmib/message.h>

#include <cstdint>
#include <string_view>

namespace ipmib::mibtree::invariant
{

// --- Syntax ---

constexpr bool hasSyntaxIfLeaf(const MibTreeNode &node)
{
    return isLeaf(node) == (node.pstSyntax != nullptr);
}

constexpr bool isRestriction(const MibRestriction &restriction, std::uint32_t kind)
{
    return restriction.ulRestrictKind == kind && restriction.ulCount != 0 &&
           (restriction.pstRanges != nullptr) == (kind == MIB_RESTRICT_RANGE) &&
           (restriction.pstEnums != nullptr) == (kind == MIB_RESTRICT_ENUM);
}

constexpr bool isRestrictedAsTyped(const MibTreeNode &node)
{
    if (node.pstSyntax == nullptr) {
        return true;
    }
    const MibRestriction *restriction = node.pstSyntax->pstRestrict;
    switch (node.pstSyntax->ulType) {
    case MIB_TYPE_ENUM:
        return restriction != nullptr && isRestriction(*restriction, MIB_RESTRICT_ENUM);
    case MIB_TYPE_INTEGER:
    case MIB_TYPE_OCTETS:
        return restriction != nullptr && isRestriction(*restriction, MIB_RESTRICT_RANGE);
    case MIB_TYPE_INTEGER32:
    case MIB_TYPE_UNSIGNED32:
        return restriction == nullptr || isRestriction(*restriction, MIB_RESTRICT_RANGE);
    case MIB_TYPE_COUNTER32:
    case MIB_TYPE_COUNTER64:
    case MIB_TYPE_TIMETICKS:
    case MIB_TYPE_OID:
    case MIB_TYPE_IPADDRESS:
        return restriction == nullptr;
    default:
        return false;
    }
}

constexpr bool areApart(const MibSyntax &left, const MibSyntax &right)
{
    if (left.pstRestrict == nullptr || right.pstRestrict == nullptr) {
        return &left != &right;
    }
    const auto list = [](const MibRestriction &restriction) {
        return restriction.pstRanges != nullptr ? restriction.pstRanges : restriction.pstEnums;
    };
    // Lists of ranges and of labels are of different types, and so apart.
    return &left != &right && left.pstRestrict != right.pstRestrict &&
           list(*left.pstRestrict) != list(*right.pstRestrict) &&
           (left.pstRestrict->ulRestrictKind != right.pstRestrict->ulRestrictKind ||
            list(*left.pstRestrict)->pItems != list(*right.pstRestrict)->pItems);
}

constexpr bool syntaxesAreOwn(Records nodes)
{
    for (const MibTreeNode *leaf = nodes.front()->pstNextLeaf; leaf != nullptr; leaf = leaf->pstNextLeaf) {
        for (const MibTreeNode *other = leaf->pstNextLeaf; other != nullptr; other = other->pstNextLeaf) {
            if (!areApart(*leaf->pstSyntax, *other->pstSyntax)) {
                return false;
            }
        }
    }
    return true;
}

// --- Indexes ---

constexpr bool hasIndexOfItsEntry(const MibTreeNode &node)
{
    switch (node.ulKind) {
    case MIB_NODE_ENTRY:
        return node.pstIndex != nullptr;
    case MIB_NODE_COLUMN:
        return node.pstIndex == node.pstParent->pstIndex;
    default:
        return node.pstIndex == nullptr;
    }
}

constexpr bool indexesOwnColumns(const MibTreeNode &node)
{
    if (node.ulKind != MIB_NODE_ENTRY) {
        return true;
    }
    for (std::uint32_t i = 0; i < node.pstIndex->ulCount; ++i) {
        if (node.pstIndex->ppstColumns[i]->pstParent != &node) {
            return false;
        }
    }
    return node.pstIndex->ulCount >= 1 && node.pstIndex->ulCount <= 4;
}

constexpr bool indexesAdjoin(Records nodes)
{
    const MibIndexList *before = nullptr;
    for (const MibTreeNode *node : nodes) {
        if (node->ulKind == MIB_NODE_ENTRY) {
            if (before != nullptr && node->pstIndex->ppstColumns != before->ppstColumns + before->ulCount) {
                return false;
            }
            before = node->pstIndex;
        }
    }
    return true;
}

// --- Parameter ids ---

inline constexpr std::uint32_t tableCount = 11;

constexpr bool carriesParamIdIfLeaf(const MibTreeNode &node)
{
    const std::uint32_t first = ip_ParamId(1, 1);
    const std::uint32_t last = ip_ParamId(tableCount, 0xFF);
    return node.ulParamId == 0 || (isLeaf(node) && node.ulParamId >= first && node.ulParamId <= last);
}

// The leaf with a parameter id; null when there is none, or more than one.
constexpr const MibTreeNode *servedLeaf(Records nodes, std::uint32_t paramId)
{
    const MibTreeNode *served = nullptr;
    for (const MibTreeNode *node : nodes) {
        if (node->ulParamId == paramId) {
            if (served != nullptr) {
                return nullptr;
            }
            served = node;
        }
    }
    return served;
}

constexpr bool paramIdsNumberTables(Records nodes)
{
    std::size_t numbered = 0;
    for (std::uint32_t table = 1; table <= tableCount; ++table) {
        const MibTreeNode *first = servedLeaf(nodes, ip_ParamId(table, 1));
        if (first == nullptr) {
            return false;
        }
        std::uint32_t column = 1;
        for (const MibTreeNode *leaf = first; leaf != nullptr; leaf = servedLeaf(nodes, ip_ParamId(table, ++column))) {
            if (leaf->pstParent != first->pstParent) {
                return false;
            }
            ++numbered;
        }
    }
    return numbered == countIf(nodes, [](const MibTreeNode &node) { return node.ulParamId != 0; });
}

constexpr bool indexParamIdsLead(const MibTreeNode &node)
{
    if (node.ulKind != MIB_NODE_ENTRY ||
        countChildren(node, [](const MibTreeNode &column) { return column.ulParamId != 0; }) == 0) {
        return true;
    }
    for (std::uint32_t i = 0; i < node.pstIndex->ulCount; ++i) {
        if ((node.pstIndex->ppstColumns[i]->ulParamId & 0xFF) != i + 1) {
            return false;
        }
    }
    return true;
}

// --- Codes and texts ---

constexpr bool codesAreKnown(const MibTreeNode &node)
{
    if (isIdentifier(node)) {
        return node.ulStatus == MIB_STATUS_NONE && node.ulAccess == MIB_ACCESS_NONE;
    }
    if (node.ulStatus != MIB_STATUS_DEPRECATED && node.ulStatus != MIB_STATUS_CURRENT) {
        return false;
    }
    switch (node.ulKind) {
    case MIB_NODE_TABLE:
    case MIB_NODE_ENTRY:
        return node.ulAccess == MIB_ACCESS_NOT_ACCESSIBLE;
    case MIB_NODE_COLUMN:
        return node.ulAccess == MIB_ACCESS_NOT_ACCESSIBLE || node.ulAccess == MIB_ACCESS_READ_ONLY ||
               node.ulAccess == MIB_ACCESS_READ_WRITE || node.ulAccess == MIB_ACCESS_READ_CREATE;
    case MIB_NODE_SCALAR:
        return node.ulAccess == MIB_ACCESS_READ_ONLY || node.ulAccess == MIB_ACCESS_READ_WRITE;
    default:
        return false;
    }
}

constexpr bool sparesAreZero(const MibTreeNode &node)
{
    return node.ulSpare1 == 0 && node.ulSpare2 == 0 && node.ulSpare3 == 0 && node.ulSpare4 == 0 &&
           (node.pstIndex == nullptr || node.pstIndex->ulLead == 0);
}

constexpr bool textsAreThere(const MibTreeNode &node)
{
    const std::string_view name = node.pszName;
    const std::string_view defVal = node.pszDefVal;
    return !name.empty() && name.find('_') == name.npos &&
           (defVal.empty() ||
            (isLeaf(node) && defVal.substr(0, 2) == "{ " && defVal.substr(defVal.size() - 2) == " }"));
}

} // namespace ipmib::mibtree::invariant
