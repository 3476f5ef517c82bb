// SPDX-License-Identifier: BSD-3-Clause
// The whole tree, node by node, as objects.txt tells it: what stands in a record, in words.
#include "mibtree/nodes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace
{

using Words = std::map<std::uint32_t, const char *>;

std::string word(const Words &words, std::uint32_t code)
{
    const auto found = words.find(code);
    return found == words.end() ? "code " + std::to_string(code) : found->second;
}

std::string kind(const MibTreeNode &node)
{
    return word({{MIB_NODE_TABLE, "table"},
                 {MIB_NODE_ENTRY, "entry"},
                 {MIB_NODE_COLUMN, "column"},
                 {MIB_NODE_SCALAR, "scalar"},
                 {MIB_NODE_PLAIN, "node"},
                 {MIB_NODE_GROUP, "group"}},
                node.ulKind);
}

std::string access(const MibTreeNode &node)
{
    return word({{MIB_ACCESS_NOT_ACCESSIBLE, "not-accessible"},
                 {MIB_ACCESS_READ_ONLY, "read-only"},
                 {MIB_ACCESS_READ_WRITE, "read-write"},
                 {MIB_ACCESS_READ_CREATE, "read-create"},
                 {MIB_ACCESS_NONE, "-"}},
                node.ulAccess);
}

std::string status(const MibTreeNode &node)
{
    return word({{MIB_STATUS_NONE, "-"}, {MIB_STATUS_DEPRECATED, "deprecated"}, {MIB_STATUS_CURRENT, "current"}},
                node.ulStatus);
}

std::string restriction(const MibRestriction &restriction)
{
    std::string text;
    for (std::uint32_t i = 0; i < restriction.ulCount; ++i) {
        text += i == 0 ? "" : "|";
        if (restriction.ulRestrictKind == MIB_RESTRICT_ENUM) {
            const auto &item = static_cast<const MibEnumItem *>(restriction.pstEnums->pItems)[i];
            text += std::string(item.pszLabel) + "=" + std::to_string(item.lValue);
        } else {
            const auto &item = static_cast<const MibRangeItem *>(restriction.pstRanges->pItems)[i];
            text += std::to_string(item.lLow) + ".." + std::to_string(item.lHigh);
        }
    }
    return "(" + text + ")";
}

std::string syntax(const MibTreeNode &node)
{
    if (node.pstSyntax == nullptr) {
        return "-";
    }
    const std::string type = word({{MIB_TYPE_INTEGER, "INTEGER"},
                                   {MIB_TYPE_INTEGER32, "Integer32"},
                                   {MIB_TYPE_ENUM, "ENUM"},
                                   {MIB_TYPE_UNSIGNED32, "Unsigned32"},
                                   {MIB_TYPE_COUNTER32, "Counter32"},
                                   {MIB_TYPE_COUNTER64, "Counter64"},
                                   {MIB_TYPE_TIMETICKS, "TimeTicks"},
                                   {MIB_TYPE_OCTETS, "OctetString"},
                                   {MIB_TYPE_OID, "ObjectIdentifier"},
                                   {MIB_TYPE_IPADDRESS, "IpAddress"}},
                                  node.pstSyntax->ulType);
    return node.pstSyntax->pstRestrict == nullptr ? type : type + restriction(*node.pstSyntax->pstRestrict);
}

std::string parameter(const MibTreeNode &node)
{
    char text[16];
    std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(node.ulParamId));
    return node.ulParamId == 0 ? "-" : text;
}

std::string index(const MibTreeNode &node)
{
    std::string text;
    for (std::uint32_t i = 0; node.pstIndex != nullptr && i < node.pstIndex->ulCount; ++i) {
        text += (i == 0 ? " by " : ",") + std::string(node.pstIndex->ppstColumns[i]->pszName);
    }
    return text;
}

void describe(const MibTreeNode &node, const std::string &parent, std::vector<std::string> &lines)
{
    const std::string identifier = parent + std::to_string(node.ulSubId);
    lines.push_back(identifier + " " + node.pszName + " " + kind(node) + " " + syntax(node) + " " + access(node) + " " +
                    status(node) + " " + parameter(node) + index(node) +
                    (node.pszDefVal[0] == '\0' ? "" : std::string(" default ") + node.pszDefVal));
    for (const MibTreeNode *child = node.pstFirstChild; child != nullptr; child = child->pstNextSibling) {
        describe(*child, identifier + ".", lines);
    }
}

TEST(TreeObjects, AreThoseOfTheList)
{
    std::vector<std::string> lines;
    describe(ip_tree_node_iso, "", lines);
    std::ifstream list(IPMIB_TREE_OBJECTS);
    ASSERT_TRUE(list.is_open()) << IPMIB_TREE_OBJECTS;
    std::size_t number = 0;
    for (std::string line; std::getline(list, line);) {
        if (!line.empty() && line[0] != '#') {
            ASSERT_LT(number, lines.size()) << line;
            EXPECT_EQ(lines[number], line);
            ++number;
        }
    }
    EXPECT_EQ(number, lines.size());
}

} // namespace
