// SPDX-License-Identifier: BSD-3-Clause
// The library can forget all contexts or none, so its list is shortened here. It is a list of one link, of which the
// head cannot be set: the one without a name is always in it, so there is another one to take the head's place.

#include "library_context.h"

#include "net_snmp.h"

#include <cstdlib>
#include <unordered_map>
#include <utility>

// The library exports them and declares them in none of its installed headers.
extern "C" {
void clear_lookup_cache(void);
void netsnmp_subtree_free(netsnmp_subtree *tree);
}

namespace ipmib::agent
{
namespace
{

// Where each context stands in the list. It is filled as contexts are asked for, since new ones come without a word.
std::unordered_map<std::string, subtree_context_cache *> placesByName;

subtree_context_cache *placeOf(const std::string &name)
{
    const auto known = placesByName.find(name);
    if (known != placesByName.end()) {
        return known->second;
    }
    for (subtree_context_cache *each = get_top_context_cache(); each != nullptr; each = each->next) {
        if (name == each->context_name) {
            return placesByName[name] = each;
        }
    }
    return nullptr;
}

// The places that no registration has, which the library keeps as registrations of nobody.
void freeTree(netsnmp_subtree *tree)
{
    while (tree != nullptr) {
        netsnmp_subtree *const next = tree->next;
        while (tree != nullptr) {
            netsnmp_subtree_free(std::exchange(tree, tree->children));
        }
        tree = next;
    }
}

} // namespace

void forgetContext(const std::string &name)
{
    subtree_context_cache *before = nullptr;
    subtree_context_cache *found = get_top_context_cache();
    while (found != nullptr && name != found->context_name) {
        before = std::exchange(found, found->next);
    }
    if (found == nullptr || (before == nullptr && found->next == nullptr)) {
        return;
    }
    freeTree(found->first_subtree);
    std::free(const_cast<char *>(found->context_name));
    if (before != nullptr) {
        before->next = found->next;
        std::free(found);
    } else {
        subtree_context_cache *const second = found->next;
        *found = *second;
        std::free(second);
    }
    placesByName.clear();
    clear_lookup_cache(); // which points to what is gone
}

void bringToFront(const std::string &name)
{
    subtree_context_cache *const front = get_top_context_cache();
    if (front == nullptr || name == front->context_name) {
        return;
    }
    subtree_context_cache *const found = placeOf(name);
    if (found != nullptr) {
        std::swap(found->context_name, front->context_name);
        std::swap(found->first_subtree, front->first_subtree);
        placesByName[front->context_name] = front;
        placesByName[found->context_name] = found;
    }
}

} // namespace ipmib::agent
