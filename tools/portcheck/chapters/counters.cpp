// SPDX-License-Identifier: BSD-3-Clause
// Traffic counters: of each interface for both versions, of the system, and of ICMPv6.
#include "chapters.h"
#include "rows.h"

#include <algorithm>
#include <map>

namespace ipmib::portcheck
{

namespace
{

constexpr std::uint32_t wholeSystem = 0x8000;
constexpr std::uint32_t familyIp6 = 10;

// The counters of one call; empty when it fails.
Items ipv4Of(Probe &probe, std::uint32_t ifIndex)
{
    IpMibIfStat stat{};
    return probe.fill(callText("IP_GetMibIfStat", ifIndex), stat,
                      [&](IpMibIfStat *filled) { return probe.services().IP_GetMibIfStat(ifIndex, filled); })
               ? itemsOf(stat)
               : Items();
}

Items ipv6Of(Probe &probe, std::uint32_t ifIndex)
{
    Ip6MibStat stat{};
    return probe.fill(callText("IP6_GetIfStat", ifIndex), stat,
                      [&](Ip6MibStat *filled) { return probe.services().IP6_GetIfStat(ifIndex, familyIp6, filled); })
               ? itemsOf(stat)
               : Items();
}

Items ipv6OfSystem(Probe &probe)
{
    Ip6MibStat stat{};
    return probe.fill("IP6_GetMibStat", stat,
                      [&](Ip6MibStat *filled) { return probe.services().IP6_GetMibStat(wholeSystem, filled); })
               ? itemsOf(stat)
               : Items();
}

Items icmpOfSystem(Probe &probe)
{
    Icmp6MibStat stat{};
    probe.fill("ICMP6_GetMibStat", stat, [&](Icmp6MibStat *filled) {
        probe.services().ICMP6_GetMibStat(filled);
        return 0;
    });
    return itemsOf(stat);
}

// What was counted by one call, for comparisons with what the others have counted.
struct Counted {
    std::string call;
    Items counters;
};

// No machine has counted so much; in another order of the bytes it would be little.
bool isSwappedWide(std::uint64_t counter)
{
    return counter >> 56 != 0 && __builtin_bswap64(counter) < (std::uint64_t{1} << 40);
}

// The upper word is what the lower one should be.
bool hasSwappedWords(std::uint64_t counter)
{
    return counter > UINT32_MAX && (counter & UINT32_MAX) == 0;
}

bool isSwappedNarrow(std::uint64_t counter)
{
    return counter >> 24 != 0 && swapped(static_cast<std::uint32_t>(counter)) <= UINT16_MAX;
}

void tellOrder(Probe &probe, const Counted &counted, const Item &counter, std::uint64_t other, const char *parts)
{
    probe.broken(Promise::countersInMachineOrder, counted.call,
                 counter.name + " is " + counter.text + ": it is " + std::to_string(other) +
                     ", the right one in the wrong " + parts + " order");
}

// More packets than any 64-bit counter of the platform has seen.
std::uint64_t packetsOf(const std::vector<Counted> &all)
{
    std::uint64_t most = 0;
    for (const Counted &counted : all) {
        for (const Item &item : counted.counters) {
            const bool isRight = item.bytes == 8 && !isSwappedWide(item.number) && !hasSwappedWords(item.number);
            if (isRight && item.name.find("octets") == std::string::npos) {
                most = std::max(most, item.number);
            }
        }
    }
    return most;
}

// A 32-bit counter in the wrong order is a number like any other, but not when nobody has seen so many packets, nor
// when it is so in two records.
void lookAtOrder(Probe &probe, const std::vector<Counted> &all)
{
    const std::uint64_t packets = packetsOf(all);
    std::map<std::string, unsigned> suspected;
    for (const Counted &counted : all) {
        for (const Item &item : counted.counters) {
            suspected[item.name] += item.bytes == 4 && isSwappedNarrow(item.number);
        }
    }
    for (const Counted &counted : all) {
        for (const Item &item : counted.counters) {
            const std::uint64_t value = item.number;
            const std::uint64_t reversed = __builtin_bswap64(value);
            if (item.bytes == 8 && hasSwappedWords(value) && !(isSwappedWide(value) && reversed < value >> 32)) {
                tellOrder(probe, counted, item, value >> 32, "word");
            } else if (item.bytes == 8 && isSwappedWide(value)) {
                tellOrder(probe, counted, item, reversed, "byte");
            } else if (item.bytes == 4) {
                const std::uint32_t other = swapped(static_cast<std::uint32_t>(value));
                const bool isBeyond = value > packets && (isSwappedNarrow(value) ||
                                                          (value / 4 > packets && other <= packets && other != 0));
                if (isBeyond || (isSwappedNarrow(value) && suspected[item.name] > 1)) {
                    tellOrder(probe, counted, item, other, "byte");
                }
            }
        }
    }
}

// Counters begin again behind their highest number.
void lookAtGrowth(Probe &probe, const std::string &call, const Items &before, const Items &after)
{
    for (std::size_t i = 0; i < before.size() && i < after.size(); ++i) {
        const std::uint64_t lost = before[i].number - after[i].number;
        const bool wrapped = lost > (before[i].bytes == 4 ? UINT32_MAX / 2 : UINT64_MAX / 2);
        if (after[i].number < before[i].number && !wrapped) {
            probe.broken(Promise::countersGrow, call,
                         after[i].name + " went from " + before[i].text + " back to " + after[i].text +
                             ": it fell, or is left from the record before");
        }
    }
}

// A packet has octets. Who counts none of them has 0, and so has who has just begun again.
void lookAtOctets(Probe &probe, const Counted &counted)
{
    const auto valueOf = [&](const char *name) {
        const auto found = std::find_if(counted.counters.begin(), counted.counters.end(),
                                        [name](const Item &item) { return item.name == name; });
        return found == counted.counters.end() ? 0 : found->number;
    };
    const auto compare = [&](const char *octets, const char *packets) {
        constexpr std::uint64_t moreThanAnybodyHasSeen = std::uint64_t{1} << 48;
        const bool isPossible = valueOf(octets) == 0 || valueOf(octets) >= valueOf(packets);
        if (!isPossible && valueOf(packets) < moreThanAnybodyHasSeen) {
            probe.broken(Promise::countersAgree, counted.call,
                         octets + (" is " + std::to_string(valueOf(octets))) + ", less than " + packets + ", " +
                             std::to_string(valueOf(packets)));
        }
    };
    compare("in_octets", "in_receives");
    compare("out_octets", "out_transmits");
}

// Two interfaces that have each counted what the whole system has counted: nobody looked at which interface it was.
void lookAtSameness(Probe &probe, const std::vector<Counted> &all)
{
    const auto startsWith = [](const Counted &counted, const char *call) { return counted.call.rfind(call, 0) == 0; };
    const auto system =
        std::find_if(all.begin(), all.end(), [&](const Counted &one) { return startsWith(one, "IP6_GetMibStat"); });
    if (system == all.end() || system->counters.front().number == 0) {
        return;
    }
    const auto same = std::count_if(all.begin(), all.end(), [&](const Counted &one) {
        return startsWith(one, "IP6_GetIfStat") && textOf(one.counters) == textOf(system->counters);
    });
    if (same > 1) {
        probe.broken(Promise::countersAgree, "IP6_GetIfStat",
                     std::to_string(same) +
                         " interfaces have counted each as much as the whole system, in_receives is " +
                         system->counters.front().text);
    }
}

// Reads the counters behind those of something else, again, and behind something else once more: what is left from a
// record before cannot have grown each time.
void checkOne(Probe &probe, std::vector<Counted> &all, const std::string &call, Promise promise,
              const std::function<Items()> &read, const std::function<void()> &readOther)
{
    readOther();
    const Items first = read();
    const Items second = read();
    readOther();
    const Items third = read();
    if (first.empty() || second.empty() || third.empty()) {
        probe.broken(promise, call, "it fails");
        return;
    }
    const std::size_t before = probe.brokenCount();
    lookAtGrowth(probe, call, first, second);
    if (probe.brokenCount() == before) {
        lookAtGrowth(probe, call, second, third);
    }
    all.push_back({call, third});
}

} // namespace

void checkCounters(Probe &probe, host::Resolver &)
{
    std::vector<Counted> all;
    const std::vector<std::uint32_t> interfaces = interfacesOf(probe, Selection::standard);
    for (std::size_t place = 0; place < interfaces.size(); ++place) {
        const std::uint32_t ifIndex = interfaces[place];
        const std::uint32_t other = interfaces[(place + 1) % interfaces.size()];
        checkOne(
            probe, all, callText("IP_GetMibIfStat", ifIndex), Promise::ipv4Counters,
            [&] { return ipv4Of(probe, ifIndex); }, [&] { ipv4Of(probe, other); });
        checkOne(
            probe, all, callText("IP6_GetIfStat", ifIndex), Promise::ipv6Counters,
            [&] { return ipv6Of(probe, ifIndex); }, [&] { ipv6Of(probe, other); });
    }
    const std::uint32_t absent = std::max(interfaces.empty() ? 1 : interfaces.back() + 1, 0x7FFFFFF0u);
    if (!ipv4Of(probe, absent).empty()) {
        probe.broken(Promise::noneOfNone, callText("IP_GetMibIfStat", absent), "it succeeds");
    }
    if (!ipv6Of(probe, absent).empty()) {
        probe.broken(Promise::noneOfNone, callText("IP6_GetIfStat", absent), "it succeeds");
    }
    if (!ipv4Of(probe, 0).empty()) {
        probe.broken(Promise::noCountersOfNone, "IP_GetMibIfStat", "it succeeds for ifIndex 0");
    }
    if (!ipv6Of(probe, 0).empty()) {
        probe.broken(Promise::noCountersOfNone, "IP6_GetIfStat", "it succeeds for ifIndex 0");
    }
    checkOne(
        probe, all, "IP6_GetMibStat", Promise::systemCounters, [&] { return ipv6OfSystem(probe); },
        [&] {
            if (!interfaces.empty()) {
                ipv6Of(probe, interfaces.front());
            }
        });
    checkOne(
        probe, all, "ICMP6_GetMibStat", Promise::systemCounters, [&] { return icmpOfSystem(probe); }, [] {});
    lookAtOrder(probe, all);
    lookAtSameness(probe, all);
    const bool isInOrder = probe.brokenCount(Promise::countersInMachineOrder) == 0;
    for (const Counted &counted : all) {
        if (isInOrder) {
            lookAtOctets(probe, counted);
        }
        Items items = counted.counters;
        items.erase(std::remove_if(items.begin(), items.end(),
                                   [](const Item &item) {
                                       return item.number == 0 && item.name.find("_type_") != std::string::npos;
                                   }),
                    items.end());
        items.insert(items.begin(), {"of", counted.call});
        probe.row("counters", items);
    }
}

} // namespace ipmib::portcheck
