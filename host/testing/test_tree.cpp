// SPDX-License-Identifier: BSD-3-Clause
// Links the records of a test's tree.
#include "test_tree.h"

#include <ipmib/message.h>

#include <algorithm>

namespace ipmib::host::testing
{

TestTree::TestTree()
{
    nodes_.push_back({});
    root().pszName = "root";
    root().ulKind = MIB_NODE_PLAIN;
    root().ulSubId = 1;
    root().pszDefVal = "";
    root().ulAccess = MIB_ACCESS_NONE;
}

MibTreeNode &TestTree::add(MibTreeNode &parent, std::uint32_t subId, std::uint32_t kind, const char *name)
{
    MibTreeNode &node = nodes_.emplace_back();
    node.pszName = name;
    node.ulKind = kind;
    node.pstParent = &parent;
    node.ulSubId = subId;
    node.pszDefVal = "";
    node.ulAccess = kind == MIB_NODE_COLUMN || kind == MIB_NODE_SCALAR ? MIB_ACCESS_READ_ONLY : MIB_ACCESS_NONE;
    const MibTreeNode **link = &parent.pstFirstChild;
    while (*link) {
        link = &const_cast<MibTreeNode *>(*link)->pstNextSibling;
    }
    *link = &node;
    return node;
}

MibSyntax &TestTree::syntax(const TestSyntax &wanted)
{
    MibSyntax &made = syntaxes_.emplace_back(MibSyntax{wanted.type, nullptr});
    const bool isEnum = !wanted.labels.empty();
    if (!isEnum && wanted.ranges.empty()) {
        return made;
    }
    const void *items = isEnum ? static_cast<const void *>(labels_.emplace_back(wanted.labels).data())
                               : ranges_.emplace_back(wanted.ranges).data();
    const MibListRef &list = refs_.emplace_back(MibListRef{items});
    const auto count = static_cast<std::uint32_t>(isEnum ? wanted.labels.size() : wanted.ranges.size());
    made.pstRestrict = &restrictions_.emplace_back(isEnum ? MibRestriction{MIB_RESTRICT_ENUM, count, nullptr, &list}
                                                          : MibRestriction{MIB_RESTRICT_RANGE, count, &list, nullptr});
    return made;
}

MibTreeNode &TestTree::addScalar(MibTreeNode &parent, std::uint32_t subId, std::uint32_t parameter,
                                 const TestSyntax &wanted)
{
    MibTreeNode &scalar = add(parent, subId, MIB_NODE_SCALAR, "scalar");
    scalar.pstSyntax = &syntax(wanted);
    scalar.ulParamId = parameter;
    return scalar;
}

MibTreeNode &TestTree::addTable(MibTreeNode &parent, std::uint32_t subId, std::uint32_t tableId,
                                const std::vector<TestSyntax> &index)
{
    MibTreeNode &entry = add(add(parent, subId, MIB_NODE_TABLE, "table"), 1, MIB_NODE_ENTRY, "entry");
    auto &columns = indexColumns_.emplace_back();
    tableIds_.push_back(tableId);
    MibIndexList &list = indexes_.emplace_back();
    entry.pstIndex = &list;
    for (const TestSyntax &part : index) {
        MibTreeNode &column = addColumn(entry, static_cast<std::uint32_t>(columns.size()) + 1, part);
        column.ulAccess = MIB_ACCESS_NOT_ACCESSIBLE;
        columns.push_back(&column);
    }
    list = {0, static_cast<std::uint32_t>(columns.size()), columns.data()};
    return entry;
}

MibTreeNode &TestTree::addColumn(MibTreeNode &entry, std::uint32_t subId, const TestSyntax &wanted)
{
    MibTreeNode &column = add(entry, subId, MIB_NODE_COLUMN, "column");
    const auto list = std::find_if(indexes_.begin(), indexes_.end(),
                                   [&entry](const MibIndexList &each) { return &each == entry.pstIndex; });
    column.pstSyntax = &syntax(wanted);
    column.pstIndex = entry.pstIndex;
    column.ulParamId = ip_ParamId(tableIds_[static_cast<std::size_t>(list - indexes_.begin())], subId);
    return column;
}

MibIndexList &TestTree::indexOf(const MibTreeNode &entry)
{
    return const_cast<MibIndexList &>(*entry.pstIndex);
}

} // namespace ipmib::host::testing
