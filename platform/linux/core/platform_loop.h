// SPDX-License-Identifier: BSD-3-Clause
// What the platform waits for, behind one descriptor that the host's own event loop watches.
#pragma once

#include "core/descriptor.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>

namespace ipmib::platform
{

class Timer;

class PlatformLoop
{
  public:
    // Announcements are what the kernel has told us: they are looked at when a packet of requests begins. Everything
    // else (reading a table again, timers, files) happens between packets.
    enum class Work { announcement, background };
    using Handler = std::function<void()>;

    // Opens the epoll instance; false with errno set when the system has none to give.
    bool open();
    void close();

    // The handler runs while the descriptor is readable.
    bool watch(int fd, Work work, Handler handler);
    // Before the descriptor is closed. May be called from any handler.
    void forget(int fd);
    // Whether its handler is called for a while; the kernel may lack the memory to begin again. False then.
    bool heed(int fd, bool on);

    int descriptor() const { return epoll_.get(); }
    // Runs handlers whose descriptors are readable, one after the other, until none is or a turn is over; never blocks.
    void run();
    // Runs each handler of announcements whose descriptor is readable once.
    void runAnnouncements();
    // Whether a packet waits for the handler that runs.
    bool packetWaits() const { return packetWaits_; }

  private:
    struct Watch {
        Work work;
        Handler handler;
    };
    // Between packets, before the last handler, which takes about as long.
    static constexpr std::chrono::microseconds longestTurn{400};
    static constexpr unsigned mostInTurn = 32;
    using Clock = std::chrono::steady_clock; // CLOCK_MONOTONIC

    friend class Timer;
    bool openTimers();
    void setTimers();
    void runTimers();

    Descriptor epoll_;
    Descriptor timers_; // one for all, which is set to the first of them
    std::set<std::pair<Clock::time_point, Timer *>> armed_;
    bool packetWaits_ = false;
    std::map<int, std::shared_ptr<Watch>> watches_; // shared, so that a handler may forget itself
};

// A handler that runs once, some time from now.
class Timer
{
  public:
    Timer() = default;
    ~Timer() { close(); }
    Timer(const Timer &) = delete;
    Timer &operator=(const Timer &) = delete;

    bool open(PlatformLoop &loop, PlatformLoop::Handler handler);
    void close();
    // Starts it anew, also when it runs already.
    void arm(unsigned milliseconds);
    void disarm();
    bool armed() const { return armed_; }
    bool isOpen() const { return loop_ != nullptr; }

  private:
    friend class PlatformLoop;

    PlatformLoop *loop_ = nullptr;
    PlatformLoop::Handler handler_;
    PlatformLoop::Clock::time_point end_{};
    bool armed_ = false;
};

} // namespace ipmib::platform
