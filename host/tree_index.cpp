// SPDX-License-Identifier: BSD-3-Clause
// Flattens a tree once, when it is registered.
#include "tree_index.h"

#include "tree_check.h"

#include <algorithm>

namespace ipmib::host
{
namespace
{

std::uint32_t tableId(std::uint32_t parameterId)
{
    return (parameterId >> 8) & 0xFF;
}

bool hasServedColumn(const MibTreeNode &entry)
{
    for (const MibTreeNode *column = entry.pstFirstChild; column; column = column->pstNextSibling) {
        if (isServed(*column)) {
            return true;
        }
    }
    return false;
}

} // namespace

TreeIndex::TreeIndex(const MibTreeNode &root)
{
    visit(root, {}, nullptr);
}

void TreeIndex::visit(const MibTreeNode &node, Oid name, Table *table)
{
    name.append(node.ulSubId);
    if (isServed(node)) {
        addLeaf(node, name, table ? *table : tableOfScalar(tableId(node.ulParamId)));
    }
    if (node.ulKind == MIB_NODE_ENTRY) {
        if (!hasServedColumn(node)) {
            return;
        }
        table = &addTable(node);
    }
    for (const MibTreeNode *child = node.pstFirstChild; child; child = child->pstNextSibling) {
        visit(*child, name, table);
    }
}

Table &TreeIndex::addTable(const MibTreeNode &entry)
{
    Table &table = tables_.emplace_back();
    table.name = entry.pstParent->pszName;
    for (const MibTreeNode *column : columnsOf(*entry.pstIndex)) {
        table.index.push_back(*indexPart(*column));
    }
    return table;
}

Table &TreeIndex::tableOfScalar(std::uint32_t id)
{
    for (Table &table : tables_) {
        if (table.index.empty() && table.id == id) {
            return table;
        }
    }
    Table &table = tables_.emplace_back();
    table.name = "scalars";
    return table;
}

void TreeIndex::addLeaf(const MibTreeNode &node, const Oid &name, Table &table)
{
    const auto isThis = [&node](const IndexPart &part) { return part.parameter == node.ulParamId; };
    const auto part = std::find_if(table.index.begin(), table.index.end(), isThis);
    names_.push_back(name);
    leaves_.push_back({names_.back().view(), &node, &table, static_cast<std::size_t>(part - table.index.begin())});
    table.id = tableId(node.ulParamId);
    table.end = leaves_.size();
}

std::size_t TreeIndex::leafAfter(OidView name) const
{
    const auto after = std::upper_bound(leaves_.begin(), leaves_.end(), name, [](OidView wanted, const Leaf &leaf) {
        return compare(wanted, leaf.name) < 0;
    });
    return static_cast<std::size_t>(after - leaves_.begin());
}

std::size_t TreeIndex::leafOf(OidView name) const
{
    const std::size_t after = leafAfter(name);
    return after > 0 && isWithin(name, leaves_[after - 1].name) ? after - 1 : leaves_.size();
}

std::pair<std::size_t, std::size_t> TreeIndex::leavesOf(OidView region) const
{
    if (const std::size_t leaf = leafOf(region); leaf < leaves_.size()) {
        return {leaf, leaf + 1};
    }
    const std::size_t first = leafAfter(region);
    std::size_t last = first;
    while (last < leaves_.size() && isWithin(leaves_[last].name, region)) {
        ++last;
    }
    return {first, last};
}

} // namespace ipmib::host
