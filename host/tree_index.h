// SPDX-License-Identifier: BSD-3-Clause
// The served part of a tree, flat and in identifier order: what an identifier names is found by a binary search.
#pragma once

#include "oid.h"
#include "row_cursors.h"
#include "row_key.h"

#include <ipmib/mib_tree.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

namespace ipmib::host
{

// Leaves that one request may ask for together: the columns of a table, or the scalars that share a table id.
struct Table {
    std::uint32_t id = 0;
    const char *name = "";
    IndexParts index;           // empty for scalars
    std::size_t nameLength = 0; // of a leaf, without the instance
    std::size_t end = 0;        // the leaf after the last one
    RowCursors cursors;
    bool complained = false; // about rows; said once
};

// A column or scalar that is served.
struct Leaf {
    OidView name; // without the instance
    const MibTreeNode *node;
    Table *table;
    std::size_t indexPart;   // which part of its own row's index the column is; else the number of parts
    bool complained = false; // about values; said once

    bool isIndex() const { return indexPart < table->index.size(); }
};

class TreeIndex
{
  public:
    // The tree must pass checkTree.
    explicit TreeIndex(const MibTreeNode &root);
    TreeIndex(const TreeIndex &) = delete;
    TreeIndex &operator=(const TreeIndex &) = delete;

    std::size_t size() const { return leaves_.size(); }
    Leaf &operator[](std::size_t leaf) { return leaves_[leaf]; }

    void select(std::size_t instance)
    {
        for (Table &table : tables_) {
            table.cursors.select(instance);
        }
    }

    void forget(std::size_t instance)
    {
        for (Table &table : tables_) {
            table.cursors.forget(instance);
        }
    }

    // The first leaf whose name is greater than this one.
    std::size_t leafAfter(OidView name) const;
    // The leaf that the identifier lies within; the number of leaves when there is none. Packets ask for the same leaf
    // again, or for the next one, so these are tried first.
    std::size_t leafOf(OidView name);
    // The leaves, from the first to before the second, that can have instances within the region. Mostly it is the one
    // that was asked for last.
    std::pair<std::size_t, std::size_t> leavesOf(OidView region);

  private:
    std::pair<std::size_t, std::size_t> findLeavesOf(OidView region) const;
    void visit(const MibTreeNode &node, Oid name, Table *table);
    Table &addTable(const MibTreeNode &entry);
    Table &tableOfScalar(std::uint32_t id);
    void addLeaf(const MibTreeNode &node, const Oid &name, Table &table);

    std::vector<Leaf> leaves_; // ascending
    std::size_t common_ = 0;   // how many sub-identifiers all leaves begin with
    std::size_t latest_ = 0;   // the leaf found last
    Oid latestRegion_;         // and the region, with its leaves
    std::pair<std::size_t, std::size_t> leavesOfLatest_;
    std::deque<Table> tables_; // leaves point to both, so they must not move
    std::deque<Oid> names_;
};

} // namespace ipmib::host
