// SPDX-License-Identifier: BSD-3-Clause
// An alarm of the library at half of the manager's patience.

#include "service_watchdog.h"

#include "net_snmp.h"
#include "service_notify.h"

namespace ipmib::agent
{

ServiceWatchdog::ServiceWatchdog()
{
    const std::chrono::microseconds patience = watchdogPatience();
    if (patience.count() == 0) {
        return;
    }
    constexpr auto perSecond = std::chrono::microseconds(std::chrono::seconds(1)).count();
    const auto half = patience.count() / 2;
    timeval interval{};
    interval.tv_sec = half / perSecond;
    interval.tv_usec = half % perSecond;
    alarm_ = snmp_alarm_register_hr(
        interval, SA_REPEAT, [](unsigned, void *) { notifyAlive(); }, nullptr);
}

ServiceWatchdog::~ServiceWatchdog()
{
    if (alarm_ != 0) {
        snmp_alarm_unregister(alarm_);
    }
}

} // namespace ipmib::agent
