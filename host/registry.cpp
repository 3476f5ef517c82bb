// SPDX-License-Identifier: BSD-3-Clause
// The registry, and its entry points as a loaded module's hooks find them in this process.
#include "registry.h"

#include "tree_check.h"

#include <algorithm>
#include <utility>

namespace ipmib::host
{

Registry &Registry::ofProcess()
{
    // Never destroyed: a module that is part of the program unloads after the last static object is gone.
    static Registry *const registry = new Registry;
    return *registry;
}

bool Registry::refuse(std::string problem)
{
    if (problem_.empty()) {
        problem_ = std::move(problem);
    }
    return false;
}

std::string Registry::takeProblem()
{
    return std::exchange(problem_, {});
}

bool Registry::add(std::string_view module, const MibTreeNode *root)
{
    if (module.empty()) {
        return refuse("a tree was registered without a name");
    }
    const auto sameName = [module](const Tree &tree) { return tree.module == module; };
    if (std::any_of(trees_.begin(), trees_.end(), sameName)) {
        return refuse("a tree named \"" + std::string(module) + "\" is registered already");
    }
    if (std::string problem = checkTree(root); !problem.empty()) {
        return refuse("the tree \"" + std::string(module) + "\" is refused: " + problem);
    }
    trees_.push_back({std::string(module), root});
    return true;
}

bool Registry::remove(std::string_view module, const MibTreeNode *root)
{
    const auto same = [module, root](const Tree &tree) { return tree.module == module && tree.root == root; };
    return std::erase_if(trees_, same) > 0 || refuse("no such tree \"" + std::string(module) + "\" is registered");
}

bool Registry::add(std::uint32_t module, MorCallback callback)
{
    const auto sameId = [module](const Callback &other) { return other.module == module; };
    if (!callback || std::any_of(callbacks_.begin(), callbacks_.end(), sameId)) {
        return refuse("a callback is missing, or its module id is bound already");
    }
    callbacks_.push_back({module, callback});
    return true;
}

bool Registry::remove(std::uint32_t module)
{
    return std::erase_if(callbacks_, [module](const Callback &other) { return other.module == module; }) > 0 ||
           refuse("no callback is bound to this module id");
}

} // namespace ipmib::host

namespace
{

std::uint32_t result(bool accepted)
{
    return accepted ? 0 : 1;
}

} // namespace

using ipmib::host::Registry;

// The two constants select nothing here.
uint32_t SNMP_RegisterMibTree(const char *module_name, uint32_t, uint32_t, const MibTreeNode *root)
{
    return result(Registry::ofProcess().add(module_name ? module_name : "", root));
}

uint32_t SNMP_DeregMibTree(const char *module_name, uint32_t, uint32_t, const MibTreeNode *root)
{
    return result(Registry::ofProcess().remove(module_name ? module_name : "", root));
}

uint32_t MOR_RegCallBack(uint32_t module_id, MorCallback callback)
{
    return result(Registry::ofProcess().add(module_id, callback));
}

uint32_t MOR_DeregCallBack(uint32_t module_id)
{
    return result(Registry::ofProcess().remove(module_id));
}
