// SPDX-License-Identifier: BSD-3-Clause
// The objects of a module's tree by name and by identifier.
#include "object_tree.h"

#include <algorithm>

namespace ipmib::cli
{

ObjectTree::ObjectTree(const MibTreeNode &root)
{
    visit(root, {});
}

void ObjectTree::visit(const MibTreeNode &node, host::Oid oid)
{
    oid.append(node.ulSubId);
    byName_.emplace(node.pszName, objects_.size());
    objects_.push_back({&node, oid});
    for (const MibTreeNode *child = node.pstFirstChild; child != nullptr; child = child->pstNextSibling) {
        visit(*child, oid);
    }
}

const Object *ObjectTree::named(std::string_view name) const
{
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : &objects_[found->second];
}

const Object *ObjectTree::find(host::OidView oid) const
{
    const auto found =
        std::lower_bound(objects_.begin(), objects_.end(), oid, [](const Object &object, host::OidView wanted) {
            return host::compare(object.oid.view(), wanted) < 0;
        });
    return found != objects_.end() && host::compare(found->oid.view(), oid) == 0 ? &*found : nullptr;
}

const Object *ObjectTree::deepest(host::OidView oid) const
{
    for (; !oid.empty(); oid = oid.first(oid.size() - 1)) {
        if (const Object *found = find(oid)) {
            return found;
        }
    }
    return nullptr;
}

} // namespace ipmib::cli
