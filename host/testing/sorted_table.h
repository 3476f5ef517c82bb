// SPDX-License-Identifier: BSD-3-Clause
// A table whose rows a test lists, behind a handler that treats incomplete, short and long keys in the ways in which
// modules do.
#pragma once

#include "identifiers.h"
#include "test_tree.h"

#include <ipmib/message.h>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace ipmib::host::testing
{

class SortedTable
{
  public:
    // The octets of a part: its number alone, or its bytes.
    using Part = std::vector<SubId>;
    using Key = std::vector<Part>;

    struct Manners {
        // Where a part of the index says which length the next one has (2: 16, 4: 20), shorter octets mean the lowest
        // key of that type and longer ones the highest; behind them nothing is looked at.
        std::optional<std::size_t> typePart;
        // Keys whose first part is 0 are refused, although rows follow.
        bool refusesZero = false;
    };

    SortedTable(TestTree &tree, std::uint32_t id, const std::vector<TestSyntax> &index, Manners manners);

    void add(const Key &row);
    void clear() { rows_.clear(); }

    // The two columns, and all instances, as identifiers.
    std::vector<Identifier> objects() const;
    std::vector<Identifier> instances() const;

    std::uint32_t id() const { return id_; }
    std::uint32_t answer(MorRequest *request, MorReply *reply) const;
    // What the module answers for a column of a row.
    static std::uint32_t valueOf(std::uint32_t parameter, const Identifier &instance);

  private:
    using Rows = std::map<Identifier, Key>;

    Identifier encode(const Key &key) const;
    Rows::const_iterator find(MorRequest *request) const;
    std::uint32_t parameterOfPart(std::size_t i) const { return ip_ParamId(id_, static_cast<std::uint32_t>(i) + 1); }

    std::uint32_t id_;
    std::vector<TestSyntax> index_;
    Manners manners_;
    Identifier entry_;
    Rows rows_; // by instance
};

} // namespace ipmib::host::testing
