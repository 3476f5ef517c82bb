// SPDX-License-Identifier: BSD-3-Clause
// The parts of a check, and the smallest of them.
#include "chapters.h"

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

} // namespace ipmib::portcheck
