// SPDX-License-Identifier: BSD-3-Clause
// What tables outside the module say of IP on this system: the interfaces on which it runs.
#include "linux_platform.h"

#include <net/if.h>

namespace ipmib::platform
{

namespace
{

// Below these the kernel takes the protocol off an interface.
constexpr std::uint32_t smallestIpv4Mtu = 68;
constexpr std::uint32_t smallestIpv6Mtu = 1280;

constexpr std::uint32_t up = 1;
constexpr std::uint32_t down = 2;

} // namespace

// As for IPv6 in the table of its interfaces: up when the interface has an address to speak from.
bool IpRows::enabled(std::uint32_t version, const Link &link) const
{
    if (version == IPMIB_IPV4) {
        return (link.flags & IFF_UP) != 0 && platform_.ipv4().addresses().hasAny(link.ifIndex);
    }
    return platform_.addressing().addresses().usableOnLink(link.ifIndex) != nullptr;
}

bool IpRows::fillInterface(std::uint32_t version, const Link &link, IpmibIpInterface &row)
{
    std::uint32_t retransmit = 0;
    if (version == IPMIB_IPV4) {
        const std::string path = std::string("/proc/sys/net/ipv4/neigh/") + link.name + "/retrans_time_ms";
        const auto read = ProcFile(path.c_str()).readNumber(); // there as long as IPv4 is on the interface
        if (!platform_.ipv4().follows(IPMIB_FOLLOW_ADDRESSES) || !read) {
            return false;
        }
        retransmit = *read;
    } else {
        const Ip6Link *ip6 = platform_.ip6Link(link.ifIndex);
        if (ip6 == nullptr) {
            return false;
        }
        retransmit = ip6->retransmitMs;
    }
    row = {link.ifIndex, enabled(version, link) ? up : down, largestDatagram, retransmit};
    return true;
}

bool IpRows::findInterface(std::uint32_t version, std::uint32_t ifIndex, IpmibIpInterface &row)
{
    const Link *link = platform_.links().find(ifIndex);
    return link != nullptr && fillInterface(version, *link, row);
}

bool IpRows::interfaceAfter(std::uint32_t version, std::uint32_t ifIndex, IpmibIpInterface &row)
{
    const Link *link = platform_.links().after(ifIndex);
    while (link != nullptr && !fillInterface(version, *link, row)) {
        link = platform_.links().after(link->ifIndex);
    }
    return link != nullptr;
}

std::vector<IpRows::InterfaceState> IpRows::interfaceStates(std::uint32_t version) const
{
    std::vector<InterfaceState> states;
    const LinkTable &links = platform_.links();
    const std::uint32_t smallestMtu = version == IPMIB_IPV4 ? smallestIpv4Mtu : smallestIpv6Mtu;
    for (const Link *link = links.after(0); link != nullptr; link = links.after(link->ifIndex)) {
        if (link->mtu >= smallestMtu) {
            const Ip6Address *onLink =
                version == IPMIB_IPV6 ? platform_.addressing().addresses().usableOnLink(link->ifIndex) : nullptr;
            states.push_back(
                {link->ifIndex, enabled(version, *link), onLink != nullptr ? onLink->address : PackedAddress{}});
        }
    }
    return states;
}

// With thousands of interfaces a comparison takes its time, and is made for a twentieth of the time at most, while they
// change all the time.
void IpRows::noteChanges()
{
    if (platform_.addressing().addressesAreBehind() || platform_.ipv4().addressesAreBehind()) {
        return; // later, when nobody waits for what is left
    }
    const std::array<std::uint64_t, 3> versions = {platform_.links().version(),
                                                   platform_.addressing().addresses().version(),
                                                   platform_.ipv4().addresses().version()};
    if (!platform_.ipv4().follows(IPMIB_FOLLOW_ADDRESSES) || (versions == seenVersions_ && interfacesCompared_)) {
        return;
    }
    const std::uint64_t now = monotonicMilliseconds();
    if (versions != seenVersions_) {
        versionsSeenMs_ = seenVersions_[0] == 0 ? 0 : now; // what is there at the beginning has not changed
        seenVersions_ = versions;
        interfacesCompared_ = false;
    }
    if (now >= nextComparisonMs_) {
        constexpr std::uint64_t restRatio = 20;
        compareInterfaces();
        nextComparisonMs_ = now + (monotonicMilliseconds() - now) * restRatio;
    }
}

void IpRows::compareInterfaces()
{
    for (const std::uint32_t version : {IPMIB_IPV4, IPMIB_IPV6}) {
        InterfaceStates &known = interfaces_[version - IPMIB_IPV4];
        std::vector<InterfaceState> now = interfaceStates(version);
        if (now != known.rows) {
            known.changedMs = versionsSeenMs_;
        }
        known.rows.swap(now);
    }
    interfacesCompared_ = true;
}

std::uint32_t IpRows::interfacesChanged(std::uint32_t version)
{
    platform_.addressing().addresses(); // all that was announced, which may change more
    platform_.ipv4().addresses();
    noteChanges();
    if (!interfacesCompared_) {
        compareInterfaces();
    }
    return platform_.uptime().atMs(interfaces_[version == IPMIB_IPV4 ? 0 : 1].changedMs);
}

std::uint32_t IpRows::linkLocalPrefixLength(std::uint32_t ifIndex)
{
    const Ip6Address *found = platform_.addressing().addresses().linkLocal(ifIndex);
    return found == nullptr ? 0 : found->length;
}

} // namespace ipmib::platform
