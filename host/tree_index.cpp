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
    if (!leaves_.empty()) {
        const auto [end, other] = std::ranges::mismatch(leaves_.front().name, leaves_.back().name);
        common_ = static_cast<std::size_t>(end - leaves_.front().name.begin());
    }
    leavesOfLatest_ = findLeavesOf(latestRegion_.view());
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
    table.nameLength = name.size();
    table.end = leaves_.size();
}

std::size_t TreeIndex::leafAfter(OidView name) const
{
    if (leaves_.empty()) {
        return 0;
    }
    const OidView common = leaves_.front().name.first(common_);
    if (!isWithin(name, common)) {
        return std::is_lt(compare(name, common)) ? 0 : leaves_.size();
    }
    const OidView rest = name.subspan(common_);
    const auto after = std::ranges::upper_bound(
        leaves_, rest, [](OidView left, OidView right) { return std::is_lt(compare(left, right)); },
        [this](const Leaf &leaf) { return leaf.name.subspan(common_); });
    return static_cast<std::size_t>(after - leaves_.begin());
}

std::size_t TreeIndex::leafOf(OidView name)
{
    for (std::size_t leaf = latest_; leaf < leaves_.size() && leaf <= latest_ + 1; ++leaf) {
        if (isWithin(name, leaves_[leaf].name)) {
            latest_ = leaf;
            return leaf;
        }
    }
    const std::size_t after = leafAfter(name);
    if (after == 0 || !isWithin(name, leaves_[after - 1].name)) {
        return leaves_.size();
    }
    latest_ = after - 1;
    return latest_;
}

std::pair<std::size_t, std::size_t> TreeIndex::leavesOf(OidView region)
{
    if (std::ranges::equal(region, latestRegion_.view())) {
        return leavesOfLatest_;
    }
    const auto leaves = findLeavesOf(region);
    if (region.size() <= maxOidLength) {
        latestRegion_.assign(region);
        leavesOfLatest_ = leaves;
    }
    return leaves;
}

std::pair<std::size_t, std::size_t> TreeIndex::findLeavesOf(OidView region) const
{
    const std::size_t first = leafAfter(region);
    if (first > 0 && isWithin(region, leaves_[first - 1].name)) {
        return {first - 1, first};
    }
    const auto behind = std::partition_point(leaves_.begin() + static_cast<std::ptrdiff_t>(first), leaves_.end(),
                                             [region](const Leaf &leaf) { return isWithin(leaf.name, region); });
    return {first, static_cast<std::size_t>(behind - leaves_.begin())};
}

} // namespace ipmib::host
