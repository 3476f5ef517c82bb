// SPDX-License-Identifier: BSD-3-Clause
// What the platform waits for, behind one descriptor that the host's own event loop watches.
#pragma once

#include "core/descriptor.h"

#include <functional>
#include <map>
#include <memory>

namespace ipmib::platform
{

class PlatformLoop
{
  public:
    // Announcements are what the kernel has told us: a packet of requests waits until they are read. Everything else
    // (reading a table again, timers, files) happens between packets.
    enum class Work { announcement, background };
    using Handler = std::function<void()>;

    // Opens the epoll instance; false with errno set when the system has none to give.
    bool open();
    void close();

    // The handler runs while the descriptor is readable.
    bool watch(int fd, Work work, Handler handler);
    // Before the descriptor is closed. May be called from any handler.
    void forget(int fd);

    int descriptor() const { return epoll_.get(); }
    // Runs each handler whose descriptor is readable once; never blocks.
    void run() { run(true); }
    void runAnnouncements() { run(false); }
    // Whether a packet waits for the handler that runs: then all that was announced by now counts, else a turn is
    // short.
    bool packetWaits() const { return packetWaits_; }

  private:
    struct Watch {
        Work work;
        Handler handler;
    };
    void run(bool background);

    Descriptor epoll_;
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
    bool isOpen() const { return static_cast<bool>(fd_); }

  private:
    PlatformLoop *loop_ = nullptr;
    Descriptor fd_;
    bool armed_ = false;
};

} // namespace ipmib::platform
