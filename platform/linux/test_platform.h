// SPDX-License-Identifier: BSD-3-Clause
// For tests: the platform started in a network namespace, and driven as a host drives it.
#pragma once

#include "linux_platform.h"
#include "netns/namespace.h"

#include <poll.h>

#include <algorithm>
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

    // Far longer than anything takes that a test waits for.
    static constexpr std::chrono::seconds patience{60};

    // Waits for what the platform waits for, until the condition holds; false when it does not in time.
    template <class Condition>
    bool waitUntil(Condition condition, std::chrono::milliseconds limit = patience)
    {
        const auto end = Clock::now() + limit;
        while (!condition()) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
            pollfd wait{platform_->descriptor(), POLLIN, 0};
            longestPause_ = std::max(longestPause_, Clock::now() - lastWait_);
            if (left.count() <= 0 || poll(&wait, 1, static_cast<int>(left.count())) < 0) {
                return condition();
            }
            lastWait_ = Clock::now();
            platform_->dispatch();
        }
        return true;
    }
    // The same for a condition that time alone makes true.
    template <class Condition>
    bool waitFor(Condition condition, std::chrono::milliseconds limit = patience)
    {
        const auto end = Clock::now() + limit;
        while (!condition()) {
            if (Clock::now() > end) {
                return false;
            }
            waitUntil([] { return false; }, std::chrono::milliseconds(100));
        }
        return true;
    }

    // The longest time in seconds between two waits of the platform: so late it may have read what was announced.
    double longestPause() const { return std::chrono::duration<double>(longestPause_).count(); }

  private:
    using Clock = std::chrono::steady_clock;

    netns::Inside inside_;
    std::optional<LinuxPlatform> platform_;
    Clock::time_point lastWait_ = Clock::now();
    Clock::duration longestPause_{};
};

} // namespace ipmib::platform
