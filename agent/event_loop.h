// SPDX-License-Identifier: BSD-3-Clause
// The daemon's one wait: for packets, for the platform, for the library's alarms and for signals.
#pragma once

#include "host/instances.h"
#include "net_snmp.h"

#include <ipmib/platform_hooks.h>

#include <functional>
#include <utility>

namespace ipmib::agent
{

class EventLoop
{
  public:
    // From here on SIGHUP, SIGTERM and SIGINT wait for the loop. Throws std::system_error.
    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop &) = delete;
    EventLoop &operator=(const EventLoop &) = delete;

    // Returns at SIGTERM or SIGINT, or when it is stopped; calls `reload` at SIGHUP.
    void run(const std::function<void()> &reload);
    void stop() { stopping_ = true; }

    // Called in every turn with the descriptors that the library is about to read from; may put off some of them.
    void chooseReadable(std::function<void(netsnmp_large_fd_set &)> choose) { choose_ = std::move(choose); }

  private:
    void takeSignal();
    void wait();

    std::function<void(netsnmp_large_fd_set &)> choose_;
    int signals_;
    bool stopping_ = false;
    bool reloading_ = false;
};

class PlatformEvents
{
  public:
    // Null stands for a platform that needs no driving.
    // Of several instances the first one is selected when it works: what it tells is told of that one.
    explicit PlatformEvents(const IpmibPlatformHooks *platform, host::Instances *instances = nullptr);
    // Called after each piece of the platform's work.
    void whenDone(std::function<void()> done) { done_ = std::move(done); }
    ~PlatformEvents();
    PlatformEvents(const PlatformEvents &) = delete;
    PlatformEvents &operator=(const PlatformEvents &) = delete;

  private:
    void dispatch() const;

    const IpmibPlatformHooks *platform_;
    host::Instances *instances_;
    int descriptor_ = -1;
    std::function<void()> done_;
};

} // namespace ipmib::agent
