// SPDX-License-Identifier: BSD-3-Clause
// Settings and counters of IP and of the transport layer against the kernel's own files, after real traffic.
#include "netns/namespace.h"
#include "test_platform.h"

#include <ipmib/platform.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>
#include <set>
#include <sstream>

namespace
{

using namespace ipmib::platform;
using ipmib::netns::Namespace;

// "Ip.InReceives" of the files of IPv4, "Ip6InReceives" of that of IPv6.
using Kernel = std::map<std::string, std::uint64_t>;

Kernel kernelCounters(const Namespace &space)
{
    Kernel kernel;
    for (const char *path : {"snmp", "netstat"}) {
        std::istringstream text(space.file(std::string("/proc/thread-self/net/") + path));
        std::string names;
        std::string numbers;
        while (std::getline(text, names) && std::getline(text, numbers)) {
            std::istringstream name(names);
            std::istringstream number(numbers);
            std::string group;
            std::string word;
            std::string value;
            number >> value;
            for (name >> group; name >> word && number >> value;) {
                kernel[group.substr(0, group.size() - 1) + "." + word] = static_cast<std::uint64_t>(std::stoll(value));
            }
        }
    }
    std::istringstream text(space.file("/proc/thread-self/net/snmp6"));
    std::string name;
    std::uint64_t value = 0;
    while (text >> name >> value) {
        kernel[name] = value;
    }
    return kernel;
}

// Two namespaces that know each other, with traffic of all kinds behind them: delivered, refused, forwarded to nobody,
// in fragments, to groups and to everybody.
class IpCountersNetns : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        here_.emplace();
        there_.emplace();
        Namespace::connect(*here_, "v0", *there_, "v1");
        here_->run("ip addr add 10.0.0.1/24 brd + dev v0; ip addr add 2001:db8::1/64 dev v0 nodad");
        there_->run("ip addr add 10.0.0.2/24 brd + dev v1; ip addr add 2001:db8::2/64 dev v1 nodad;"
                    "ip route add default via 10.0.0.1");
        here_->sysctl("net/ipv4/ip_forward", "1");
        platform_.emplace(*here_);
    }
    void TearDown() override { platform_.reset(); }

    void makeTraffic() const
    {
        there_->run(
            "ping -q -c 3 -i 0.01 10.0.0.1 >/dev/null; ping -q -c 2 -i 0.01 -s 4000 10.0.0.1 >/dev/null;"
            "ping -q -c 2 -i 0.01 2001:db8::1 >/dev/null; ping -q -c 1 -W 0.2 203.0.113.9 >/dev/null;"
            "ping -q -b -c 1 -W 0.2 10.0.0.255 >/dev/null 2>&1; ping -q -c 1 -W 0.2 224.0.0.1 >/dev/null; true");
        here_->run("for to in 10.0.0.2 2001:db8::2 127.0.0.1; do"
                   " bash -c \"echo x >/dev/udp/$to/9; echo y >/dev/udp/$to/9; : >/dev/tcp/$to/9\" 2>/dev/null; done;"
                   "ping -q -c 1 -W 0.2 10.0.0.2 >/dev/null");
    }

    // A reading of the platform between two equal ones of the kernel, for a network is never still for long.
    template <class Read>
    Kernel still(Read read)
    {
        for (int attempt = 0; attempt < 100; ++attempt) {
            const Kernel before = kernelCounters(*here_);
            (*platform_)->beginPacket();
            read();
            if (kernelCounters(*here_) == before) {
                return before;
            }
        }
        ADD_FAILURE() << "the counters never stand still";
        return {};
    }
    IpRows &ip() { return (*platform_)->ip(); }

    std::optional<Namespace> here_;
    std::optional<Namespace> there_;
    std::optional<PlatformInside> platform_;
};

constexpr std::uint64_t everyCounter = ~std::uint64_t{0}; // is wanted

void expectCounters(const IpmibIpCounters &counters, const std::map<unsigned, std::uint64_t> &expected)
{
    for (unsigned which = 0; which < IPMIB_IP_COUNTERS; ++which) {
        const auto found = expected.find(which);
        EXPECT_EQ((counters.counted >> which & 1) != 0, found != expected.end()) << which;
        EXPECT_EQ(counters.value[which], found != expected.end() ? found->second : 0) << which;
    }
}

TEST_F(IpCountersNetns, ofTheSystemAreTheKernelsForBothVersions)
{
    makeTraffic();
    IpmibIpCounters ipv4;
    IpmibIpCounters ipv6;
    Kernel kernel = still([&] {
        ipv4.counted = everyCounter;
        ASSERT_TRUE(ip().systemCounters(IPMIB_IPV4, ipv4));
        ASSERT_TRUE(ip().systemCounters(IPMIB_IPV6, ipv6));
    });
    for (const char *name : {"Ip.InReceives", "IpExt.InNoRoutes", "Ip.ReasmReqds", "Ip.ReasmOKs", "IpExt.InMcastPkts",
                             "IpExt.InBcastPkts", "IpExt.InBcastOctets", "Ip6InMcastOctets"}) {
        EXPECT_GT(kernel[name], 0u) << "the traffic was to move this one: " << name;
    }
    std::map<unsigned, std::uint64_t> expected = {
        {IPMIB_IP_IN_RECEIVES, kernel["Ip.InReceives"]},
        {IPMIB_IP_IN_OCTETS, kernel["IpExt.InOctets"]},
        {IPMIB_IP_IN_HDR_ERRORS, kernel["Ip.InHdrErrors"]},
        {IPMIB_IP_IN_NO_ROUTES, kernel["IpExt.InNoRoutes"]},
        {IPMIB_IP_IN_ADDR_ERRORS, kernel["Ip.InAddrErrors"]},
        {IPMIB_IP_IN_UNKNOWN_PROTOS, kernel["Ip.InUnknownProtos"]},
        {IPMIB_IP_IN_TRUNCATED_PKTS, kernel["IpExt.InTruncatedPkts"]},
        {IPMIB_IP_IN_FORW_DATAGRAMS, kernel["Ip.ForwDatagrams"]},
        {IPMIB_IP_REASM_REQDS, kernel["Ip.ReasmReqds"]},
        {IPMIB_IP_REASM_OKS, kernel["Ip.ReasmOKs"]},
        {IPMIB_IP_REASM_FAILS, kernel["Ip.ReasmFails"]},
        {IPMIB_IP_IN_DISCARDS, kernel["Ip.InDiscards"]},
        {IPMIB_IP_IN_DELIVERS, kernel["Ip.InDelivers"]},
        {IPMIB_IP_OUT_REQUESTS, kernel["Ip.OutRequests"]},
        {IPMIB_IP_OUT_NO_ROUTES, kernel["Ip.OutNoRoutes"]},
        {IPMIB_IP_OUT_FORW_DATAGRAMS, kernel["Ip.ForwDatagrams"]},
        {IPMIB_IP_OUT_DISCARDS, kernel["Ip.OutDiscards"]},
        {IPMIB_IP_OUT_FRAG_REQDS, kernel["Ip.FragOKs"] + kernel["Ip.FragFails"]},
        {IPMIB_IP_OUT_FRAG_OKS, kernel["Ip.FragOKs"]},
        {IPMIB_IP_OUT_FRAG_FAILS, kernel["Ip.FragFails"]},
        {IPMIB_IP_OUT_FRAG_CREATES, kernel["Ip.FragCreates"]},
        {IPMIB_IP_OUT_TRANSMITS, kernel.contains("Ip.OutTransmits")
                                     ? kernel["Ip.OutTransmits"]
                                     : kernel["Ip.OutRequests"] + kernel["Ip.ForwDatagrams"]},
        {IPMIB_IP_OUT_OCTETS, kernel["IpExt.OutOctets"]},
        {IPMIB_IP_IN_MCAST_PKTS, kernel["IpExt.InMcastPkts"]},
        {IPMIB_IP_IN_MCAST_OCTETS, kernel["IpExt.InMcastOctets"]},
        {IPMIB_IP_OUT_MCAST_PKTS, kernel["IpExt.OutMcastPkts"]},
        {IPMIB_IP_OUT_MCAST_OCTETS, kernel["IpExt.OutMcastOctets"]},
        {IPMIB_IP_IN_BCAST_PKTS, kernel["IpExt.InBcastPkts"]},
        {IPMIB_IP_OUT_BCAST_PKTS, kernel["IpExt.OutBcastPkts"]},
        {IPMIB_IP_ROUTING_DISCARDS, 0},
    };
    expectCounters(ipv4, expected);

    const auto six = [&](const char *name) { return kernel[std::string("Ip6") + name]; };
    expected = {
        {IPMIB_IP_IN_RECEIVES, six("InReceives")},
        {IPMIB_IP_IN_OCTETS, six("InOctets")},
        {IPMIB_IP_IN_HDR_ERRORS, six("InHdrErrors")},
        {IPMIB_IP_IN_NO_ROUTES, six("InNoRoutes")},
        {IPMIB_IP_IN_ADDR_ERRORS, six("InAddrErrors")},
        {IPMIB_IP_IN_UNKNOWN_PROTOS, six("InUnknownProtos")},
        {IPMIB_IP_IN_TRUNCATED_PKTS, six("InTruncatedPkts")},
        {IPMIB_IP_IN_FORW_DATAGRAMS, six("OutForwDatagrams") + six("InNoRoutes") + six("InTooBigErrors")},
        {IPMIB_IP_REASM_REQDS, six("ReasmReqds")},
        {IPMIB_IP_REASM_OKS, six("ReasmOKs")},
        {IPMIB_IP_REASM_FAILS, six("ReasmFails")},
        {IPMIB_IP_IN_DISCARDS, six("InDiscards")},
        {IPMIB_IP_IN_DELIVERS, six("InDelivers")},
        {IPMIB_IP_OUT_REQUESTS, six("OutRequests")},
        {IPMIB_IP_OUT_NO_ROUTES, six("OutNoRoutes")},
        {IPMIB_IP_OUT_FORW_DATAGRAMS, six("OutForwDatagrams")},
        {IPMIB_IP_OUT_DISCARDS, six("OutDiscards")},
        {IPMIB_IP_OUT_FRAG_REQDS, six("FragOKs") + six("FragFails")},
        {IPMIB_IP_OUT_FRAG_OKS, six("FragOKs")},
        {IPMIB_IP_OUT_FRAG_FAILS, six("FragFails")},
        {IPMIB_IP_OUT_FRAG_CREATES, six("FragCreates")},
        {IPMIB_IP_OUT_TRANSMITS,
         kernel.contains("Ip6OutTransmits") ? six("OutTransmits") : six("OutRequests") + six("OutForwDatagrams")},
        {IPMIB_IP_OUT_OCTETS, six("OutOctets")},
        {IPMIB_IP_IN_MCAST_PKTS, six("InMcastPkts")},
        {IPMIB_IP_IN_MCAST_OCTETS, six("InMcastOctets")},
        {IPMIB_IP_OUT_MCAST_PKTS, six("OutMcastPkts")},
        {IPMIB_IP_OUT_MCAST_OCTETS, six("OutMcastOctets")},
    };
    expectCounters(ipv6, expected);
}

TEST_F(IpCountersNetns, ofAnInterfaceAreTheReadingOfTheModulesServices)
{
    makeTraffic();
    const std::uint32_t v0 = here_->json("ip -j link show dev v0")[0]["ifindex"];
    (*platform_)->beginPacket();
    Ip6MibStat stat;
    ASSERT_EQ(IP6_GetIfStat(v0, 10, &stat), 0u);
    const std::uint64_t reads = (*platform_)->ip6Links().kernelReads();
    IpmibIpCounters counters;
    ASSERT_TRUE(ip().interfaceCounters(IPMIB_IPV6, v0, counters));
    EXPECT_EQ((*platform_)->ip6Links().kernelReads(), reads) << "one reading a packet";
    EXPECT_EQ(counters.value[IPMIB_IP_IN_RECEIVES], stat.in_receives);
    EXPECT_EQ(counters.value[IPMIB_IP_IN_FORW_DATAGRAMS], stat.in_forwarded);
    EXPECT_EQ(counters.value[IPMIB_IP_OUT_TRANSMITS], stat.out_transmits);
    EXPECT_EQ(counters.value[IPMIB_IP_OUT_OCTETS], stat.out_octets);
    // Multicast octets come from the kernel's array, whose order was learned from other counters.
    Kernel kernel;
    for (int attempt = 0; attempt < 100; ++attempt) {
        (*platform_)->beginPacket();
        std::istringstream text(here_->file("/proc/thread-self/net/dev_snmp6/v0"));
        std::string name;
        std::uint64_t value = 0;
        for (text.ignore(1000, '\n'); text >> name >> value;) {
            kernel[name] = value;
        }
        ASSERT_TRUE(ip().interfaceCounters(IPMIB_IPV6, v0, counters));
        if (kernel["Ip6InReceives"] == counters.value[IPMIB_IP_IN_RECEIVES] &&
            kernel["Ip6OutOctets"] == counters.value[IPMIB_IP_OUT_OCTETS]) {
            break;
        }
    }
    EXPECT_GT(kernel["Ip6OutMcastOctets"], 0u);
    EXPECT_EQ(counters.value[IPMIB_IP_IN_MCAST_OCTETS], kernel["Ip6InMcastOctets"]);
    EXPECT_EQ(counters.value[IPMIB_IP_OUT_MCAST_OCTETS], kernel["Ip6OutMcastOctets"]);
    EXPECT_FALSE(ip().interfaceCounters(IPMIB_IPV4, v0, counters)) << "nothing counts IPv4 by interface";
    EXPECT_FALSE(ip().interfaceCounters(IPMIB_IPV6, 12345, counters));
    here_->run("ip link set v0 mtu 1000");
    (*platform_)->beginPacket();
    EXPECT_FALSE(ip().interfaceCounters(IPMIB_IPV6, v0, counters)) << "no IPv6 there";
}

TEST_F(IpCountersNetns, ofIcmpTcpAndUdpAreTheKernels)
{
    makeTraffic();
    IpmibIcmpCounters icmp;
    IpmibIcmpCounters icmp6;
    IpmibTcpCounters tcp;
    IpmibUdpCounters udp;
    Kernel kernel = still([&] {
        ASSERT_TRUE(ip().icmpCounters(IPMIB_IPV4, icmp));
        ASSERT_TRUE(ip().icmpCounters(IPMIB_IPV6, icmp6));
        ASSERT_TRUE(ip().tcpCounters(tcp));
        ASSERT_TRUE(ip().udpCounters(udp));
    });
    EXPECT_GT(icmp.in_type[8], 0u);
    EXPECT_GT(icmp6.in_type[128], 0u);
    EXPECT_GT(kernel["Udp.OutDatagrams"], 0u);
    EXPECT_GT(kernel["Udp6OutDatagrams"], 0u);
    EXPECT_GT(tcp.attempt_fails, 0u);
    EXPECT_EQ(icmp.in_msgs, kernel["Icmp.InMsgs"]);
    EXPECT_EQ(icmp.in_errors, kernel["Icmp.InErrors"]);
    EXPECT_EQ(icmp.out_msgs, kernel["Icmp.OutMsgs"]);
    EXPECT_EQ(icmp.out_errors, kernel["Icmp.OutErrors"]);
    EXPECT_EQ(icmp6.in_msgs, kernel["Icmp6InMsgs"]);
    EXPECT_EQ(icmp6.out_errors, kernel["Icmp6OutErrors"]);
    const std::set<unsigned> countedByName = {0, 3, 4, 5, 8, 11, 12, 13, 14, 17, 18};
    for (unsigned type = 0; type < 256; ++type) {
        const std::string number = std::to_string(type);
        EXPECT_EQ(icmp.in_type[type], kernel["IcmpMsg.InType" + number]) << type;
        EXPECT_EQ(icmp.out_type[type], kernel["IcmpMsg.OutType" + number]) << type;
        const bool isCounted = countedByName.contains(type) || icmp.in_type[type] + icmp.out_type[type] != 0;
        EXPECT_EQ((icmp.listed[type / 8] >> type % 8 & 1) != 0, isCounted) << type;
        EXPECT_EQ(icmp6.in_type[type], kernel["Icmp6InType" + number]) << type;
        EXPECT_EQ((icmp6.listed[type / 8] >> type % 8 & 1) != 0, icmp6.in_type[type] + icmp6.out_type[type] != 0)
            << type;
    }
    EXPECT_EQ(tcp.rto_algorithm, kernel["Tcp.RtoAlgorithm"]);
    EXPECT_EQ(tcp.rto_min_ms, kernel["Tcp.RtoMin"]);
    EXPECT_EQ(tcp.rto_max_ms, kernel["Tcp.RtoMax"]);
    EXPECT_EQ(tcp.max_connections, static_cast<std::int32_t>(kernel["Tcp.MaxConn"]));
    EXPECT_EQ(tcp.established, kernel["Tcp.CurrEstab"]);
    EXPECT_EQ(tcp.active_opens, kernel["Tcp.ActiveOpens"]);
    EXPECT_EQ(tcp.passive_opens, kernel["Tcp.PassiveOpens"]);
    EXPECT_EQ(tcp.attempt_fails, kernel["Tcp.AttemptFails"]);
    EXPECT_EQ(tcp.established_resets, kernel["Tcp.EstabResets"]);
    EXPECT_EQ(tcp.in_segments, kernel["Tcp.InSegs"]);
    EXPECT_EQ(tcp.out_segments, kernel["Tcp.OutSegs"]);
    EXPECT_EQ(tcp.retransmitted_segments, kernel["Tcp.RetransSegs"]);
    EXPECT_EQ(tcp.in_errors, kernel["Tcp.InErrs"]);
    EXPECT_EQ(tcp.out_resets, kernel["Tcp.OutRsts"]);
    EXPECT_EQ(udp.in_datagrams, kernel["Udp.InDatagrams"] + kernel["Udp6InDatagrams"]);
    EXPECT_EQ(udp.no_ports, kernel["Udp.NoPorts"] + kernel["Udp6NoPorts"]);
    EXPECT_EQ(udp.in_errors, kernel["Udp.InErrors"] + kernel["Udp6InErrors"]);
    EXPECT_EQ(udp.out_datagrams, kernel["Udp.OutDatagrams"] + kernel["Udp6OutDatagrams"]);
}

TEST_F(IpCountersNetns, aPacketOfRequestsIsAnsweredFromOneReading)
{
    (*platform_)->beginPacket();
    IpmibIpCounters before;
    before.counted = everyCounter;
    ASSERT_TRUE(ip().systemCounters(IPMIB_IPV4, before));
    here_->run("ping -q -c 1 127.0.0.1 >/dev/null");
    IpmibIpCounters again;
    again.counted = everyCounter;
    IpmibIcmpCounters icmp;
    ASSERT_TRUE(ip().systemCounters(IPMIB_IPV4, again));
    ASSERT_TRUE(ip().icmpCounters(IPMIB_IPV4, icmp));
    EXPECT_EQ(again.value[IPMIB_IP_IN_RECEIVES], before.value[IPMIB_IP_IN_RECEIVES]);
    EXPECT_EQ(icmp.in_type[8], 0u);
    EXPECT_EQ((*platform_)->ipv4Counters().kernelReads(), 2u) << "each of two files";
    (*platform_)->beginPacket();
    ASSERT_TRUE(ip().systemCounters(IPMIB_IPV4, again));
    EXPECT_GE(again.value[IPMIB_IP_IN_RECEIVES], before.value[IPMIB_IP_IN_RECEIVES] + 2);
}

TEST_F(IpCountersNetns, aFileThatHasNoneOfTheCountersWantedIsNotRead)
{
    const auto readsFor = [this](std::uint64_t wanted) {
        (*platform_)->beginPacket();
        const std::uint64_t before = (*platform_)->ipv4Counters().kernelReads();
        IpmibIpCounters counters;
        counters.counted = wanted;
        EXPECT_TRUE(ip().systemCounters(IPMIB_IPV4, counters));
        EXPECT_EQ(counters.counted & wanted, wanted);
        return (*platform_)->ipv4Counters().kernelReads() - before;
    };
    EXPECT_EQ(readsFor(0), 1u) << "whether there is a row";
    EXPECT_EQ(readsFor(1U << IPMIB_IP_IN_RECEIVES | 1U << IPMIB_IP_OUT_FRAG_REQDS), 1u);
    EXPECT_EQ(readsFor(1U << IPMIB_IP_IN_RECEIVES | 1U << IPMIB_IP_IN_OCTETS), 2u);
}

TEST_F(IpCountersNetns, settingsAreThoseOfTheKernelAsTheyAreNow)
{
    IpmibIpSettings settings;
    ASSERT_TRUE(ip().settings(IPMIB_IPV4, settings));
    EXPECT_EQ(settings.forwarding, 1u);
    EXPECT_EQ(settings.default_ttl, std::stoul(here_->sysctl("net/ipv4/ip_default_ttl")));
    EXPECT_EQ(settings.reasm_timeout_s, std::stoul(here_->sysctl("net/ipv4/ipfrag_time")));
    here_->sysctl("net/ipv4/ip_forward", "0");
    here_->sysctl("net/ipv4/ip_default_ttl", "17");
    here_->sysctl("net/ipv4/ipfrag_time", "12");
    ASSERT_TRUE(ip().settings(IPMIB_IPV4, settings));
    EXPECT_EQ(settings.forwarding, 2u);
    EXPECT_EQ(settings.default_ttl, 17u);
    EXPECT_EQ(settings.reasm_timeout_s, 12u);
    here_->sysctl("net/ipv6/conf/all/forwarding", "1");
    ASSERT_TRUE(ip().settings(IPMIB_IPV6, settings));
    EXPECT_EQ(settings.forwarding, 1u);
    EXPECT_EQ(settings.default_ttl, std::stoul(here_->sysctl("net/ipv6/conf/default/hop_limit")));
    EXPECT_EQ(settings.reasm_timeout_s, std::stoul(here_->sysctl("net/ipv6/ip6frag_time")));
}

} // namespace
