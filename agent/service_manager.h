// SPDX-License-Identifier: BSD-3-Clause
// What a service manager is told: in what state this daemon is, and, as often as it asked for, that the event loop
// still turns.
#pragma once

#include <chrono>

namespace ipmib::agent
{

// Each does nothing when no service manager asked for it (NOTIFY_SOCKET).
void notifyReady();
void notifyReloading();
void notifyStopping();
void notifyAlive();

// How long the manager waits for notifyAlive before it takes this process for dead; 0 when it does not wait for it.
std::chrono::microseconds watchdogPatience();

class ServiceWatchdog
{
  public:
    // Does nothing when no service manager watches this process (WATCHDOG_USEC, WATCHDOG_PID): the loop then never
    // wakes up for it. Otherwise the library's alarms call, which is to say the loop that runs them.
    ServiceWatchdog();
    ~ServiceWatchdog();
    ServiceWatchdog(const ServiceWatchdog &) = delete;
    ServiceWatchdog &operator=(const ServiceWatchdog &) = delete;

  private:
    unsigned alarm_ = 0;
};

} // namespace ipmib::agent
