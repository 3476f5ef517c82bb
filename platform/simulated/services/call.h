// SPDX-License-Identifier: BSD-3-Clause
// What every service begins with: whether it can be answered now.
#pragma once

#include "core/codes.h"
#include "simulated_platform.h"

#include <ipmib/platform.h>

namespace ipmib::simulated
{

using platform::noMore;
using platform::notFound;
using platform::success;

class Call
{
  public:
    // A service that is asked about an interface names it.
    explicit Call(Service service, std::uint32_t ifIndex = 0) : platform_(running())
    {
        if (platform_ == nullptr || platform_->hasFailures()) {
            *this = decided(service, ifIndex);
        }
    }

    // False when the service fails now; then result() is what it answers.
    explicit operator bool() const { return platform_ != nullptr; }
    std::uint32_t result() const { return result_; }

    const Device &device() const { return platform_->device(); }
    platform::RowHopLimit &rowHopLimit() const { return platform_->rowHopLimit(); }

  private:
    Call(SimulatedPlatform *platform, std::uint32_t result) : platform_(platform), result_(result) {}
    static Call decided(Service service, std::uint32_t ifIndex);

    SimulatedPlatform *platform_;
    std::uint32_t result_ = success;
};

} // namespace ipmib::simulated
