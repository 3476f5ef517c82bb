// SPDX-License-Identifier: BSD-3-Clause
// Trees that a test puts together, in the records in which modules describe theirs.
#pragma once

#include <ipmib/mib_tree.h>

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <string>
#include <vector>

namespace ipmib::host::testing
{

// A column's or scalar's syntax; no range means no restriction.
struct TestSyntax {
    std::uint32_t type;
    std::vector<MibRangeItem> ranges = {};
    std::vector<MibEnumItem> labels = {};
};

inline TestSyntax integer(std::int32_t low, std::int32_t high)
{
    return {MIB_TYPE_INTEGER32, {{low, high}}};
}
inline TestSyntax unsigned32()
{
    return {MIB_TYPE_UNSIGNED32};
}
inline TestSyntax unsigned32(std::int32_t low, std::int32_t high)
{
    return {MIB_TYPE_UNSIGNED32, {{low, high}}};
}
inline TestSyntax labels(std::initializer_list<std::int32_t> values)
{
    TestSyntax syntax{MIB_TYPE_ENUM};
    for (const std::int32_t value : values) {
        syntax.labels.push_back({"label", value});
    }
    return syntax;
}
inline TestSyntax octets(std::int32_t shortest, std::int32_t longest)
{
    return {MIB_TYPE_OCTETS, {{shortest, longest}}};
}

class TestTree
{
  public:
    // A root with the identifier 1.
    TestTree();
    TestTree(const TestTree &) = delete;
    TestTree &operator=(const TestTree &) = delete;

    MibTreeNode &root() { return nodes_.front(); }

    // Nodes are added behind their elder siblings.
    MibTreeNode &add(MibTreeNode &parent, std::uint32_t subId, std::uint32_t kind, const char *name);
    MibTreeNode &addScalar(MibTreeNode &parent, std::uint32_t subId, std::uint32_t parameter, const TestSyntax &syntax);
    // A table whose index columns have the sub-identifiers 1 to n, are not accessible and have the parameter ids 1 to n
    // of the table id. Returns the entry.
    MibTreeNode &addTable(MibTreeNode &parent, std::uint32_t subId, std::uint32_t tableId,
                          const std::vector<TestSyntax> &index);
    // A readable column of this entry; its number in the parameter id is its sub-identifier.
    MibTreeNode &addColumn(MibTreeNode &entry, std::uint32_t subId, const TestSyntax &syntax);

    MibSyntax &syntax(const TestSyntax &syntax);
    MibIndexList &indexOf(const MibTreeNode &entry);

  private:
    std::deque<MibTreeNode> nodes_;
    std::deque<MibSyntax> syntaxes_;
    std::deque<MibRestriction> restrictions_;
    std::deque<MibListRef> refs_;
    std::deque<std::vector<MibRangeItem>> ranges_;
    std::deque<std::vector<MibEnumItem>> labels_;
    std::deque<MibIndexList> indexes_;
    std::deque<std::vector<const MibTreeNode *>> indexColumns_;
    std::deque<std::uint32_t> tableIds_; // of the entries, in the order of indexes_
};

} // namespace ipmib::host::testing
