// SPDX-License-Identifier: BSD-3-Clause
// What tables outside the module say of IP on this system: settings, and counters from the same reading as the
// module's.
#include "linux_platform.h"

#include <cstring>

namespace ipmib::platform
{

namespace
{

constexpr std::uint32_t forwarding = 1;
constexpr std::uint32_t notForwarding = 2;

// ICMP types that the kernel counts whether they occur or not, as the icmp group does.
constexpr unsigned countedByName[] = {0, 3, 4, 5, 8, 11, 12, 13, 14, 17, 18};

// What the packet filter counts by interface; see accounting/.
void fillFromAccounting(const IpMibIfStat &stat, IpmibIpCounters &counters)
{
    const struct {
        unsigned which;
        std::uint64_t value;
    } counted[] = {
        {IPMIB_IP_IN_RECEIVES, stat.in_receives},     {IPMIB_IP_IN_OCTETS, stat.in_octets},
        {IPMIB_IP_OUT_REQUESTS, stat.out_requests},   {IPMIB_IP_OUT_FORW_DATAGRAMS, stat.out_forwarded},
        {IPMIB_IP_OUT_TRANSMITS, stat.out_transmits}, {IPMIB_IP_OUT_OCTETS, stat.out_octets},
        {IPMIB_IP_IN_MCAST_PKTS, stat.in_mcast_pkts}, {IPMIB_IP_OUT_MCAST_PKTS, stat.out_mcast_pkts},
    };
    counters = IpmibIpCounters{};
    for (const auto &[which, value] : counted) {
        counters.value[which] = value;
        counters.counted |= std::uint64_t{1} << which;
    }
}

} // namespace

bool IpRows::settings(std::uint32_t version, IpmibIpSettings &settings)
{
    const bool ipv4 = version == IPMIB_IPV4;
    const auto forwards = (ipv4 ? ipv4Forwarding_ : ipv6Forwarding_).readNumber();
    const auto ttl = ipv4 ? ipv4DefaultTtl_.readNumber() : std::optional(platform_.hopLimit());
    const auto reassembly = (ipv4 ? ipv4FragmentTime_ : ipv6FragmentTime_).readNumber();
    if (!forwards || !ttl || !reassembly) {
        return false;
    }
    settings = {*forwards != 0 ? forwarding : notForwarding, *ttl, *reassembly};
    return true;
}

bool IpRows::systemCounters(std::uint32_t version, IpmibIpCounters &counters)
{
    if (version == IPMIB_IPV4) {
        return platform_.ipv4Counters().ip(counters);
    }
    const Snmp6Counters *read = platform_.systemCounters().read();
    if (read == nullptr) {
        return false;
    }
    fillIpCounters(read->ip6, counters);
    return true;
}

bool IpRows::interfaceCounters(std::uint32_t version, std::uint32_t ifIndex, IpmibIpCounters &counters)
{
    if (version == IPMIB_IPV4) {
        if (!platform_.ipv4Accounting().counts() || platform_.links().find(ifIndex) == nullptr) {
            return false;
        }
        fillFromAccounting(platform_.ipv4Accounting().countersOf(ifIndex), counters);
        return true;
    }
    const Ip6Link *link = platform_.ip6Link(ifIndex);
    if (link == nullptr) {
        return false;
    }
    fillIpCounters(link->counters, counters);
    return true;
}

bool IpRows::icmpCounters(std::uint32_t version, IpmibIcmpCounters &counters)
{
    if (version == IPMIB_IPV4) {
        if (!platform_.ipv4Counters().icmp(counters)) {
            return false;
        }
        for (const unsigned type : countedByName) {
            counters.listed[type / 8] = static_cast<std::uint8_t>(counters.listed[type / 8] | 1U << type % 8);
        }
        return true;
    }
    const Snmp6Counters *read = platform_.systemCounters().read();
    if (read == nullptr) {
        return false;
    }
    const Icmp6Counters &icmp6 = read->icmp6;
    counters = IpmibIcmpCounters{};
    counters.in_msgs = icmp6.inMsgs;
    counters.in_errors = icmp6.inErrors;
    counters.out_msgs = icmp6.outMsgs;
    counters.out_errors = icmp6.outErrors;
    std::memcpy(counters.in_type, icmp6.inType.data(), sizeof counters.in_type);
    std::memcpy(counters.out_type, icmp6.outType.data(), sizeof counters.out_type);
    for (std::size_t type = 0; type < icmp6.listed.size(); ++type) {
        counters.listed[type / 8] =
            static_cast<std::uint8_t>(counters.listed[type / 8] | unsigned{icmp6.listed[type]} << type % 8);
    }
    return true;
}

bool IpRows::tcpCounters(IpmibTcpCounters &counters)
{
    return platform_.ipv4Counters().tcp(counters);
}

// The kernel counts TCP once, and UDP for each version by itself.
bool IpRows::udpCounters(IpmibUdpCounters &counters)
{
    if (!platform_.ipv4Counters().udp(counters)) {
        return false;
    }
    if (const Snmp6Counters *read = platform_.systemCounters().read()) {
        counters.in_datagrams += read->udp6.inDatagrams;
        counters.no_ports += read->udp6.noPorts;
        counters.in_errors += read->udp6.inErrors;
        counters.out_datagrams += read->udp6.outDatagrams;
    }
    return true;
}

} // namespace ipmib::platform
