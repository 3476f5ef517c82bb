// SPDX-License-Identifier: BSD-3-Clause
// The variables of a packet that wait for an answer, taken out row by row: those that ask for columns of one row share
// one request.
#pragma once

#include "oid.h"
#include "resolver.h"
#include "tree_index.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ipmib::host
{

// A variable on its way: the leaf that is tried, and the instance there that it asks for, or behind.
struct Pending {
    Variable *variable;
    std::size_t leaf;
    OidView instance;
    bool inclusive;
    std::size_t place = 0; // among the columns that are wanted of the row
};

class RowQueue
{
  public:
    explicit RowQueue(TreeIndex &leaves) : leaves_(leaves) {}

    void clear() { pending_.clear(); }
    void add(const Pending &pending) { pending_.push_back(pending); }

    // Takes out the first variable and all that concern the same row; false when none is left.
    bool takeRow();
    const std::vector<Pending> &row() const { return row_; }
    // The parameter ids of the row's columns, each once.
    const std::vector<std::uint32_t> &wanted() const { return wanted_; }

  private:
    bool isSameRow(const Pending &left, const Pending &right);

    TreeIndex &leaves_;
    std::vector<Pending> pending_; // all keep their memory from packet to packet
    std::vector<Pending> rest_;
    std::vector<Pending> row_;
    std::vector<std::uint32_t> wanted_;
};

inline bool RowQueue::takeRow()
{
    row_.clear();
    rest_.clear();
    wanted_.clear();
    for (Pending &each : pending_) {
        if (!row_.empty() && !isSameRow(each, row_.front())) {
            rest_.push_back(each);
            continue;
        }
        if (const Leaf &leaf = leaves_[each.leaf]; !leaf.isIndex()) {
            const auto known = std::find(wanted_.begin(), wanted_.end(), leaf.node->ulParamId);
            each.place = static_cast<std::size_t>(known - wanted_.begin());
            if (known == wanted_.end()) {
                wanted_.push_back(leaf.node->ulParamId);
            }
        }
        row_.push_back(each);
    }
    std::swap(pending_, rest_);
    return !row_.empty();
}

inline bool RowQueue::isSameRow(const Pending &left, const Pending &right)
{
    return leaves_[left.leaf].table == leaves_[right.leaf].table && left.inclusive == right.inclusive &&
           std::ranges::equal(left.instance, right.instance);
}

} // namespace ipmib::host
