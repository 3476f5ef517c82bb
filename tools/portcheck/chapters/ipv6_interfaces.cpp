// SPDX-License-Identifier: BSD-3-Clause
// IPv6 on an interface: identifier, timers, advertisement settings, hop limit, MTU.
#include "chapters.h"
#include "rows.h"

namespace ipmib::portcheck
{

namespace
{

void lookAtTimer(Probe &probe, std::uint32_t ifIndex, const char *timer, std::uint32_t milliseconds)
{
    constexpr std::uint32_t hour = 3600 * 1000; // neighbour discovery knows no longer one
    if (milliseconds > hour) {
        const std::uint32_t other = swapped(milliseconds);
        probe.broken(Promise::timers, callText("ND_GetIfConfigInfo", ifIndex),
                     std::string("the ") + timer + " time is " + std::to_string(milliseconds) +
                         (other <= hour ? ", which would be " + std::to_string(other) + " in the other byte order"
                                        : std::string()));
    }
}

void lookAtAdvertisements(Probe &probe, std::uint32_t ifIndex, const NdIfConfigInfo &info)
{
    constexpr std::uint32_t longest = 1800; // seconds
    if ((info.flags & ND_FLAG_SEND_ADVERTS) != 0 &&
        (info.min_interval_s > info.max_interval_s || info.max_interval_s > longest)) {
        probe.broken(Promise::advertisements, callText("ND_GetIfConfigInfo", ifIndex),
                     "the intervals are " + std::to_string(info.min_interval_s) + " to " +
                         std::to_string(info.max_interval_s));
    }
}

} // namespace

void checkIpv6Interfaces(Probe &probe, host::Resolver &)
{
    std::size_t withIdentifier = 0;
    std::size_t configured = 0;
    const Services &services = probe.services();
    for (const std::uint32_t ifIndex : interfacesOf(probe, Selection::standard)) {
        withIdentifier += probe.hasIdentifier(ifIndex);
        FullAddressRecord main{};
        probe.fill(callText("IP6ADDR_DRVK_GetMainLLA", ifIndex), main,
                   [&](FullAddressRecord *filled) { return services.IP6ADDR_DRVK_GetMainLLA(ifIndex, filled); });
        NdIfConfigInfo info;
        if (probe.configuration(ifIndex, info)) {
            ++configured;
            lookAtTimer(probe, ifIndex, "reachable", info.reachable_ms);
            lookAtTimer(probe, ifIndex, "retransmit", info.retransmit_ms);
            lookAtAdvertisements(probe, ifIndex, info);
        }
        std::uint32_t mtu = 0;
        const bool known = probe.fill(callText("IP6_GetIfMTU", ifIndex), mtu,
                                      [&](std::uint32_t *filled) { return services.IP6_GetIfMTU(ifIndex, filled); });
        if (known && mtu >= 0x01000000) {
            probe.broken(Promise::mtu, callText("IP6_GetIfMTU", ifIndex), "it answers " + std::to_string(mtu));
        }
    }
    probe.doing("ND_GetHopLimit");
    if (const std::uint32_t limit = services.ND_GetHopLimit(); limit > 255) {
        probe.broken(Promise::hopLimit, "ND_GetHopLimit", "it answers " + std::to_string(limit));
    }
    probe.fact("IPv6 on interfaces: " + std::to_string(withIdentifier) + " identifiers, " + std::to_string(configured) +
               " configurations");
}

} // namespace ipmib::portcheck
