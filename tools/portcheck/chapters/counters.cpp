// SPDX-License-Identifier: BSD-3-Clause
// Traffic counters: of each interface for both versions, of the system, and of ICMPv6.
#include "chapters.h"
#include "rows.h"

namespace ipmib::portcheck
{

namespace
{

constexpr std::uint32_t wholeSystem = 0x8000;
constexpr std::uint32_t familyIp6 = 10;

bool ipv4Of(Probe &probe, std::uint32_t ifIndex, IpMibIfStat &stat)
{
    stat = {};
    return probe.fill(callText("IP_GetMibIfStat", ifIndex), stat,
                      [&](IpMibIfStat *filled) { return probe.services().IP_GetMibIfStat(ifIndex, filled); });
}

bool ipv6Of(Probe &probe, std::uint32_t ifIndex, Ip6MibStat &stat)
{
    stat = {};
    return probe.fill(callText("IP6_GetIfStat", ifIndex), stat,
                      [&](Ip6MibStat *filled) { return probe.services().IP6_GetIfStat(ifIndex, familyIp6, filled); });
}

bool ipv6OfSystem(Probe &probe, Ip6MibStat &stat)
{
    stat = {};
    return probe.fill("IP6_GetMibStat", stat,
                      [&](Ip6MibStat *filled) { return probe.services().IP6_GetMibStat(wholeSystem, filled); });
}

std::vector<std::uint64_t> wideOf(const Ip6MibStat &stat)
{
    return {stat.in_receives,  stat.in_forwarded, stat.out_forwarded, stat.out_transmits,
            stat.out_requests, stat.in_octets,    stat.out_octets};
}

std::vector<std::uint64_t> wideOf(const IpMibIfStat &stat)
{
    return {stat.in_receives,   stat.out_transmits,  stat.in_octets,     stat.out_octets,  stat.out_requests,
            stat.in_mcast_pkts, stat.out_mcast_pkts, stat.out_forwarded, stat.in_discards, stat.out_discards};
}

// No machine has counted so much; in another order of the bytes, or of the two words, it would be little.
bool looksDisordered(std::uint64_t counter)
{
    const std::uint64_t otherBytes = __builtin_bswap64(counter);
    const std::uint64_t otherWords = (counter << 32) | (counter >> 32);
    return counter >> 56 != 0 ? otherBytes < (std::uint64_t{1} << 40)
                              : counter > UINT32_MAX && otherWords <= UINT32_MAX;
}

void lookAtOrder(Probe &probe, const std::string &call, const std::vector<std::uint64_t> &counters)
{
    std::size_t counted = 0;
    std::size_t disordered = 0;
    std::uint64_t example = 0;
    for (const std::uint64_t counter : counters) {
        counted += counter != 0;
        if (looksDisordered(counter)) {
            ++disordered;
            example = counter;
        }
    }
    if (disordered != 0 && disordered == counted) {
        probe.broken(Promise::countersInMachineOrder, call,
                     "every counter looks as if its bytes or words were swapped, like " + std::to_string(example));
    }
}

void lookAtGrowth(Probe &probe, const std::string &call, const std::vector<std::uint64_t> &before,
                  const std::vector<std::uint64_t> &after)
{
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (after[i] < before[i]) {
            probe.broken(Promise::countersGrow, call,
                         "a 64-bit counter went from " + std::to_string(before[i]) + " back to " +
                             std::to_string(after[i]));
            return;
        }
    }
}

template <typename Stat, typename Read>
void checkOne(Probe &probe, const std::string &call, Promise promise, Read read)
{
    Stat before;
    Stat after;
    if (!read(before) || !read(after)) {
        probe.broken(promise, call, "it fails");
        return;
    }
    lookAtOrder(probe, call, wideOf(after));
    lookAtGrowth(probe, call, wideOf(before), wideOf(after));
}

} // namespace

void checkCounters(Probe &probe, host::Resolver &)
{
    for (const std::uint32_t ifIndex : interfacesOf(probe, Selection::standard)) {
        checkOne<IpMibIfStat>(probe, callText("IP_GetMibIfStat", ifIndex), Promise::ipv4Counters,
                              [&](IpMibIfStat &stat) { return ipv4Of(probe, ifIndex, stat); });
        checkOne<Ip6MibStat>(probe, callText("IP6_GetIfStat", ifIndex), Promise::ipv6Counters,
                             [&](Ip6MibStat &stat) { return ipv6Of(probe, ifIndex, stat); });
    }
    IpMibIfStat ipv4;
    if (ipv4Of(probe, 0, ipv4)) {
        probe.broken(Promise::noCountersOfNone, "IP_GetMibIfStat", "it succeeds for ifIndex 0");
    }
    Ip6MibStat ipv6;
    if (ipv6Of(probe, 0, ipv6)) {
        probe.broken(Promise::noCountersOfNone, "IP6_GetIfStat", "it succeeds for ifIndex 0");
    }
    checkOne<Ip6MibStat>(probe, "IP6_GetMibStat", Promise::systemCounters,
                         [&](Ip6MibStat &stat) { return ipv6OfSystem(probe, stat); });
    Icmp6MibStat icmp{};
    probe.fill("ICMP6_GetMibStat", icmp, [&](Icmp6MibStat *filled) {
        probe.services().ICMP6_GetMibStat(filled);
        return 0;
    });
}

} // namespace ipmib::portcheck
