// SPDX-License-Identifier: BSD-3-Clause
// Links the records of a description; they never move.
#include "mib_description.h"

#include <stdexcept>

namespace ipmib::host
{

MibDescription::MibDescription(const char *rootName, std::uint32_t subId)
{
    MibTreeNode &root = nodes_.emplace_back();
    root.pszName = rootName;
    root.ulKind = MIB_NODE_PLAIN;
    root.ulSubId = subId;
    root.pszDefVal = "";
    root.ulAccess = MIB_ACCESS_NONE;
    byName_.emplace(rootName, &root);
}

MibTreeNode &MibDescription::named(std::string_view name)
{
    const auto found = byName_.find(name);
    if (found == byName_.end()) {
        throw std::logic_error("nothing is described as " + std::string(name));
    }
    return *found->second;
}

void MibDescription::add(std::string_view parent, std::uint32_t subId, const char *name, const SyntaxText &text,
                         std::uint32_t access, std::uint32_t status)
{
    MibTreeNode &above = named(parent);
    MibTreeNode &node = nodes_.emplace_back();
    node.pszName = name;
    node.ulKind = text.kind == MIB_NODE_COLUMN && above.ulKind != MIB_NODE_ENTRY ? +MIB_NODE_SCALAR : text.kind;
    node.pstSyntax = text.kind == MIB_NODE_COLUMN ? &syntax(text) : nullptr;
    node.ulSubId = subId;
    node.pszDefVal = "";
    node.ulStatus = status;
    node.ulAccess = access;
    link(above, node);
    byName_.emplace(name, &node);
}

void MibDescription::link(MibTreeNode &parent, MibTreeNode &node)
{
    node.pstParent = &parent;
    const MibTreeNode **place = &parent.pstFirstChild;
    while (*place != nullptr) {
        place = &const_cast<MibTreeNode *>(*place)->pstNextSibling; // it is one of nodes_
    }
    *place = &node;
}

const MibSyntax &MibDescription::syntax(const SyntaxText &text)
{
    MibSyntax &made = syntaxes_.emplace_back(MibSyntax{text.type, nullptr});
    const bool isEnum = !text.labels.empty();
    if (!isEnum && text.ranges.empty()) {
        return made;
    }
    const void *items = isEnum ? static_cast<const void *>(labels_.emplace_back(text.labels).data())
                               : ranges_.emplace_back(text.ranges).data();
    const MibListRef &list = lists_.emplace_back(MibListRef{items});
    const auto count = static_cast<std::uint32_t>(isEnum ? text.labels.size() : text.ranges.size());
    made.pstRestrict = &restrictions_.emplace_back(isEnum ? MibRestriction{MIB_RESTRICT_ENUM, count, nullptr, &list}
                                                          : MibRestriction{MIB_RESTRICT_RANGE, count, &list, nullptr});
    return made;
}

void MibDescription::index(std::string_view entry, std::initializer_list<std::string_view> columns)
{
    auto &nodes = indexColumns_.emplace_back();
    for (const std::string_view column : columns) {
        nodes.push_back(&named(column));
    }
    const MibIndexList &list =
        indexes_.emplace_back(MibIndexList{0, static_cast<std::uint32_t>(nodes.size()), nodes.data()});
    MibTreeNode &node = named(entry);
    node.pstIndex = &list;
    for (const MibTreeNode *column = node.pstFirstChild; column != nullptr; column = column->pstNextSibling) {
        named(column->pszName).pstIndex = &list;
    }
}

} // namespace ipmib::host
