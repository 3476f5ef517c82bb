// SPDX-License-Identifier: BSD-3-Clause
#include "wake_ups.h"

#include "core/log.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

namespace ipmib::simulated
{

WakeUps::~WakeUps()
{
    if (timer_ >= 0) {
        close(timer_);
    }
}

void WakeUps::open()
{
    timer_ = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
    if (timer_ < 0) {
        platform::logError("simulated: no timer, links that go up and down are told late: %s", std::strerror(errno));
    }
}

void WakeUps::set(Sleeper &sleeper, std::optional<Clock::time_point> moment)
{
    forget(sleeper);
    if (moment && timer_ >= 0) {
        moments_[&sleeper] = *moment;
        inOrder_.emplace(*moment, &sleeper);
    }
    if (first() != timerIsSet_) {
        setTimer();
    }
}

void WakeUps::forget(Sleeper &sleeper)
{
    const auto found = moments_.find(&sleeper);
    if (found != moments_.end()) {
        inOrder_.erase({found->second, &sleeper});
        moments_.erase(found);
    }
}

void WakeUps::run()
{
    const Clock::time_point now = Clock::now();
    std::vector<Sleeper *> due;
    while (!inOrder_.empty() && inOrder_.begin()->first <= now) {
        due.push_back(inOrder_.begin()->second);
        forget(*due.back());
    }
    for (Sleeper *each : due) {
        each->wakeUp();
    }
    setTimer();
}

std::optional<WakeUps::Clock::time_point> WakeUps::first() const
{
    return inOrder_.empty() ? std::nullopt : std::optional(inOrder_.begin()->first);
}

// Setting it also takes back that it is readable.
void WakeUps::setTimer()
{
    timerIsSet_ = first();
    itimerspec setting{};
    if (timerIsSet_) {
        constexpr std::int64_t perSecond = 1'000'000'000;
        using std::chrono::nanoseconds;
        const auto moment = std::chrono::duration_cast<nanoseconds>(timerIsSet_->time_since_epoch()).count();
        setting.it_value.tv_sec = static_cast<time_t>(moment / perSecond);
        setting.it_value.tv_nsec = static_cast<long>(moment % perSecond);
    }
    timerfd_settime(timer_, TFD_TIMER_ABSTIME, &setting, nullptr);
}

} // namespace ipmib::simulated
