// SPDX-License-Identifier: BSD-3-Clause
// The parts of a check, and the smallest of them.
#include "chapters.h"

#include <chrono>
#include <thread>

namespace ipmib::portcheck
{

std::span<const Chapter> chapters()
{
    static constexpr Chapter all[] = {
        {"state of the services", checkState},
        {"interfaces", checkInterfaces},
        {"counters", checkCounters},
        {"IPv6 on interfaces", checkIpv6Interfaces},
        {"neighbours", checkNeighbours},
        {"prefixes", checkPrefixes},
        {"addresses", checkAddresses},
        {"default routers", checkRouters},
        {"time", checkClock},
        {"tables through the module", checkTables},
    };
    return all;
}

void checkState(Probe &probe, host::Resolver &)
{
    const auto expectRunning = [&probe](const char *service, auto *check) {
        probe.doing(service);
        if (const std::uint32_t state = check(1); state != 0) {
            probe.broken(Promise::running, service, "it answers " + std::to_string(state));
        }
    };
    expectRunning("IP6_DaemonCheck", probe.services().IP6_DaemonCheck);
    expectRunning("IP_DaemonCheck", probe.services().IP_DaemonCheck);
}

void checkClock(Probe &probe, host::Resolver &)
{
    if (probe.clockTime == std::chrono::milliseconds(0)) {
        return;
    }
    const auto begin = std::chrono::steady_clock::now();
    const std::uint32_t before = probe.secondsSinceBoot();
    std::this_thread::sleep_for(probe.clockTime);
    probe.beginPacket();
    const std::uint32_t counted = probe.secondsSinceBoot() - before;
    const auto passed =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin).count();
    // At least one boundary of a second lies in between.
    if (counted < 1 || counted > passed + 1) {
        probe.broken(Promise::clock, "TIME_GetSystemBootTime",
                     "it counted " + std::to_string(static_cast<std::int32_t>(counted)) + " in " +
                         std::to_string(passed) + " seconds");
    }
}

} // namespace ipmib::portcheck
