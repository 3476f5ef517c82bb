// SPDX-License-Identifier: BSD-3-Clause
// One timer for all devices of a file. Most have nothing that is due by itself, and none has a descriptor of its own.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace ipmib::simulated
{

class WakeUps
{
  public:
    using Clock = std::chrono::steady_clock;

    class Sleeper
    {
      public:
        virtual void wakeUp() = 0;

      protected:
        Sleeper() = default;
        ~Sleeper() = default;
        Sleeper(const Sleeper &) = default;
        Sleeper &operator=(const Sleeper &) = default;
    };

    WakeUps() = default;
    ~WakeUps();
    WakeUps(const WakeUps &) = delete;
    WakeUps &operator=(const WakeUps &) = delete;

    // For devices whose clocks run.
    void open();
    // Readable when somebody is to be woken; -1 where time stands still.
    int descriptor() const { return timer_; }
    // Wakes that one at this moment, once, instead of any other; or not any more.
    void set(Sleeper &sleeper, std::optional<Clock::time_point> moment);
    // Wakes those whose moment has come.
    void run();

  private:
    void forget(Sleeper &sleeper);
    std::optional<Clock::time_point> first() const;
    void setTimer();

    int timer_ = -1;
    std::optional<Clock::time_point> timerIsSet_;
    std::map<Sleeper *, Clock::time_point> moments_;
    std::set<std::pair<Clock::time_point, Sleeper *>> inOrder_;
};

} // namespace ipmib::simulated
