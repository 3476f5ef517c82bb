// SPDX-License-Identifier: BSD-3-Clause
// What the modules of this process have registered: their trees and their callbacks.
#pragma once

#include <ipmib/message.h>
#include <ipmib/mib_tree.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ipmib::host
{

class Registry
{
  public:
    struct Tree {
        std::string module;
        const MibTreeNode *root;
    };
    struct Callback {
        std::uint32_t module;
        MorCallback callback;
    };

    // The one that the entry points fill.
    static Registry &ofProcess();

    // A name is registered once: the second registration is refused, and the first stays in force. A tree that breaks
    // the rules of tree_check.h is refused.
    bool add(std::string_view module, const MibTreeNode *root);
    // Refused unless this very tree was registered under this name.
    bool remove(std::string_view module, const MibTreeNode *root);
    // The same for callbacks, keyed by the module id.
    bool add(std::uint32_t module, MorCallback callback);
    bool remove(std::uint32_t module);

    const std::vector<Tree> &trees() const { return trees_; }
    const std::vector<Callback> &callbacks() const { return callbacks_; }
    // Why the first registration since the last call was refused; empty when none was.
    std::string takeProblem();

  private:
    bool refuse(std::string problem);

    std::vector<Tree> trees_;
    std::vector<Callback> callbacks_;
    std::string problem_;
};

} // namespace ipmib::host
