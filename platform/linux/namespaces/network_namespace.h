// SPDX-License-Identifier: BSD-3-Clause
// The network namespace in which descriptors are opened: sockets and files of /proc belong for good to the one in which
// they were. One thread, so there is one choice at a time.
#pragma once

#include "core/descriptor.h"
#include "namespaces/namespace_helper.h"

#include <cstdint>
#include <string>

namespace ipmib::platform
{

class NetworkNamespace
{
  public:
    NetworkNamespace() = default;
    ~NetworkNamespace();
    NetworkNamespace(const NetworkNamespace &) = delete;
    NetworkNamespace &operator=(const NetworkNamespace &) = delete;

    // As NamespaceHelper::open; the helper outlives it.
    std::string open(NamespaceHelper &helper, const std::string &which);
    bool isOpen() const { return helper_ != nullptr; }

    // From now on descriptors are opened in this one; null is the process's own.
    static void choose(const NetworkNamespace *chosen);
    static const NetworkNamespace *chosen();

    // In the one that is chosen; no descriptor and errno where that is not possible. The socket does not block.
    static Descriptor openNetlinkSocket(int protocol);
    static Descriptor openFile(const char *path);

  private:
    NamespaceHelper *helper_ = nullptr;
    std::uint32_t space_ = 0;
};

// For a while descriptors are opened in this namespace.
class ChosenNamespace
{
  public:
    explicit ChosenNamespace(const NetworkNamespace *chosen) : before_(NetworkNamespace::chosen())
    {
        NetworkNamespace::choose(chosen);
    }
    ~ChosenNamespace() { NetworkNamespace::choose(before_); }
    ChosenNamespace(const ChosenNamespace &) = delete;
    ChosenNamespace &operator=(const ChosenNamespace &) = delete;

  private:
    const NetworkNamespace *before_;
};

} // namespace ipmib::platform
