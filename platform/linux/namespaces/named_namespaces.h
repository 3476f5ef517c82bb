// SPDX-License-Identifier: BSD-3-Clause
// The network namespaces that have a name: `ip netns` keeps them in /run/netns. They are followed as they come and go.
#pragma once

#include "core/platform_loop.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ipmib::platform
{

class NamedNamespaces
{
  public:
    struct Named {
        std::string name;
        std::string argument; // "netns PATH INODE": a namespace that is made anew under its name is another one
    };

    explicit NamedNamespaces(std::string folder = "/run/netns") : folder_(std::move(folder)) {}

    // The answer, when that fails, is one line for the user.
    std::string follow(PlatformLoop &loop);
    // By name.
    const std::vector<Named> &all() const { return all_; }
    // Differs after each change.
    std::uint64_t version() const { return version_; }

  private:
    void watchFolder();
    void takeEvents();
    void look();

    // A name is there before the namespace is, which no event tells of: while the kernel takes many namespaces away,
    // for seconds. And a name without one may be left behind for good.
    static constexpr unsigned soonMs = 20;
    static constexpr unsigned looksSoon = 100;
    static constexpr unsigned laterMs = 1000;
    static constexpr unsigned mostLooks = looksSoon + 600;

    std::string folder_;
    Descriptor events_;
    Timer again_;
    unsigned looks_ = 0;
    bool watchesFolder_ = false;
    std::vector<Named> all_;
    std::uint64_t version_ = 1;
};

} // namespace ipmib::platform
