// SPDX-License-Identifier: BSD-3-Clause
// IPv6 on an interface: identifier, timers, advertisement settings, hop limit, MTU.
#include "chapters.h"
#include "judge.h"
#include "rows.h"

#include <algorithm>

namespace ipmib::portcheck
{

namespace
{

constexpr std::uint32_t hour = 3600 * 1000; // milliseconds: neighbour discovery knows no longer time

// Seconds, within the MIB also where nothing is advertised: the row is there.
void lookAtAdvertisements(Judge &judge, const NdIfConfigInfo &info)
{
    const auto within = [](std::uint32_t lowest, std::uint32_t highest) {
        return [=](std::uint32_t value) { return value >= lowest && value <= highest; };
    };
    judge.field(Promise::advertisements, "max_interval_s", info.max_interval_s, within(4, 1800), "4 to 1800");
    judge.field(Promise::advertisements, "min_interval_s", info.min_interval_s, within(3, 1350), "3 to 1350");
    const bool isConfigured = (info.flags & ND_FLAG_LIFETIME_VALID) != 0; // else nobody asks for it
    judge.field(
        Promise::advertisements, "default_lifetime_s", info.default_lifetime_s,
        [isConfigured](std::uint32_t value) {
            return isConfigured ? value == 0 || (value >= 4 && value <= 9000) : value <= 65535;
        },
        "0, or 4 to 9000");
    constexpr std::uint32_t known = ND_FLAG_MANAGED | ND_FLAG_OTHER_CONFIG | ND_FLAG_RETRANSMIT_VALID |
                                    ND_FLAG_REACHABLE_VALID | ND_FLAG_SEND_ADVERTS | ND_FLAG_NO_MTU_OPTION |
                                    ND_FLAG_LIFETIME_VALID | ND_FLAG_NO_HOP_LIMIT;
    judge.field(
        Promise::advertisements, "flags", info.flags,
        [](std::uint32_t value) {
            const bool looksSwapped = (value & known) == 0 && value != 0 && (swapped(value) & ~known) == 0;
            return !looksSwapped;
        },
        "flags ND_FLAG_*");
}

void lookAtIntervals(Probe &probe, const std::string &call, const NdIfConfigInfo &info)
{
    if (info.min_interval_s > info.max_interval_s && info.min_interval_s <= 1350 && info.max_interval_s != 0) {
        probe.broken(Promise::advertisements, call,
                     "min_interval_s is " + std::to_string(info.min_interval_s) + ", more than max_interval_s, " +
                         std::to_string(info.max_interval_s));
    }
}

void lookAtConfiguration(Probe &probe, std::uint32_t ifIndex, const NdIfConfigInfo &info)
{
    const std::string call = callText("ND_GetIfConfigInfo", ifIndex);
    Judge judge(probe, call, "interface " + std::to_string(ifIndex));
    const auto check = [&](const char *name, std::uint32_t value, std::uint32_t lowest) {
        judge.field(
            Promise::timers, name, value,
            [lowest](std::uint32_t number) { return number == 0 || (number >= lowest && number <= hour); },
            "0, or " + std::to_string(lowest) + " to an hour's milliseconds" +
                (value < lowest ? "; in seconds it would be" : "") +
                (value > hour && value % 1000 == 0 && value / 1000 <= hour ? "; in microseconds it would be" : ""));
    };
    constexpr std::uint32_t shortestReachable = 100; // shorter ones are likelier to be seconds
    constexpr std::uint32_t shortestRetransmit = 10;
    check("reachable_ms", info.reachable_ms, shortestReachable);
    check("retransmit_ms", info.retransmit_ms, shortestRetransmit);
    lookAtAdvertisements(judge, info);
    lookAtIntervals(probe, call, info);
}

Items mtuOf(Probe &probe, std::uint32_t ifIndex)
{
    std::uint32_t mtu = 0;
    const bool known = probe.fill(callText("IP6_GetIfMTU", ifIndex), mtu, [&](std::uint32_t *filled) {
        return probe.services().IP6_GetIfMTU(ifIndex, filled);
    });
    return known ? Items{{"mtu", std::to_string(mtu), mtu, sizeof mtu}} : Items();
}

void checkMtu(Probe &probe, std::uint32_t ifIndex, bool hasIpv6)
{
    const std::uint32_t least = hasIpv6 ? 1280 : 1;
    const Items mtu = mtuOf(probe, ifIndex);
    if (!mtu.empty()) {
        Judge(probe, callText("IP6_GetIfMTU", ifIndex), "interface " + std::to_string(ifIndex))
            .field(
                Promise::mtu, "mtu", static_cast<std::uint32_t>(mtu.front().number),
                [least](std::uint32_t value) { return value >= least && value < 0x01000000; },
                hasIpv6 ? "a link's size in bytes, 1280 or more" : "a link's size in bytes");
    }
}

Items identifierOf(Probe &probe, std::uint32_t ifIndex)
{
    std::array<std::uint8_t, 8> identifier{};
    return probe.identifier(ifIndex, identifier)
               ? Items{{"identifier", bytesText(identifier.data(), identifier.size())}}
               : Items();
}

using Identifier = std::array<std::uint8_t, 8>;

// What has become of the identifier that a link-local address ends in; empty when it is another one.
std::string mistakeIn(const Identifier &identifier, const std::uint8_t *linkLocal)
{
    Identifier own;
    std::memcpy(own.data(), linkLocal + 8, own.size());
    const Identifier reversed{own[7], own[6], own[5], own[4], own[3], own[2], own[1], own[0]};
    const Identifier halves{own[3], own[2], own[1], own[0], own[7], own[6], own[5], own[4]};
    Identifier otherBit = own;
    otherBit[0] ^= 2;
    if (identifier == own) {
        return {};
    }
    if (identifier == reversed || identifier == halves) {
        return "the right one in the wrong byte order";
    }
    if (identifier == otherBit) {
        return "the right one with its universal/local bit, 02 of the first byte, turned over";
    }
    return std::memcmp(identifier.data(), linkLocal, identifier.size()) == 0 ? "the first half of the address" : "";
}

// A link-local address ends in the identifier, or in another one; it does not end in zeros.
void checkIdentifier(Probe &probe, std::uint32_t ifIndex, const Identifier &identifier)
{
    const std::string call = callText("IP6Mib_GetIFID", ifIndex);
    const std::string who = "interface " + std::to_string(ifIndex) + ": identifier is ";
    NdIfConfigInfo info;
    Identifier again;
    if (!probe.configuration(ifIndex, info) && probe.identifier(ifIndex, again)) {
        probe.broken(Promise::identifierAndSettings, call,
                     who + bytesText(identifier.data(), identifier.size()) +
                         ", and ND_GetIfConfigInfo fails: one of the two is wrong");
    }
    FullAddressRecord linkLocal;
    if (!probe.linkLocal(ifIndex, linkLocal)) {
        return;
    }
    const std::string address = ", and the link-local address is " + addressText(linkLocal.address);
    if (identifier == Identifier{}) {
        probe.broken(Promise::identifiers, call, who + "all zeros" + address);
    } else if (const std::string mistake = mistakeIn(identifier, linkLocal.address); !mistake.empty()) {
        probe.broken(Promise::identifiers, call,
                     who + bytesText(identifier.data(), identifier.size()) + address + ": it is " + mistake);
    }
}

Items configurationOf(Probe &probe, std::uint32_t ifIndex)
{
    NdIfConfigInfo info;
    return probe.configuration(ifIndex, info) ? itemsOf(info) : Items();
}

// What the three services say of an interface does not depend on the one that was asked for before.
void checkSteady(Probe &probe, std::uint32_t ifIndex, std::uint32_t other)
{
    const std::string who = "interface " + std::to_string(ifIndex);
    const auto check = [&](const char *service, Items (*ask)(Probe &, std::uint32_t)) {
        probe.expectSteady(
            service, who, [&] { ask(probe, other); }, [&] { return ask(probe, ifIndex); });
    };
    check("IP6Mib_GetIFID", identifierOf);
    check("ND_GetIfConfigInfo", configurationOf);
    check("IP6_GetIfMTU", mtuOf);
}

void tellRow(Probe &probe, std::uint32_t ifIndex)
{
    Items items{{"if_index", std::to_string(ifIndex), ifIndex, sizeof ifIndex}};
    for (const Items &more : {identifierOf(probe, ifIndex), mtuOf(probe, ifIndex), configurationOf(probe, ifIndex)}) {
        items.insert(items.end(), more.begin(), more.end());
    }
    probe.row("interface", items);
}

// Asks each service for an interface that there is not.
void checkNone(Probe &probe, const std::vector<std::uint32_t> &interfaces)
{
    const std::uint32_t absent = std::max(interfaces.empty() ? 1 : interfaces.back() + 1, 0x7FFFFFF0u);
    const auto expectFailure = [&](const char *service, bool succeeds) {
        if (succeeds && !probe.isValid(absent)) {
            probe.broken(Promise::noneOfNone, callText(service, absent), "it succeeds");
        }
    };
    FullAddressRecord address;
    expectFailure("IP6Mib_GetIFID", !identifierOf(probe, absent).empty());
    expectFailure("ND_GetIfConfigInfo", !configurationOf(probe, absent).empty());
    expectFailure("IP6_GetIfMTU", !mtuOf(probe, absent).empty());
    expectFailure("IP6Mib_GetLinkLocalFullAddr", probe.linkLocal(absent, address));
    expectFailure("IP6Addr_GetLinkLocalAddr", probe.hasLinkLocalRow(absent));
    expectFailure("IP6ADDR_DRVK_GetMainLLA", probe.hasMainLinkLocal(absent));
}

} // namespace

void checkIpv6Interfaces(Probe &probe, host::Resolver &)
{
    std::size_t withIdentifier = 0;
    std::size_t configured = 0;
    const Services &services = probe.services();
    const std::vector<std::uint32_t> interfaces = interfacesOf(probe, Selection::standard);
    for (std::size_t place = 0; place < interfaces.size(); ++place) {
        const std::uint32_t ifIndex = interfaces[place];
        Identifier identifier{};
        const bool hasIpv6 = probe.identifier(ifIndex, identifier);
        if (hasIpv6) {
            ++withIdentifier;
            checkIdentifier(probe, ifIndex, identifier);
        }
        NdIfConfigInfo info;
        if (probe.configuration(ifIndex, info)) {
            ++configured;
            lookAtConfiguration(probe, ifIndex, info);
        }
        checkMtu(probe, ifIndex, hasIpv6);
        checkSteady(probe, ifIndex, interfaces[(place + 1) % interfaces.size()]);
        tellRow(probe, ifIndex);
    }
    checkNone(probe, interfaces);
    probe.doing("ND_GetHopLimit");
    const std::uint32_t limit = services.ND_GetHopLimit();
    Judge(probe, "ND_GetHopLimit", "the system")
        .field(
            Promise::hopLimit, "hop limit", limit,
            [least = withIdentifier > 0 ? 1U : 0U](std::uint32_t value) { return value >= least && value <= 255; },
            withIdentifier > 0 ? "1 to 255" : "0 to 255");
    probe.row("system", {{"hop_limit", std::to_string(limit), limit, sizeof limit}});
    probe.fact("IPv6 on interfaces: " + std::to_string(withIdentifier) + " identifiers, " + std::to_string(configured) +
               " configurations");
}

} // namespace ipmib::portcheck
