// SPDX-License-Identifier: BSD-3-Clause
// For tests: the platform started in a network namespace, and driven as a host drives it.
#pragma once

#include "linux_platform.h"
#include "netns/namespace.h"

#include <poll.h>

#include <chrono>
#include <optional>

namespace ipmib::platform
{

class PlatformInside
{
  public:
    // The calling thread stays in the namespace as long as this lives.
    explicit PlatformInside(const netns::Namespace &space, const Settings &settings = {}) : inside_(space)
    {
        platform_.emplace();
        EXPECT_EQ(platform_->start(settings), "");
        setRunning(&*platform_);
    }
    ~PlatformInside()
    {
        setRunning(nullptr);
        platform_.reset(); // before the thread leaves the namespace
    }

    LinuxPlatform *operator->() { return &*platform_; }
    LinuxPlatform &operator*() { return *platform_; }

    // Waits for what the platform waits for, until the condition holds; false when it does not in time.
    template <class Condition>
    bool waitUntil(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(5))
    {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (!condition()) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
            pollfd wait{platform_->descriptor(), POLLIN, 0};
            if (left.count() <= 0 || poll(&wait, 1, static_cast<int>(left.count())) < 0) {
                return condition();
            }
            platform_->dispatch();
        }
        return true;
    }
    // The same for a condition that time alone makes true.
    template <class Condition>
    bool waitFor(Condition condition, std::chrono::milliseconds limit)
    {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            waitUntil([] { return false; }, std::chrono::milliseconds(100));
        }
        return true;
    }

  private:
    netns::Inside inside_;
    std::optional<LinuxPlatform> platform_;
};

} // namespace ipmib::platform
