// SPDX-License-Identifier: BSD-3-Clause
// The notification protocol is one datagram to a socket that the environment names: too little for a library. The alarm
// of the watchdog goes off at half of the manager's patience.
#include "service_manager.h"

#include "net_snmp.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

namespace ipmib::agent
{
namespace
{

void notify(const std::string &state)
{
    const char *path = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address{};
    const std::size_t length = path == nullptr ? 0 : std::strlen(path);
    if (length == 0 || length >= sizeof address.sun_path) {
        return;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path, length);
    if (address.sun_path[0] == '@') { // an abstract name
        address.sun_path[0] = '\0';
    }
    // Kept, so that a manager hears of us when there are no more descriptors.
    static const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    // A manager that does not listen is no reason to stop serving.
    (void)sendto(descriptor, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr *>(&address),
                 static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
}

} // namespace

void notifyReady()
{
    notify("READY=1");
}

void notifyReloading()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const long long microseconds = now.tv_sec * 1000000LL + now.tv_nsec / 1000;
    notify("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(microseconds));
}

void notifyStopping()
{
    notify("STOPPING=1");
}

void notifyAlive()
{
    notify("WATCHDOG=1");
}

std::chrono::microseconds watchdogPatience()
{
    const char *patience = std::getenv("WATCHDOG_USEC");
    const char *process = std::getenv("WATCHDOG_PID"); // the variables may be somebody else's, inherited
    if (patience == nullptr || (process != nullptr && std::atol(process) != getpid())) {
        return std::chrono::microseconds(0);
    }
    return std::chrono::microseconds(std::max(0LL, std::atoll(patience)));
}

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
