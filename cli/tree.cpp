// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl tree: draws the objects at and below one.
#include "commands.h"
#include "identifier.h"
#include "listing.h"

#include "host/tree_check.h"

#include <algorithm>

namespace ipmib::cli
{
namespace
{

constexpr Column columns[] = {
    {"OBJECT", "object"},
    {"TYPE", "type", Align::left, 1},
    {"ACCESS", "access", Align::left, 2},
    {"SERVED", "served"},
};
constexpr Column columnsForPrograms[] = {
    {"", "object"}, {"", "oid"}, {"", "type"}, {"", "access"}, {"", "served"},
};

const char *typeText(const MibTreeNode &node)
{
    switch (node.ulKind) {
    case MIB_NODE_TABLE:
        return "table";
    case MIB_NODE_ENTRY:
        return "row";
    case MIB_NODE_PLAIN:
    case MIB_NODE_GROUP:
        return "";
    default:
        break;
    }
    switch (node.pstSyntax->ulType) {
    case MIB_TYPE_INTEGER:
        return "INTEGER";
    case MIB_TYPE_INTEGER32:
        return "Integer32";
    case MIB_TYPE_ENUM:
        return "enumeration";
    case MIB_TYPE_UNSIGNED32:
        return "Unsigned32";
    case MIB_TYPE_COUNTER32:
        return "Counter32";
    case MIB_TYPE_COUNTER64:
        return "Counter64";
    case MIB_TYPE_TIMETICKS:
        return "TimeTicks";
    case MIB_TYPE_OCTETS:
        return "OCTET STRING";
    case MIB_TYPE_OID:
        return "OBJECT IDENTIFIER";
    case MIB_TYPE_IPADDRESS:
        return "IpAddress";
    default:
        return "?";
    }
}

const char *accessText(const MibTreeNode &node)
{
    switch (node.ulAccess) {
    case MIB_ACCESS_NOT_ACCESSIBLE:
        return isLeaf(node) ? "not-accessible" : "";
    case MIB_ACCESS_READ_ONLY:
        return "read-only";
    case MIB_ACCESS_READ_WRITE:
        return "read-write";
    case MIB_ACCESS_READ_CREATE:
        return "read-create";
    default:
        return "";
    }
}

bool isIndex(const MibTreeNode &node)
{
    if (node.pstIndex == nullptr) {
        return false;
    }
    const auto parts = host::columnsOf(*node.pstIndex);
    return std::ranges::find(parts, &node) != parts.end();
}

// What is not accessible is told by the rows' names, when it is part of an index.
std::string servedText(const MibTreeNode &node)
{
    if (!isLeaf(node)) {
        return "";
    }
    return host::isServed(node) ? "yes" : node.ulParamId != 0 && isIndex(node) ? "index" : "no";
}

Row rowFor(const Object &object, const std::string &drawn)
{
    const MibTreeNode &node = *object.node;
    return {textCell(drawn + node.pszName + "(" + std::to_string(node.ulSubId) + ")"), textCell(typeText(node)),
            textCell(accessText(node)), textCell(servedText(node))};
}

// Children with what is drawn in front of them, which those of the last one do without.
void draw(const ObjectTree &tree, const Object &object, const std::string &drawn, const std::string &before,
          Listing &listing)
{
    listing.add(rowFor(object, drawn));
    for (const MibTreeNode *child = object.node->pstFirstChild; child != nullptr; child = child->pstNextSibling) {
        const bool last = child->pstNextSibling == nullptr;
        draw(tree, *tree.named(child->pszName), before + (last ? "└─ " : "├─ "), before + (last ? "   " : "│  "),
             listing);
    }
}

void list(const ObjectTree &tree, const Object &root, Listing &listing)
{
    for (const Object &object : tree.objects()) {
        if (host::isWithin(object.oid.view(), root.oid.view())) {
            const MibTreeNode &node = *object.node;
            listing.add({textCell(node.pszName), textCell(numbersText(object.oid.view())), textCell(typeText(node)),
                         textCell(accessText(node)), textCell(servedText(node))});
        }
    }
}

} // namespace

int drawTree(Session &session, const Options &options, const Words &words)
{
    if (words.size() > 1) {
        throw host::UsageError("tree: \"" + words.back() + "\" is too much");
    }
    const ObjectTree &tree = session.tree();
    const Object *root =
        words.empty() ? &tree.objects().front() : tree.find(parseIdentifier(session, words.front()).view());
    if (root == nullptr) {
        throw host::UsageError(words.front() + ": there is no such object");
    }
    Listing listing(options.json ? std::span<const Column>(columnsForPrograms) : columns, options);
    if (options.json) {
        list(tree, *root, listing);
    } else {
        draw(tree, *root, "", "", listing);
    }
    listing.finish();
    return host::exitSuccess;
}

} // namespace ipmib::cli
