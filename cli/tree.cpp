// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl tree: draws the objects at and below one.
#include "commands.h"
#include "identifier.h"
#include "listing.h"

#include "host/row_key.h"

#include <algorithm>
#include <vector>

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn objectColumns[] = {
    {"OBJECT", "object"},
    {"TYPE", "type", Align::left, 1},
    {"ACCESS", "access", Align::left, 2},
    {"SERVED", "served"},
};
constexpr ListingColumn objectColumnsForPrograms[] = {
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
std::string servedText(const ObjectTree &tree, const Object &object)
{
    if (!isLeaf(*object.node)) {
        return "";
    }
    const bool isOfServedTable = tree.tableOf(object.oid.view()) != nullptr;
    return object.isServed ? "yes" : isOfServedTable && isIndex(*object.node) ? "index" : "no";
}

Row rowFor(const ObjectTree &tree, const Object &object, const std::string &drawn)
{
    const MibTreeNode &node = *object.node;
    return {textCell(drawn + node.pszName + "(" + std::to_string(node.ulSubId) + ")"), textCell(typeText(node)),
            textCell(accessText(node)), textCell(servedText(tree, object))};
}

// The objects directly below one.
std::vector<const Object *> childrenOf(const ObjectTree &tree, const Object &object)
{
    std::vector<const Object *> children;
    const auto &objects = tree.objects();
    for (auto below = objects.begin() + (&object - objects.data()) + 1;
         below != objects.end() && host::isWithin(below->oid.view(), object.oid.view()); ++below) {
        if (below->oid.size() == object.oid.size() + 1) {
            children.push_back(&*below);
        }
    }
    return children;
}

// Children with what is drawn in front of them, which those of the last one do without.
void draw(const ObjectTree &tree, const Object &object, const std::string &drawn, const std::string &before,
          Listing &listing)
{
    listing.add(rowFor(tree, object, drawn));
    const std::vector<const Object *> children = childrenOf(tree, object);
    for (const Object *child : children) {
        const bool last = child == children.back();
        draw(tree, *child, before + (last ? "└─ " : "├─ "), before + (last ? "   " : "│  "), listing);
    }
}

void listObjects(const ObjectTree &tree, const Object &root, Listing &listing)
{
    for (const Object &object : tree.objects()) {
        if (host::isWithin(object.oid.view(), root.oid.view())) {
            const MibTreeNode &node = *object.node;
            listing.add({textCell(node.pszName), textCell(numbersText(object.oid.view())), textCell(typeText(node)),
                         textCell(accessText(node)), textCell(servedText(tree, object))});
        }
    }
}

} // namespace

int drawTree(LocalDevice &device, const Options &options, const Words &words)
{
    if (words.size() > 1) {
        throw host::UsageError("tree: \"" + words.back() + "\" is too much");
    }
    const ObjectTree &tree = device.tree();
    const Object *root =
        words.empty() ? &tree.objects().front() : tree.find(parseIdentifier(device, words.front()).view());
    if (root == nullptr) {
        throw host::UsageError(words.front() + ": there is no such object");
    }
    Listing listing(options.json ? std::span<const ListingColumn>(objectColumnsForPrograms) : objectColumns, options);
    if (options.json) {
        listObjects(tree, *root, listing);
    } else {
        draw(tree, *root, "", "", listing);
    }
    listing.finish();
    return host::exitSuccess;
}

} // namespace ipmib::cli
