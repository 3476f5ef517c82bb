// SPDX-License-Identifier: BSD-3-Clause
// The catalogue's objects by region.
#include "objects.h"

#include "host/row_key.h"

#include <ipmib/module.h>

#include <algorithm>

namespace ipmib::agentcheck
{
namespace
{

const host::Oid mib2Parent{1, 3, 6, 1, 2};

bool isLeaf(const MibTreeNode &node)
{
    return node.ulKind == MIB_NODE_COLUMN || node.ulKind == MIB_NODE_SCALAR;
}

} // namespace

Objects::Objects() : catalogue_({.trees = {{&ip_tree_node_iso, {}}, {&descriptions_.root(), mib2Parent}}})
{
    for (const host::Object &object : catalogue_.objects()) {
        if (isLeaf(*object.node)) {
            regionOf(object).objects.push_back(&object);
        }
    }
    std::ranges::stable_sort(regions_, Ascending(), &Region::root);
}

Region &Objects::regionOf(const host::Object &object)
{
    const host::OidView root = object.oid.view().first(object.oid.size() - 1);
    const auto known =
        std::ranges::find_if(regions_, [root](const Region &region) { return std::ranges::equal(region.root, root); });
    if (known != regions_.end()) {
        return *known;
    }
    const bool isTable = isColumn(*object.node);
    const MibTreeNode &above = *object.node->pstParent;
    return regions_.emplace_back(
        Region{(isTable ? above.pstParent : &above)->pszName, Name(root.begin(), root.end()), isTable, {}});
}

const Region *Objects::region(std::string_view name) const
{
    const auto found = std::ranges::find(regions_, name, &Region::name);
    return found == regions_.end() ? nullptr : &*found;
}

const host::Object *Objects::objectOf(const Name &name) const
{
    const host::Object *object = catalogue_.deepest(name);
    return object != nullptr && isLeaf(*object->node) ? object : nullptr;
}

std::string Objects::text(const Name &name) const
{
    const host::Object *object = catalogue_.deepest(name);
    if (object == nullptr) {
        return host::textOf(name);
    }
    const std::string rest = host::textOf(instanceOf(name, *object));
    return std::string(object->node->pszName) + (rest.empty() ? "" : ".") + rest;
}

const host::Object *Region::objectOf(const Name &instance) const
{
    const auto found = std::ranges::find_if(
        objects, [&instance](const host::Object *object) { return host::isWithin(instance, object->oid.view()); });
    return found == objects.end() ? nullptr : *found;
}

Name nameOf(const host::Object &object)
{
    const host::OidView oid = object.oid.view();
    return {oid.begin(), oid.end()};
}

Name extended(Name name, host::OidView more)
{
    name.insert(name.end(), more.begin(), more.end());
    return name;
}

host::OidView instanceOf(const Name &name, const host::Object &object)
{
    return host::OidView(name).subspan(object.oid.size());
}

bool isColumn(const MibTreeNode &node)
{
    return node.ulKind == MIB_NODE_COLUMN;
}

std::span<const MibTreeNode *const> indexOf(const MibTreeNode &node)
{
    return node.pstIndex == nullptr ? std::span<const MibTreeNode *const>() : host::columnsOf(*node.pstIndex);
}

Tag tagOf(const MibTreeNode &node)
{
    switch (node.pstSyntax->ulType) {
    case MIB_TYPE_UNSIGNED32:
        return Tag::unsigned32;
    case MIB_TYPE_COUNTER32:
        return Tag::counter32;
    case MIB_TYPE_COUNTER64:
        return Tag::counter64;
    case MIB_TYPE_TIMETICKS:
        return Tag::timeTicks;
    case MIB_TYPE_OCTETS:
        return Tag::octets;
    case MIB_TYPE_OID:
        return Tag::objectId;
    case MIB_TYPE_IPADDRESS:
        return Tag::ipAddress;
    default:
        return Tag::integer;
    }
}

bool isCounter(Tag tag)
{
    return tag == Tag::counter32 || tag == Tag::counter64;
}

} // namespace ipmib::agentcheck
