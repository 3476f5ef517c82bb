// SPDX-License-Identifier: BSD-3-Clause
// What `ipmib-netns` does: it holds namespaces, and opens sockets and files in them.
#pragma once

#include "core/descriptor.h"
#include "namespaces/helper_protocol.h"

#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace ipmib::platform
{

class HelperService
{
  public:
    // In the namespace of the calling thread, to which each answer comes back.
    HelperService();

    struct Reply {
        HelperAnswer answer{};
        Descriptor handed; // goes with it
    };
    // Nothing when it is no question: whoever sends that is not to be trusted.
    std::optional<Reply> answer(std::span<const std::byte> message);

  private:
    Reply open(const HelperQuestion &question);
    Reply obtain(const HelperQuestion &question);
    bool mayOpen(const std::string &path);
    bool mayUse(const HelperQuestion &question) const;

    static constexpr std::size_t mostNamespaces = 8192;

    Descriptor home_;
    std::vector<Descriptor> spaces_;
    std::set<std::string> named_; // whatever was asked for before it was settled
    bool follows_ = false;
    bool isSettled_ = false;
    bool mayFilter_ = true;
};

} // namespace ipmib::platform
