// SPDX-License-Identifier: BSD-3-Clause
// A region of the resolver begins at a table's entry, or at a scalar.

#include "served_table.h"

#include "host/tree_check.h"

namespace ipmib::agent
{

namespace
{

std::vector<host::Oid> columnsOf(const host::Resolver::Region &region)
{
    std::vector<host::Oid> columns;
    for (const MibTreeNode *column = region.node->pstFirstChild; column; column = column->pstNextSibling) {
        if (host::isServed(*column)) {
            columns.push_back(region.root);
            columns.back().append(column->ulSubId);
        }
    }
    return columns;
}

} // namespace

std::vector<ServedTable> servedTables(const host::Resolver &resolver)
{
    std::vector<ServedTable> tables;
    for (const host::Resolver::Region &region : resolver.regions()) {
        const host::OidView root = region.root.view();
        if (region.node->ulKind == MIB_NODE_ENTRY) {
            tables.push_back({region.node->pstParent->pszName,
                              host::Oid(root.first(root.size() - 1)),
                              &region,
                              {region.root},
                              columnsOf(region)});
        } else {
            host::Oid instance = region.root;
            instance.append(0);
            tables.push_back({region.node->pszName, region.root, &region, instance, {region.root}});
        }
    }
    return tables;
}

std::string textOf(host::OidView identifier)
{
    std::string text;
    for (const host::SubId id : identifier) {
        text += (text.empty() ? "" : ".") + std::to_string(id);
    }
    return text;
}

} // namespace ipmib::agent
