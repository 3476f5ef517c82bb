// SPDX-License-Identifier: BSD-3-Clause
// The rows of the forwarding table against the routes and nexthop objects that `ip` lists.
#include "core/log.h"
#include "test_platform.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>

#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <thread>

namespace ipmib::platform
{
namespace
{

using netns::Namespace;
using nlohmann::json;
using Rows = std::multiset<std::string>;

std::string textOf(int family, const std::uint8_t *octets)
{
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(family, octets, text, sizeof text);
}

std::string line(const std::string &destination, std::uint32_t metric, std::uint32_t tos, std::uint32_t table,
                 const std::string &gateway, std::uint32_t ifIndex, std::uint32_t type)
{
    return destination + " metric " + std::to_string(metric) + " tos " + std::to_string(tos) + " table " +
           std::to_string(table) + " via " + gateway + " if " + std::to_string(ifIndex) + " type " +
           std::to_string(type);
}

std::string lineOf(const IpmibRoute &row)
{
    const int family = row.key.version == IPMIB_IPV4 ? AF_INET : AF_INET6;
    const bool gatewayIpv4 = row.key.next_hop_type == IPMIB_NEXT_HOP_IPV4;
    const std::string gateway =
        row.key.next_hop_size == 0 ? "" : textOf(gatewayIpv4 ? AF_INET : AF_INET6, row.key.next_hop);
    if (row.key.next_hop_type == IPMIB_NEXT_HOP_IPV6Z) {
        std::uint32_t zone;
        std::memcpy(&zone, row.key.next_hop + 16, sizeof zone);
        EXPECT_EQ(ntohl(zone), row.if_index);
    }
    EXPECT_EQ(row.metric, static_cast<std::int32_t>(row.key.policy[2]));
    return line(textOf(family, row.key.destination) + "/" + std::to_string(row.key.prefix_length), row.key.policy[2],
                row.tos, row.key.policy[0], gateway, row.if_index, row.type);
}

class Lister
{
  public:
    explicit Lister(const Namespace &space) : space_(space)
    {
        for (const auto &link : space.json("ip -j link")) {
            index_[link["ifname"]] = link["ifindex"];
        }
        for (const auto &object : space.json("ip -j nexthop")) {
            objects_[object["id"]] = object;
        }
    }

    Rows routes() const
    {
        Rows rows;
        for (const char *version : {"-4", "-6"}) {
            for (const json &route : space_.json("ip -N -j " + std::string(version) + " route show table main")) {
                add(route, version[1] == '4' ? AF_INET : AF_INET6, rows);
            }
        }
        return rows;
    }

  private:
    void add(const json &route, int family, Rows &rows) const
    {
        if (!route.contains("nhid")) {
            addHop(route, route, family, rows);
            return;
        }
        const json &object = objects_.at(route["nhid"]);
        for (const json &member : object.value("group", json::array())) {
            addHop(route, objects_.at(member["id"]), family, rows);
        }
        if (!object.contains("group")) {
            addHop(route, object, family, rows);
        }
    }

    void addHop(const json &route, const json &hop, int family, Rows &rows) const
    {
        for (const json &each : hop.value("nexthops", json::array())) {
            addHop(route, each, family, rows);
        }
        if (hop.contains("nexthops")) {
            return;
        }
        std::string destination = route["dst"];
        if (destination == "default") {
            destination = family == AF_INET ? "0.0.0.0/0" : "::/0";
        } else if (destination.find('/') == std::string::npos) {
            destination += family == AF_INET ? "/32" : "/128";
        }
        const std::string gateway = hop.contains("via") ? std::string(hop["via"]["host"]) : hop.value("gateway", "");
        const std::map<std::string, std::uint32_t> types{
            {"unreachable", IPMIB_ROUTE_REJECT}, {"prohibit", IPMIB_ROUTE_REJECT}, {"blackhole", IPMIB_ROUTE_BLACKHOLE},
            {"throw", IPMIB_ROUTE_OTHER},        {"7", IPMIB_ROUTE_REJECT},        {"8", IPMIB_ROUTE_REJECT},
            {"6", IPMIB_ROUTE_BLACKHOLE},        {"9", IPMIB_ROUTE_OTHER}};
        std::uint32_t type = gateway.empty() ? IPMIB_ROUTE_LOCAL : IPMIB_ROUTE_REMOTE;
        if (const auto named = types.find(route.value("type", "")); named != types.end()) {
            type = named->second;
        } else if (hop.contains("blackhole")) {
            type = IPMIB_ROUTE_BLACKHOLE;
        }
        const std::string tos = route.value("tos", "0");
        const auto dev = index_.find(hop.value("dev", ""));
        rows.insert(line(destination, route.value("metric", 0u),
                         static_cast<std::uint32_t>(std::stoul(tos, nullptr, 0)), 0, gateway,
                         dev == index_.end() ? 0 : dev->second, type));
    }

    const Namespace &space_;
    std::map<std::string, std::uint32_t> index_;
    std::map<std::uint32_t, json> objects_;
};

bool precedes(const IpmibRouteKey &a, const IpmibRouteKey &b)
{
    const auto tied = [](const IpmibRouteKey &key) {
        const std::string destination(reinterpret_cast<const char *>(key.destination), sizeof key.destination);
        const std::string hop(reinterpret_cast<const char *>(key.next_hop), sizeof key.next_hop);
        return std::tuple(key.version, destination, key.prefix_length, key.policy[0], key.policy[1], key.policy[2],
                          key.policy[3], key.next_hop_type, key.next_hop_size, hop);
    };
    return tied(a) < tied(b);
}

class RoutesNetns : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        space_.emplace();
        space_->run(
            "for i in 0 1 2; do ip link add v$i type veth peer name w$i; ip link set v$i up; ip link set w$i up;"
            " ip addr add 10.0.$i.1/24 dev v$i; ip addr add 2001:db8:$i::1/64 dev v$i nodad; done");
        setLogSink([](int, const char *text) { lines.emplace_back(text); });
        lines.clear();
    }
    void TearDown() override { setLogSink(nullptr); }

    void start(const Settings &settings = {}, std::uint64_t limit = UINT64_MAX)
    {
        platform_.emplace(*space_, settings);
        lines.clear();
        routes().limit(limit);
        ASSERT_EQ(routes().follow(), "");
        ASSERT_TRUE(platform_->waitUntil([&] { return routes().areRead() == 1; }));
    }
    Routes &routes() { return (*platform_)->routes(); }
    Mirror &mirrorOfIpv4() { return (*platform_)->ipv4().routeMirror(); }
    Mirror &mirrorOfIpv6() { return (*platform_)->addressing().routeMirror(); }

    Rows walk()
    {
        Rows rows;
        std::uint64_t counts[3]{};
        IpmibRoute row{};
        IpmibRouteKey last{};
        while (routes().next(row.key, row)) {
            EXPECT_TRUE(precedes(last, row.key)) << lineOf(row);
            last = row.key;
            ++counts[row.key.version];
            IpmibRoute found{};
            EXPECT_TRUE(routes().find(row.key, found)) << lineOf(row);
            EXPECT_EQ(lineOf(found), lineOf(row));
            rows.insert(lineOf(row));
        }
        EXPECT_EQ(routes().count(IPMIB_IPV4), counts[IPMIB_IPV4]);
        EXPECT_EQ(routes().count(IPMIB_IPV6), counts[IPMIB_IPV6]);
        return rows;
    }
    void expectWhatIpLists()
    {
        Rows expected;
        Rows rows;
        do { // again when the kernel has given a link that came up its routes in between
            expected = Lister(*space_).routes();
            (*platform_)->beginPacket();
            rows = walk();
        } while (expected != Lister(*space_).routes());
        for (const std::string &each : expected) {
            EXPECT_EQ(rows.count(each), expected.count(each)) << "in the kernel: " << each;
        }
        for (const std::string &each : rows) {
            EXPECT_EQ(expected.count(each), rows.count(each)) << "in the walk: " << each;
        }
    }
    // What is announced is there with the next packet.
    void after(const std::string &command)
    {
        SCOPED_TRACE(command);
        space_->run(command);
        expectWhatIpLists();
    }
    // What the kernel leaves open has to be read again.
    void settledAfter(const std::string &command)
    {
        SCOPED_TRACE(command);
        space_->run(command);
        platform_->waitUntil([&] {
            askForRoutes();
            return !mirrorOfIpv4().refreshing() && !mirrorOfIpv6().refreshing();
        });
        expectWhatIpLists();
    }

    // In a packet of its own: only then is read what has been announced of them.
    void askForRoutes()
    {
        (*platform_)->beginPacket();
        routes().discards();
    }

    static std::vector<std::string> lines;
    std::optional<Namespace> space_;
    std::optional<PlatformInside> platform_;
};
std::vector<std::string> RoutesNetns::lines;

const char *const allKinds =
    "ip route add default via 10.0.0.254;"
    "ip route add 192.0.2.0/24 via 10.0.0.2; ip route add 192.0.2.0/25 via 10.0.0.2; ip route add 192.0.2.1 via "
    "10.0.0.2;"
    "ip route add 192.0.2.0/24 via 10.0.0.2 metric 7; ip route add 192.0.2.0/24 via 10.0.1.2 tos 0x10;"
    "ip route add 198.51.100.0/24 nexthop via 10.0.0.3 nexthop via 10.0.1.3 weight 5 nexthop dev v2;"
    "ip route add 203.0.113.0/24 dev v1; ip route append 203.0.113.0/24 dev v2;"
    "ip route append 203.0.113.0/24 via 10.0.2.9; ip route append 203.0.113.0/24 via 10.0.2.9 mtu 1400;"
    "ip route append 203.0.113.0/24 via 10.0.2.9 proto bgp;"
    "ip route add 172.16.0.0/16 via inet6 fe80::7 dev v1; ip route add 172.17.0.0/16 via inet6 2001:db8:1::7 dev v1;"
    "ip route add blackhole 172.18.0.0/16; ip route add unreachable 172.19.0.0/16; ip route add prohibit 172.20.0.0/16;"
    "ip route add throw 172.21.0.0/16; ip route add 172.22.0.0/16 via 10.0.0.4 proto bgp;"
    "ip route add 172.23.0.0/16 nexthop via 10.9.9.9 dev v0 onlink nexthop via 10.9.9.9 dev v1 onlink;"
    "ip -6 route add default via fe80::1 dev v0; ip -6 route add 2001:db8:100::/48 via 2001:db8:0::2;"
    "ip -6 route add 2001:db8:100::/48 via 2001:db8:1::2 metric 7;"
    "ip -6 route add 2001:db8:200::/48 nexthop via 2001:db8:0::3 nexthop via fe80::3 dev v1 nexthop via fe80::3 dev v2;"
    "ip -6 route add 2001:db8:300::/64 dev v1; ip -6 route add 2001:db8:300::/64 dev v2 metric 5;"
    "ip -6 route add blackhole 2001:db8:400::/48; ip -6 route add unreachable 2001:db8:401::/48;"
    "ip -6 route add prohibit 2001:db8:402::/48;"
    "ip nexthop add id 1 via 10.0.0.5 dev v0; ip nexthop add id 2 via 10.0.1.5 dev v1; ip nexthop add id 3 blackhole;"
    "ip nexthop add id 4 via 2001:db8:0::5 dev v0; ip nexthop add id 5 via fe80::5 dev v1; ip nexthop add id 6 dev v2;"
    "ip nexthop add id 10 group 1/2; ip nexthop add id 11 group 4/5;"
    "ip route add 100.64.1.0/24 nhid 1; ip route add 100.64.2.0/24 nhid 10; ip route add 100.64.3.0/24 nhid 3;"
    "ip route add 100.64.4.0/24 nhid 4; ip route add 100.64.5.0/24 nhid 11; ip route add 100.64.6.0/24 nhid 6;"
    "ip -6 route add 2001:db8:500::/48 nhid 4; ip -6 route add 2001:db8:501::/48 nhid 11;";

TEST_F(RoutesNetns, allKindsAreWhatIpListsReadOrAnnounced)
{
    start();
    after(allKinds);
    platform_.reset();
    start();
    expectWhatIpLists();
    EXPECT_TRUE(lines.empty()) << lines.front();
}

TEST_F(RoutesNetns, routesAreFollowedOnlyWhenSomebodyAsksForThem)
{
    space_->run(allKinds);
    PlatformInside platform(*space_);
    platform->beginPacket();
    IpmibRoute row{};
    EXPECT_EQ(platform->routes().count(IPMIB_IPV4), 0u);
    EXPECT_EQ(platform->routes().areRead(), 0u);
    EXPECT_FALSE(platform->routes().next(row.key, row));
    EXPECT_EQ(platform->ipv4().routeMirror().timesRead(), 0u);
}

TEST_F(RoutesNetns, changesAreThereWithTheNextPacket)
{
    space_->run(allKinds);
    start();
    after("ip route replace 192.0.2.0/24 via 10.0.2.2");
    after("ip route replace 192.0.2.0/24 via 10.0.2.3 proto bgp metric 7");
    after("ip route del 192.0.2.0/24 via 10.0.1.2 tos 0x10");
    after("ip route change 198.51.100.0/24 nexthop via 10.0.0.3 nexthop via 10.0.2.3");
    after("ip route del 198.51.100.0/24");
    after("ip route prepend 203.0.113.0/24 via 10.0.0.9; ip route del 203.0.113.0/24 dev v2");
    after("ip route replace blackhole 172.18.0.0/16; ip route replace unreachable 172.18.0.0/16");
    after("ip -6 route replace 2001:db8:100::/48 via 2001:db8:2::2 metric 7");
    after("ip -6 route append 2001:db8:200::/48 via 2001:db8:2::3");
    after("ip -6 route del 2001:db8:200::/48 via fe80::3 dev v1");
    after("ip -6 route replace 2001:db8:200::/48 nexthop via 2001:db8:0::9 nexthop via 2001:db8:1::9");
    after("ip -6 route replace 2001:db8:200::/48 via 2001:db8:0::10");
    after("ip -6 route del 2001:db8:200::/48");
    after("ip -6 route replace blackhole 2001:db8:400::/48; ip -6 route del 2001:db8:300::/64 dev v2");
    after("ip -6 route replace default via fe80::2 dev v1");
    EXPECT_EQ(mirrorOfIpv4().timesRead(), 1u);
    // Of several with one identity `replace` takes the place of the first, and nobody says which that was.
    settledAfter("ip route replace 203.0.113.0/24 via 10.0.1.99");
}

class NexthopObjects : public RoutesNetns, public testing::WithParamInterface<bool>
{
};

// Where routes that name objects are told of with the objects alone, a change of one is a single message.
TEST_P(NexthopObjects, changeAndGoWithOneMessage)
{
    space_->sysctl("net/ipv4/nexthop_compat_mode", GetParam() ? "1" : "0");
    space_->run(allKinds);
    space_->run("seq 0 999 | awk '{printf \"route add 100.%d.%d.0/24 nhid 10\\n\", 100 + $1 / 250, $1 % 250}' |"
                " ip -batch -");
    start();
    expectWhatIpLists();
    after("ip nexthop replace id 1 via 10.0.0.77 dev v0");
    after("ip nexthop add id 7 via 10.0.2.7 dev v2; ip nexthop replace id 10 group 1/2/7");
    after("ip nexthop del id 2");
    after("ip nexthop del id 5");
    after("ip nexthop del id 10");
    after("ip nexthop add id 10 via 10.0.0.10 dev v0; ip route add 100.65.0.0/16 nhid 10");
    after("ip nexthop flush");
    EXPECT_EQ(mirrorOfIpv4().timesRead(), 1u);
    EXPECT_EQ(mirrorOfIpv6().timesRead(), 2u) << "at the start, and when routes were asked for";
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutHops, NexthopObjects, testing::Bool());

// The kernel is silent about most of what goes with a link, or with an address.
TEST_F(RoutesNetns, linksAndAddressesTakeTheirRoutesAlongAndNothingIsReadAgain)
{
    space_->run(allKinds);
    start();
    const unsigned readIpv4 = mirrorOfIpv4().timesRead();
    const unsigned readIpv6 = mirrorOfIpv6().timesRead();
    after("ip link set v2 down");
    after("ip link set v1 down");
    after("ip link set v1 up");
    after("ip link set v2 up; ip route add 198.18.0.0/15 via 10.0.2.2; ip -6 route add 2001:db8:600::/48 via fe80::6 "
          "dev v2");
    after("ip link set v2 down; ip link set v2 up; ip route add 198.18.0.0/16 via 10.0.2.2");
    after("ip link set w0 down");
    after("ip link set w0 up");
    after("ip route replace 198.51.100.0/24 nexthop via 10.0.0.3 nexthop via 10.0.1.3; ip link del v0");
    after("ip addr add 10.0.1.50/24 dev v1; ip route add 198.19.0.0/16 via 10.0.1.4 src 10.0.1.50;"
          "ip route add 198.20.0.0/16 via 10.0.1.4");
    after("ip addr del 10.0.1.50/24 dev v1");
    after("ip addr flush dev v1");
    after("ip addr add 10.0.1.1/24 dev v1; ip route add 198.20.0.0/16 via 10.0.1.4");
    after("ip link add x0 type veth peer name x1; ip link set x0 up; ip link set x1 up; ip link del x0");
    platform_->waitUntil([] { return false; }, std::chrono::milliseconds(300));
    EXPECT_EQ(mirrorOfIpv4().timesRead(), readIpv4);
    EXPECT_EQ(mirrorOfIpv6().timesRead(), readIpv6);
    expectWhatIpLists();
}

TEST_F(RoutesNetns, otherTablesAreShownWhereTheyAreAskedFor)
{
    space_->run("ip route add 192.0.2.0/24 via 10.0.0.2 table 100; ip -6 route add 2001:db8:9::/48 via fe80::9 dev v0 "
                "table 100");
    start();
    expectWhatIpLists();
    platform_.reset();
    PlatformInside platform(*space_);
    EXPECT_NE(platform->takeOption({"route-tables", "main,x"}), "");
    EXPECT_NE(platform->takeOption({"route-tables", ""}), "");
    ASSERT_EQ(platform->takeOption({"route-tables", "main,local,100"}), "");
    ASSERT_EQ(platform->routes().follow(), "");
    ASSERT_TRUE(platform.waitUntil([&] { return platform->routes().areRead() == 1; }));
    std::map<std::uint32_t, unsigned> byTable;
    IpmibRoute row{};
    while (platform->routes().next(row.key, row)) {
        ++byTable[row.key.policy[0]];
    }
    EXPECT_EQ(byTable[100], 2u);
    EXPECT_GT(byTable[RT_TABLE_LOCAL], 6u);
    EXPECT_GT(byTable[0], 6u);
    EXPECT_EQ(byTable.size(), 3u);
}

TEST_F(RoutesNetns, theLongestPrefixMatches)
{
    space_->run(allKinds);
    start();
    const auto match = [&](const char *address) {
        std::uint8_t octets[16]{};
        const bool ipv4 = inet_pton(AF_INET, address, octets) == 1;
        EXPECT_TRUE(ipv4 || inet_pton(AF_INET6, address, octets) == 1);
        IpmibRoute row{};
        EXPECT_TRUE(routes().match(ipv4 ? IPMIB_IPV4 : IPMIB_IPV6, octets, row));
        return textOf(ipv4 ? AF_INET : AF_INET6, row.key.destination) + "/" + std::to_string(row.key.prefix_length);
    };
    EXPECT_EQ(match("192.0.2.1"), "192.0.2.1/32");
    EXPECT_EQ(match("192.0.2.127"), "192.0.2.0/25");
    EXPECT_EQ(match("192.0.2.128"), "192.0.2.0/24");
    EXPECT_EQ(match("8.8.8.8"), "0.0.0.0/0");
    EXPECT_EQ(match("2001:db8:100::9"), "2001:db8:100::/48");
    EXPECT_EQ(match("::"), "::/0");
}

std::string batchFile(const Namespace &space, const std::string &script)
{
    static int number = 0;
    const std::string path =
        testing::TempDir() + "ipmib_routes_" + std::to_string(getpid()) + "_" + std::to_string(++number);
    space.run(script + " > " + path);
    return path;
}

TEST_F(RoutesNetns, rowsBeyondTheLimitAreDiscardedAndComeWhenThereIsRoom)
{
    space_->run("seq 0 199 | sed 's/.*/route add 172.16.&.0\\/24 via 10.0.0.2/' | ip -batch -");
    start({}, 100);
    (*platform_)->beginPacket();
    EXPECT_EQ(walk().size(), 100u);
    const std::uint64_t all = Lister(*space_).routes().size();
    EXPECT_EQ(routes().discards(), all - 100);
    space_->run("ip route add 172.17.0.0/16 via 10.0.0.2");
    (*platform_)->beginPacket();
    EXPECT_EQ(walk().size(), 100u);
    EXPECT_EQ(routes().discards(), all + 1 - 100);
    EXPECT_EQ(lines.size(), 1u);
    space_->run("seq 0 179 | sed 's/.*/route del 172.16.&.0\\/24/' | ip -batch -");
    EXPECT_TRUE(platform_->waitUntil([&] {
        (*platform_)->beginPacket();
        return routes().count(IPMIB_IPV4) + routes().count(IPMIB_IPV6) == Lister(*space_).routes().size();
    }));
    expectWhatIpLists();
}

// Walks see every route that stays, in order, whatever comes and goes meanwhile.
TEST_F(RoutesNetns, walksUnderTwentyThousandChangesAreWhole)
{
    space_->run("seq 0 249 | sed 's/.*/route add 172.16.&.0\\/24 via 10.0.0.2/' | ip -batch -");
    start();
    const std::string changes = batchFile(
        *space_, "for r in 1 2; do seq 1 5000 | awk '{printf \"route add 172.%d.%d.%d/32 via 10.0.%d.3\\n\", 16+$1%4,"
                 " $1/20%250, $1%250, $1%3}'; seq 1 5000 | awk '{printf \"route del 172.%d.%d.%d/32\\n\", 16+$1%4,"
                 " $1/20%250, $1%250}'; done");
    std::thread churn([&] { space_->run("ip -force -batch " + changes + " 2>/dev/null || true"); });
    std::atomic<bool> done = false;
    std::thread waiter([&] {
        churn.join();
        done = true;
    });
    unsigned walks = 0;
    while (!done || walks == 0) {
        (*platform_)->dispatch();
        (*platform_)->beginPacket();
        unsigned stay = 0;
        IpmibRoute row{};
        IpmibRouteKey last{};
        for (int steps = 0; routes().next(row.key, row); ++steps) {
            ASSERT_TRUE(precedes(last, row.key));
            last = row.key;
            stay += row.key.version == IPMIB_IPV4 && row.key.prefix_length == 24 && row.key.destination[0] == 172;
            if (steps % 50 == 49) {
                (*platform_)->beginPacket();
            }
        }
        EXPECT_EQ(stay, 250u);
        ++walks;
    }
    waiter.join();
    std::remove(changes.c_str());
    expectWhatIpLists();
}

// A dump of IPv6 routes goes on at a place that the kernel has counted, when a route has come meanwhile. Where routes
// in front of it have gone, as many behind it are passed over, and nothing marks the dump.
TEST_F(RoutesNetns, routesThatADumpPassesOverStay)
{
    space_->run("seq 1 5000 | awk '{printf \"route add 2001:%x::/32 via 2001:db8::2\\n\", 8192 + $1}' | ip -batch -");
    start();
    mirrorOfIpv6().refresh();
    int number = 0;
    while ((*platform_)->routeDumps().readPiece()) {
        if (number < 20) {
            char command[120];
            std::snprintf(command, sizeof command,
                          "ip -6 route del 2001:%x::/32; ip -6 route add 2001:%x::/32 via 2001:db8::2", 0x2001 + number,
                          0xf000 + number);
            ++number;
            space_->run(command);
        }
    }
    ASSERT_EQ(number, 20);
    settledAfter("true");
}

// The socket's buffer holds a few announcements: rows are what was last known until the storm has calmed, then one
// reading puts them right. Other tables do not notice.
TEST_F(RoutesNetns, aStormBeyondTheBufferEndsInFewReadings)
{
    Settings settings;
    settings.receiveBuffer = 8 * 1024;
    space_->run("seq 0 249 | sed 's/.*/route add 172.16.&.0\\/24 via 10.0.0.2/' | ip -batch -");
    start(settings);
    const unsigned before = mirrorOfIpv4().timesRead();
    for (int storm = 0; storm < 5; ++storm) {
        space_->run("seq 0 249 | sed 's/.*/route del 172.16.&.0\\/24/' | ip -batch -;"
                    "seq 0 2 249 | sed 's/.*/route add 172.16.&.0\\/24 via 10.0.1.2/' | ip -batch -;"
                    "seq 1 2 249 | sed 's/.*/route add 172.16.&.0\\/24 via 10.0.2.2/' | ip -batch -");
        askForRoutes();
    }
    space_->run("ip link add late type bridge");
    askForRoutes();
    EXPECT_TRUE(mirrorOfIpv4().refreshing());
    EXPECT_EQ((*platform_)->links().size(), 8u);
    settledAfter("true");
    EXPECT_GT(mirrorOfIpv4().timesLost(), 0u);
    EXPECT_GT(mirrorOfIpv4().timesRead(), before);
    EXPECT_LE(mirrorOfIpv4().timesRead(), before + 2);
}

} // namespace
} // namespace ipmib::platform
