// SPDX-License-Identifier: BSD-3-Clause
// The instances of a platform: devices, or network stacks, of which one at a time is asked. Whoever answers a packet
// selects the one that the packet is for.
#pragma once

#include "catalogue.h"
#include "sys_up_time.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ipmib::host
{

class Instances
{
  public:
    static constexpr std::size_t first = 0; // which the platform began with, and which is selected at first

    // Both outlive it.
    Instances(Catalogue &catalogue, SysUpTime &upTime);
    ~Instances();
    Instances(const Instances &) = delete;
    Instances &operator=(const Instances &) = delete;

    // Whether the platform can have more than one.
    bool canBeMany() const { return hooks_ != nullptr; }
    // Begins another one, of which the platform knows by the argument, and returns its number: a small one, which is
    // free. Throws std::runtime_error with one line for the user.
    std::size_t create(const std::string &argument);
    // Ends it; if it was selected, the first one is.
    void destroy(std::size_t instance);

    // The platform, the tables and sysUpTime are its own from now on.
    void select(std::size_t instance);
    std::size_t selected() const { return selected_; }

    // What the platform knows by itself, in its order.
    struct Context {
        std::string name;
        std::string argument;
        std::string address; // where it shall be asked without its name; empty for nowhere
    };
    std::vector<Context> contexts() const;

  private:
    struct Instance {
        IpmibInstance *handle = nullptr; // null for the first one and for free numbers
        std::uint64_t uptimeVersion = 0; // of sysUpTime, that it has been told of
    };

    void showUpTime();

    Catalogue &catalogue_;
    SysUpTime &upTime_;
    const IpmibInstanceHooks *hooks_; // null for a platform with one instance
    std::vector<Instance> instances_ = std::vector<Instance>(1);
    std::size_t selected_ = first;
};

} // namespace ipmib::host
