// SPDX-License-Identifier: BSD-3-Clause
// Counters and IPv6 settings of interfaces against the kernel's own files, after real traffic through a router.
#include "netns/namespace.h"
#include "netns/process.h"
#include "test_platform.h"

#include <ipmib/message.h>
#include <ipmib/platform.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <map>
#include <sstream>

namespace
{

using namespace ipmib::platform;
using ipmib::netns::Namespace;

// A file of names and numbers; names that it lacks count 0.
using Counters = std::map<std::string, std::uint64_t>;

Counters countersOf(const Namespace &space, const std::string &path)
{
    std::istringstream text(space.file("/proc/thread-self/net/" + path));
    Counters counters;
    std::string name;
    std::uint64_t value;
    while (text >> name >> value) {
        counters[name] = value;
    }
    return counters;
}

void expectSame(const Ip6MibStat &stat, Counters kernel)
{
    const auto low = [&](const char *name) { return static_cast<std::uint32_t>(kernel[name]); };
    EXPECT_EQ(stat.in_receives, kernel["Ip6InReceives"]);
    EXPECT_EQ(stat.in_forwarded, kernel["Ip6OutForwDatagrams"] + kernel["Ip6InNoRoutes"] + kernel["Ip6InTooBigErrors"]);
    EXPECT_EQ(stat.out_forwarded, kernel["Ip6OutForwDatagrams"]);
    EXPECT_EQ(stat.out_transmits, kernel.contains("Ip6OutTransmits")
                                      ? kernel["Ip6OutTransmits"]
                                      : kernel["Ip6OutRequests"] + kernel["Ip6OutForwDatagrams"]);
    EXPECT_EQ(stat.out_requests, kernel["Ip6OutRequests"]);
    EXPECT_EQ(stat.in_octets, kernel["Ip6InOctets"]);
    EXPECT_EQ(stat.out_octets, kernel["Ip6OutOctets"]);
    EXPECT_EQ(stat.header_errors_1, low("Ip6InHdrErrors"));
    EXPECT_EQ(stat.in_truncated, low("Ip6InTruncatedPkts"));
    EXPECT_EQ(stat.reasm_required, low("Ip6ReasmReqds"));
    EXPECT_EQ(stat.reasm_oks, low("Ip6ReasmOKs"));
    EXPECT_EQ(stat.reasm_fails_1, low("Ip6ReasmFails"));
    EXPECT_EQ(stat.unknown_protos, low("Ip6InUnknownProtos"));
    EXPECT_EQ(stat.in_delivers, low("Ip6InDelivers"));
    EXPECT_EQ(stat.in_no_routes, low("Ip6InNoRoutes"));
    EXPECT_EQ(stat.address_errors, low("Ip6InAddrErrors"));
    EXPECT_EQ(stat.frag_fails, low("Ip6FragFails"));
    EXPECT_EQ(stat.frag_oks, low("Ip6FragOKs"));
    EXPECT_EQ(stat.frag_creates, low("Ip6FragCreates"));
    EXPECT_EQ(stat.in_mcast_pkts, low("Ip6InMcastPkts"));
    EXPECT_EQ(stat.out_mcast_pkts, low("Ip6OutMcastPkts"));
    EXPECT_EQ(stat.in_discards, low("Ip6InDiscards"));
    EXPECT_EQ(stat.out_discards, low("Ip6OutDiscards"));
    EXPECT_EQ(stat.out_no_routes, low("Ip6OutNoRoutes"));
}

// Reads the platform and the kernel's file in a moment in which nothing is counted: a router is never still for long.
template <class ReadPlatform>
Counters still(const Namespace &space, const std::string &path, ReadPlatform readPlatform)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        const Counters before = countersOf(space, path);
        readPlatform();
        if (countersOf(space, path) == before) {
            return before;
        }
    }
    ADD_FAILURE() << path << " never stands still";
    return {};
}

// Two hosts with a router between them, which has interfaces of many kinds besides.
class Router : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        space.emplace();
        left.emplace();
        right.emplace();
        Namespace::connect(*left, "wan", *space, "left");
        Namespace::connect(*right, "wan", *space, "right");
        left->run("ip addr add 2001:db8:1::2/64 dev wan nodad; ip -6 route add default via 2001:db8:1::1");
        right->run("ip addr add 2001:db8:2::2/64 dev wan nodad; ip -6 route add default via 2001:db8:2::1");
        space->run("ip addr add 2001:db8:1::1/64 dev left nodad; ip addr add 2001:db8:2::1/64 dev right nodad");
        space->sysctl("net/ipv6/conf/all/forwarding", "1");
        space->run("ip link add br0 type bridge; ip link set br0 up");
        space->run("ip link add macvlan0 link left type macvlan; ip link set macvlan0 up");
        space->run("ip tuntap add tun0 mode tun; ip tuntap add tap0 mode tap");
        space->run("ip link add small type veth peer name tiny mtu 1279; ip link set tiny up");
        space->sysctl("net/ipv6/conf/small/disable_ipv6", "1");
        space->run("ip link set small up");
    }

    void traffic() const
    {
        left->run("ping -6 -q -n -c 20 -i 0.002 2001:db8:2::2 > /dev/null");              // forwarded
        left->run("ping -6 -q -n -c 3 -i 0.002 -s 4000 2001:db8:1::1 > /dev/null");       // fragments, reassembled here
        left->run("ping -6 -q -n -c 2 -i 0.002 -W 1 2001:db8:ff::2 > /dev/null || true"); // no route
        left->run("ping -6 -q -n -c 2 -i 0.002 -W 1 -t 1 2001:db8:2::2 > /dev/null || true");
        space->run("ping -6 -q -n -c 5 -i 0.002 2001:db8:2::2 > /dev/null"); // our own
        space->run("ping -6 -q -n -c 1 ff02::1%left > /dev/null");
        // A host that does not answer: only one direction is forwarded.
        right->sysctl("net/ipv6/icmp/echo_ignore_all", "1");
        left->run("ping -6 -q -n -c 10 -i 0.002 -W 1 2001:db8:2::2 > /dev/null || true");
        right->sysctl("net/ipv6/icmp/echo_ignore_all", "0");
    }

    std::uint32_t indexOf(const std::string &name) const
    {
        return space->json("ip -j link show " + name)[0]["ifindex"];
    }

    std::optional<Namespace> space, left, right;
};

TEST_F(Router, everyInterfacesCountersAreTheKernels)
{
    PlatformInside platform(*space);
    traffic();
    for (const auto &link : space->json("ip -j link")) {
        const std::string name = link["ifname"];
        SCOPED_TRACE(name);
        Ip6MibStat stat;
        const auto read = [&] {
            platform->beginPacket();
            ASSERT_EQ(IP6_GetIfStat(link["ifindex"], 10, &stat), 0u);
        };
        if (name == "tiny") { // without IPv6, and so without a file
            read();
            expectSame(stat, {});
        } else {
            const Counters kernel = still(*space, "dev_snmp6/" + name, read);
            expectSame(stat, kernel);
        }
    }
    EXPECT_TRUE(platform->ip6Links().layoutSettled()) << "the kernel's order of counters is not one that we know";
    Ip6MibStat stat;
    IP6_GetIfStat(indexOf("left"), 10, &stat);
    EXPECT_GE(stat.in_receives, 40u);
    EXPECT_GE(stat.out_forwarded, 20u);
    EXPECT_GE(stat.reasm_oks, 3u);
    EXPECT_GE(stat.in_no_routes, 2u);
    EXPECT_GE(stat.header_errors_1, 2u);
}

TEST_F(Router, theSystemsCountersAreTheKernels)
{
    PlatformInside platform(*space);
    traffic();
    Ip6MibStat stat;
    Icmp6MibStat icmp;
    Counters kernel = still(*space, "snmp6", [&] {
        platform->beginPacket();
        ASSERT_EQ(IP6_GetMibStat(0x8000, &stat), 0u);
        ASSERT_EQ(ICMP6_GetMibStat(&icmp), 0u);
    });
    expectSame(stat, kernel);
    EXPECT_GE(stat.out_forwarded, 50u);
    EXPECT_EQ(icmp.counter[ICMP6_STAT_IN_MSGS], kernel["Icmp6InMsgs"]);
    EXPECT_EQ(icmp.counter[ICMP6_STAT_OUT_MSGS], kernel["Icmp6OutMsgs"]);
    EXPECT_EQ(icmp.counter[ICMP6_STAT_IN_ERROR_1], kernel["Icmp6InErrors"]);
    for (std::uint32_t type = 0; type < 256; ++type) {
        EXPECT_EQ(icmp.counter[ICMP6_STAT_IN_TYPE + type], kernel["Icmp6InType" + std::to_string(type)]);
        EXPECT_EQ(icmp.counter[ICMP6_STAT_OUT_TYPE + type], kernel["Icmp6OutType" + std::to_string(type)]);
    }
    EXPECT_GE(icmp.counter[ICMP6_STAT_IN_TYPE + 129], 5u);
}

TEST_F(Router, countersAreFreshForEachPacketAndReadOnceInIt)
{
    PlatformInside platform(*space);
    platform->beginPacket();
    const std::uint32_t left_ = indexOf("left");
    Ip6MibStat first, again, system;
    IP6_GetIfStat(left_, 10, &first);
    IP6_GetMibStat(0x8000, &system);
    const std::uint64_t linkReads = platform->ip6Links().kernelReads();
    const std::uint64_t systemReads = platform->systemCounters().kernelReads();
    left->run("ping -6 -q -n -c 4 -i 0.002 2001:db8:1::1 > /dev/null");
    IP6_GetIfStat(left_, 10, &again);
    EXPECT_EQ(again.in_receives, first.in_receives) << "one packet, one reading";
    EXPECT_EQ(platform->ip6Links().kernelReads(), linkReads);

    platform->beginPacket();
    IP6_GetIfStat(left_, 10, &again);
    EXPECT_GE(again.in_receives, first.in_receives + 4);
    const std::uint64_t before = system.in_receives;
    IP6_GetMibStat(0x8000, &system);
    EXPECT_GE(system.in_receives, before + 4);
    EXPECT_EQ(platform->ip6Links().kernelReads(), linkReads + 1);
    EXPECT_EQ(platform->systemCounters().kernelReads(), systemReads + 1);
}

// What a packet that wants several links reads at once is the same of each as what is read of it alone.
TEST_F(Router, aWalkReadsSeveralLinksAtOnce)
{
    PlatformInside platform(*space);
    traffic();
    std::vector<std::uint32_t> links;
    for (const auto &link : space->json("ip -j link")) {
        links.push_back(link["ifindex"]);
    }
    const auto read = [&](std::uint32_t link, std::vector<std::uint64_t> &numbers) {
        Ip6MibStat stat;
        IP6_GetIfStat(link, 10, &stat);
        const Ip6Link *const found = platform->ip6Link(link);
        const Ip6Link ip6 = found != nullptr ? *found : Ip6Link{};
        numbers.insert(numbers.end(),
                       {stat.in_receives, stat.out_requests, stat.in_octets, stat.out_octets, stat.out_transmits,
                        ip6.reachableMs, ip6.retransmitMs, ip6.mtu, ip6.present ? 1u : 0u});
    };
    const auto readEachAlone = [&] {
        std::vector<std::uint64_t> numbers;
        for (const std::uint32_t link : links) {
            platform->beginPacket();
            const std::uint64_t before = platform->ip6Links().kernelReads();
            read(link, numbers);
            EXPECT_EQ(platform->ip6Links().kernelReads(), before + 1) << "GETs of one link read that link";
        }
        return numbers;
    };
    const auto readAll = [&] {
        platform->beginPacket();
        const std::uint64_t before = platform->ip6Links().kernelReads();
        std::vector<std::uint64_t> numbers;
        for (const std::uint32_t link : links) {
            read(link, numbers);
        }
        EXPECT_LT(platform->ip6Links().kernelReads() - before, links.size());
        return numbers;
    };
    {
        std::vector<std::uint64_t> settles; // the kernel's order of counters
        platform->beginPacket();
        read(links[0], settles);
        read(links[1], settles);
    }
    const auto before = readEachAlone();
    const auto atOnce = readAll();
    const auto again = readAll();
    const auto after = readEachAlone();
    for (std::size_t i = 0; i < before.size(); ++i) { // a router is never still for long
        EXPECT_TRUE(before[i] <= atOnce[i] && atOnce[i] <= again[i] && again[i] <= after[i]) << i;
    }
}

// Nothing that a packet is answered with was read before it came, wherever the walk before has ended.
TEST(LinksNetns, aWalkInPacketsReadsNothingAhead)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    constexpr unsigned count = 60;
    constexpr unsigned without = 33; // IPv6, for its MTU
    space.run("for i in $(seq 1 " + std::to_string(count) +
              "); do echo \"link add b$i type bridge\"; echo \"link set b$i up\"; done | ip -batch -; "
              "ip link set b" +
              std::to_string(without) + " mtu 1000");
    PlatformInside platform(space);
    platform->beginPacket();
    const std::uint32_t first = space.json("ip -j link show dev b1")[0]["ifindex"];
    const auto mtu = [&](unsigned number) {
        const Ip6Link *const link = platform->ip6Link(first + number - 1);
        return link != nullptr && link->present ? link->mtu : 0;
    };
    const auto setAll = [&](unsigned value) {
        space.run("for i in $(seq 1 " + std::to_string(count) + "); do [ $i = " + std::to_string(without) +
                  " ] || echo \"link set b$i mtu " + std::to_string(value) + "\"; done | ip -batch -");
    };
    unsigned value = 1300;
    for (const unsigned packet : {1u, 7u, 10u, 13u, count}) {
        const std::uint64_t before = platform->ip6Links().kernelReads();
        for (unsigned i = 1; i <= count; i += packet) {
            setAll(++value);
            platform->beginPacket();
            for (unsigned j = i; j < i + packet && j <= count; ++j) {
                EXPECT_EQ(mtu(j), j == without ? 0 : value) << j << " in packets of " << packet;
            }
        }
        if (packet > 1) {
            EXPECT_LT(platform->ip6Links().kernelReads() - before, count) << "in packets of " << packet;
        }
    }
    setAll(++value);
    platform->beginPacket();
    for (const unsigned j : {50u, 20u, 21u, 22u, 5u, 6u, 59u, 60u, 1u}) { // and in no order
        EXPECT_EQ(mtu(j), value) << j;
    }
}

TEST_F(Router, noOddInterfaceFailsAndBehindTheLastIsACleanEnd)
{
    PlatformInside platform(*space);
    Ip6MibStat stat;
    IpMibIfStat ipv4;
    for (const auto &link : space->json("ip -j link")) {
        EXPECT_EQ(IP6_GetIfStat(link["ifindex"], 10, &stat), 0u) << link["ifname"];
        EXPECT_EQ(IP_GetMibIfStat(link["ifindex"], &ipv4), 0u) << link["ifname"];
    }
    for (const std::uint32_t none : {0u, 4000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(IP6_GetIfStat(none, 10, &stat), RC_NO_MORE);
        EXPECT_EQ(IP_GetMibIfStat(none, &ipv4), RC_NO_MORE);
    }
}

TEST_F(Router, aLinkThatVanishesInAPacketKeepsItsRowUntilTheNext)
{
    PlatformInside platform(*space);
    traffic();
    const std::uint32_t index = indexOf("left");
    platform->beginPacket();
    Ip6MibStat before, stat;
    IP6_GetIfStat(index, 10, &before);
    platform->beginPacket();
    space->run("ip link del left");
    EXPECT_EQ(IP6_GetIfStat(index, 10, &stat), 0u);
    EXPECT_EQ(stat.in_receives, before.in_receives);
    platform->beginPacket();
    EXPECT_EQ(IP6_GetIfStat(index, 10, &stat), RC_NO_MORE);
}

TEST_F(Router, settingsOfEachInterfaceAreTheKernels)
{
    PlatformInside platform(*space);
    space->sysctl("net/ipv6/neigh/left/retrans_time_ms", "1700");
    space->sysctl("net/ipv6/conf/left/mtu", "1400");
    space->sysctl("net/ipv6/conf/default/hop_limit", "77");
    platform->beginPacket();
    EXPECT_EQ(ND_GetHopLimit(), 77u);

    NdIfConfigInfo info;
    ASSERT_EQ(ND_GetIfConfigInfo(indexOf("left"), &info), 0u);
    EXPECT_EQ(info.retransmit_ms, 1700u);
    // The kernel spreads the time between a half and one and a half of the base, 30 s.
    EXPECT_GE(info.reachable_ms, 15000u);
    EXPECT_LE(info.reachable_ms, 45000u);
    EXPECT_NE(ND_GetIfConfigInfo(indexOf("tiny"), &info), 0u);
    EXPECT_NE(ND_GetIfConfigInfo(0, &info), 0u);

    std::uint32_t mtu = 0;
    ASSERT_EQ(IP6_GetIfMTU(indexOf("left"), &mtu), 0u);
    EXPECT_EQ(mtu, 1400u);
    ASSERT_EQ(IP6_GetIfMTU(indexOf("right"), &mtu), 0u);
    EXPECT_EQ(mtu, 1500u);
    EXPECT_NE(IP6_GetIfMTU(indexOf("tiny"), &mtu), 0u);
    EXPECT_EQ(IP6_DaemonCheck(1), 0u);
    EXPECT_EQ(IP_DaemonCheck(1), 0u);
}

TEST_F(Router, identifierAndLinkLocalState)
{
    PlatformInside platform(*space);
    platform->beginPacket();
    FullAddressRecord address;
    std::array<std::uint8_t, 8> identifier;
    const auto main = [&](const char *name) { return IP6ADDR_DRVK_GetMainLLA(indexOf(name), &address) == 0; };
    const auto identified = [&](const char *name) {
        identifier = {};
        return IP6Mib_GetIFID(indexOf(name), identifier.data()) == 0;
    };

    EXPECT_TRUE(main("left"));
    EXPECT_EQ(address.address[0], 0xFE);
    EXPECT_TRUE(identified("left"));
    EXPECT_TRUE(std::equal(identifier.begin(), identifier.end(), address.address + 8));

    EXPECT_TRUE(main("lo"));
    EXPECT_TRUE(identified("lo"));
    EXPECT_EQ(identifier, (std::array<std::uint8_t, 8>{0, 0, 0, 0, 0, 0, 0, 1}));

    EXPECT_FALSE(main("small")) << "IPv6 is disabled there";
    EXPECT_TRUE(identified("small"));
    EXPECT_NE(identifier, (std::array<std::uint8_t, 8>{}));

    EXPECT_FALSE(main("tun0")) << "it is down";
    EXPECT_TRUE(identified("tun0"));

    EXPECT_FALSE(main("tiny")) << "its MTU leaves no room for IPv6";
    EXPECT_FALSE(identified("tiny"));
    EXPECT_FALSE(IP6Mib_GetIFID(0, identifier.data()) == 0);

    left->run("ip link set wan down");
    platform->beginPacket();
    EXPECT_TRUE(main("left")) << "without a carrier the address stays";
    space->run("ip link set left down");
    platform->beginPacket();
    EXPECT_FALSE(main("left"));
}

TEST(Tentative, anAddressUnderDetectionDoesNotCount)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    for (const char *scope : {"all", "default"}) {
        space.sysctl(std::string("net/ipv6/conf/") + scope + "/accept_dad", "1");
    }
    space.run("ip link add br0 type bridge; ip link set br0 addrgenmode none; ip link set br0 up");
    PlatformInside platform(space);
    const std::uint32_t index = space.json("ip -j link show br0")[0]["ifindex"];
    FullAddressRecord address;
    space.sysctl("net/ipv6/conf/br0/dad_transmits", "100");
    space.run("ip addr add fe80::1/64 dev br0");
    platform->beginPacket();
    EXPECT_NE(IP6ADDR_DRVK_GetMainLLA(index, &address), 0u);
    space.run("ip addr del fe80::1/64 dev br0; ip addr add fe80::1/64 dev br0 nodad");
    // The kernel decides behind the command that there is nothing to detect.
    EXPECT_TRUE(platform.waitFor([&] {
        platform->beginPacket();
        return IP6ADDR_DRVK_GetMainLLA(index, &address) == 0;
    }));
}

} // namespace
