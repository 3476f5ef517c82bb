// SPDX-License-Identifier: BSD-3-Clause
// IPv4 accounting on a router, against what is sent through it: each counter, others' drops, links that go.
#include "accounting/accounting_test.h"

#include <unistd.h>

namespace ipmib::platform
{

namespace
{

using Ipv4AccountingTest = AccountingTest;

constexpr char group[] = "224.0.0.250";

} // namespace

TEST_F(Ipv4AccountingTest, ForwardedDatagramsCountWhereTheyComeInAndWhereTheyGoOut)
{
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");

    bed->client.send(RouterBed::serverAddress, bed->server, 1000, octets);

    expectCounters(accounting, "lan", {.received = 1000});
    expectCounters(accounting, "wan", {.forwarded = 1000, .sent = 1000});
    expectCounters(accounting, "lo", {});
}

TEST_F(Ipv4AccountingTest, DatagramsOfTheRouterItselfAreRequestsAndNotForwarded)
{
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");

    bed->router.send(RouterBed::serverAddress, bed->server, 300, octets);
    bed->server.send(RouterBed::wanAddress, bed->router, 200, octets);

    expectCounters(accounting, "wan", {.received = 200, .requested = 300, .sent = 300});
    expectCounters(accounting, "lan", {});
}

TEST_F(Ipv4AccountingTest, LoopbackCountsBothWays)
{
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");

    bed->router.send("127.0.0.1", bed->router, 50, octets);

    expectCounters(accounting, "lo", {.received = 50, .requested = 50, .sent = 50});
}

TEST_F(Ipv4AccountingTest, MulticastInCountsAlsoWhereNobodyListens)
{
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");

    bed->client.send(group, 100, octets);

    expectCounters(accounting, "lan", {.received = 100, .receivedMulticast = 100});
}

// The kernel shows such a datagram to the packet filter twice, and receives the copy. So it does with broadcasts.
TEST_F(Ipv4AccountingTest, MulticastOutCountsOnceAlsoWhenThisHostListens)
{
    const ip_mreqn lan{netns::addressOf(group).sin_addr, {}, static_cast<int>(ifIndex("lan"))};
    bed->router.set(IPPROTO_IP, IP_ADD_MEMBERSHIP, lan);
    bed->router.set(IPPROTO_IP, IP_MULTICAST_IF, lan);
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");

    bed->router.send(group, bed->router, 100, octets);

    expectCounters(accounting, "lan",
                   {.received = 100, .receivedMulticast = 100, .requested = 100, .sent = 100, .sentMulticast = 100});
}

TEST_F(Ipv4AccountingTest, BroadcastOutCountsOnceAndIsNotMulticast)
{
    bed->router.set(SOL_SOCKET, SO_BROADCAST, 1);
    bed->router.set(SOL_SOCKET, SO_BINDTODEVICE, "wan");
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");

    bed->router.send("255.255.255.255", bed->router, 10, octets);

    expectCounters(accounting, "wan", {.received = 10, .requested = 10, .sent = 10});
}

TEST_F(Ipv4AccountingTest, OthersDropsAreSeenWhereTheyHappen)
{
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");
    const auto sendPastDrop = [&](const UdpSocket &from, const std::string &hook) {
        bed->routerSpace.run("nft 'table ip fence { chain c { type filter hook " + hook + "; policy drop; }; }'");
        from.sendIntoTheVoid(RouterBed::serverAddress, 10, octets);
        bed->routerSpace.run("nft delete table ip fence");
    };

    sendPastDrop(bed->client, "prerouting priority raw"); // received
    expectCounters(accounting, "lan", {.received = 10});
    expectCounters(accounting, "wan", {});
    sendPastDrop(bed->client, "forward priority filter"); // not forwarded
    expectCounters(accounting, "wan", {});
    sendPastDrop(bed->client, "postrouting priority filter"); // forwarded, but not sent
    expectCounters(accounting, "wan", {.forwarded = 10});
    sendPastDrop(bed->router, "output priority raw"); // requested, but not sent
    expectCounters(accounting, "wan", {.requested = 10, .forwarded = 10});
    expectCounters(accounting, "lan", {.received = 30});
}

// As policy routing by mark does, of users or of programs.
TEST_F(Ipv4AccountingTest, ADatagramThatOthersRouteElsewhereIsSentWhereItGoes)
{
    bed->routerSpace.run("ip rule add fwmark 1 lookup 100 && ip route add default dev lan table 100");
    bed->routerSpace.run(std::string("ip neighbour add dev lan lladdr 02:00:00:00:00:01 ") + RouterBed::serverAddress);
    bed->routerSpace.run("nft 'table ip split { chain c { type route hook output priority mangle; mark set 1; }; }'");
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");

    bed->router.sendIntoTheVoid(RouterBed::serverAddress, 10, octets);

    expectCounters(accounting, "wan", {.requested = 10});
    expectCounters(accounting, "lan", {.sent = 10});
}

// The packet filter sees fragments as they arrive, and never those that this host makes.
TEST_F(Ipv4AccountingTest, FragmentsCountOneByOneWhenTheyPassAndAsOneDatagramWhenTheyAreMadeHere)
{
    constexpr unsigned size = 3000;              // 2980 octets behind the header: 1480 and 1480 and 20
    constexpr unsigned onTheWay = size + 2 * 20; // two headers more
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");

    bed->client.send(RouterBed::serverAddress, bed->server, 10, size);
    EXPECT_EQ(accounting.countersOf(ifIndex("lan")).in_receives, 30U);
    EXPECT_EQ(accounting.countersOf(ifIndex("lan")).in_octets, 10U * onTheWay);
    EXPECT_EQ(accounting.countersOf(ifIndex("wan")).out_transmits, 30U);
    EXPECT_EQ(accounting.countersOf(ifIndex("wan")).out_octets, 10U * onTheWay);

    bed->router.send(RouterBed::serverAddress, bed->server, 10, size);
    EXPECT_EQ(accounting.countersOf(ifIndex("wan")).out_requests, 10U);
    EXPECT_EQ(accounting.countersOf(ifIndex("wan")).out_transmits, 40U);
    EXPECT_EQ(accounting.countersOf(ifIndex("wan")).out_octets, 10U * (onTheWay + size));
}

// With br_netfilter the kernel shows a bridged datagram to the IPv4 hooks, and means to show it once.
TEST_F(Ipv4AccountingTest, ABridgeWhosePortsAreFilteredReceivesOnce)
{
    if (access("/proc/sys/net/bridge/bridge-nf-call-iptables", W_OK) != 0) {
        GTEST_SKIP() << "needs br_netfilter";
    }
    bed->routerSpace.run("ip link add br0 type bridge && ip link set br0 up");
    bed->routerSpace.sysctl("net/bridge/bridge-nf-call-iptables", "1");
    bed->routerSpace.run("ip address flush dev lan && ip link set lan master br0");
    bed->routerSpace.run(std::string("ip address add dev br0 ") + RouterBed::lanAddress + "/24");
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");

    bed->client.send(RouterBed::serverAddress, bed->server, 100, octets);

    expectCounters(accounting, "br0", {.received = 100});
    expectCounters(accounting, "lan", {});
    expectCounters(accounting, "wan", {.forwarded = 100, .sent = 100});
}

TEST_F(Ipv4AccountingTest, AnIndexThatIsUsedAgainStartsFromNothing)
{
    Ipv4Accounting accounting;
    ASSERT_EQ(accounting.start(), "");
    bed->client.send(RouterBed::serverAddress, bed->server, 20, octets);
    const std::uint32_t lan = ifIndex("lan");
    bed->routerSpace.run("ip link delete lan");
    accounting.linkRemoved(lan);
    accounting.linkRemoved(lan);
    bed->routerSpace.run("ip link add again index " + std::to_string(lan) + " type veth");
    expectCounters(accounting, "again", {});
    EXPECT_EQ(bed->routerSpace.run("nft list set ip ipmib_accounting in").find("again"), std::string::npos);
    expectCounters(accounting, "wan", {.forwarded = 20, .sent = 20});
    EXPECT_TRUE(logged.empty()) << logged.front();
}

TEST_F(Ipv4AccountingTest, TheLogSaysOnceThatThereAreMoreInterfacesThanRoom)
{
    Ipv4Accounting accounting({.interfaces = 1});
    ASSERT_EQ(accounting.start(), "");
    bed->client.send(RouterBed::serverAddress, bed->server, 20, octets); // lan takes the one place of "in"
    bed->server.send(RouterBed::wanAddress, bed->router, 20, octets);
    expectCounters(accounting, "lan", {.received = 20});
    expectCounters(accounting, "wan", {.forwarded = 20, .sent = 20});
    accounting.checkRoomFor(1);
    EXPECT_TRUE(logged.empty());
    accounting.checkRoomFor(3);
    accounting.checkRoomFor(4);
    EXPECT_EQ(logged.size(), 1U);
}

} // namespace ipmib::platform
