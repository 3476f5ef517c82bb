// SPDX-License-Identifier: BSD-3-Clause
// Tells a service manager, as often as it asked for, that the event loop still turns.
#pragma once

namespace ipmib::agent
{

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
