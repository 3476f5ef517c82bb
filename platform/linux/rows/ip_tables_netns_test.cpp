// SPDX-License-Identifier: BSD-3-Clause
// Rows of IPv4 against what `ip` says of the same things.
#include "netns/namespace.h"
#include "test_platform.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>

#include <map>
#include <set>
#include <tuple>

namespace
{

using namespace ipmib::platform;
using ipmib::netns::Namespace;

constexpr std::uint32_t forEver = 0xFFFF'FFFF;

std::uint32_t number(const std::string &address)
{
    in_addr bytes{};
    EXPECT_EQ(inet_pton(AF_INET, address.c_str(), &bytes), 1) << address;
    return ntohl(bytes.s_addr);
}

class IpTablesNetns : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        space_.emplace();
        space_->run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
        v0_ = space_->json("ip -j link show dev v0")[0]["ifindex"];
        v1_ = space_->json("ip -j link show dev v1")[0]["ifindex"];
    }
    void TearDown() override { platform_.reset(); }

    void follow(std::uint32_t rows)
    {
        platform_.emplace(*space_);
        EXPECT_EQ(ip().follow(rows), "");
    }
    IpRows &ip() { return (*platform_)->ip(); }
    void beginPacket() { (*platform_)->beginPacket(); }
    template <class Condition>
    bool soon(Condition condition)
    {
        return platform_->waitUntil([&] {
            beginPacket();
            return condition();
        });
    }

    // By next from the start; each is the same when it is asked for by its key.
    std::vector<IpmibIpAddress> addresses()
    {
        std::vector<IpmibIpAddress> rows;
        IpmibIpAddress row{};
        while (ip().addressAfter(row.address, row) && (rows.empty() || rows.back().address < row.address)) {
            IpmibIpAddress found{};
            EXPECT_TRUE(ip().findAddress(row.address, found));
            EXPECT_EQ(std::memcmp(&found, &row, sizeof row), 0);
            rows.push_back(row);
        }
        return rows;
    }
    std::map<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>, IpmibIpPrefix> prefixes()
    {
        std::map<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>, IpmibIpPrefix> rows;
        IpmibIpPrefix row{};
        std::tuple<std::uint32_t, std::uint32_t, std::uint32_t> last{};
        while (ip().prefixAfter(row.if_index, row.prefix, row.length, row)) {
            const std::tuple key{row.if_index, row.prefix, row.length};
            EXPECT_LT(last, key);
            last = key;
            IpmibIpPrefix found{};
            EXPECT_TRUE(ip().findPrefix(row.if_index, row.prefix, row.length, found));
            EXPECT_EQ(found.valid_s, row.valid_s);
            rows[key] = row;
        }
        return rows;
    }
    std::vector<std::pair<std::string, std::uint32_t>> routers()
    {
        std::vector<std::pair<std::string, std::uint32_t>> rows;
        IpmibIpRouter row{};
        while (ip().routerAfter(row.address, row.if_index, row) && rows.size() < 100) {
            IpmibIpRouter found{};
            EXPECT_TRUE(ip().findRouter(row.address, row.if_index, found));
            EXPECT_EQ(row.lifetime_s, 65535u);
            EXPECT_EQ(row.preference, 0);
            const in_addr bytes{htonl(row.address)};
            rows.emplace_back(inet_ntoa(bytes), row.if_index);
        }
        return rows;
    }
    void expectWhatIpSays();

    std::optional<Namespace> space_;
    std::optional<PlatformInside> platform_;
    std::uint32_t v0_ = 0;
    std::uint32_t v1_ = 0;
};

// All columns but times, of all addresses; and that each pointer names a row.
void IpTablesNetns::expectWhatIpSays()
{
    struct Expected {
        std::uint32_t type;
        std::tuple<std::uint32_t, unsigned, std::uint32_t> order; // of those that share the row the first one counts
        std::uint32_t status;
        bool manual;
    };
    std::map<std::uint32_t, Expected> expected;
    const auto expect = [&](std::uint32_t address, const Expected &row) {
        const auto [known, isNew] = expected.try_emplace(address, row);
        if (!isNew && std::tie(row.type, row.order) < std::tie(known->second.type, known->second.order)) {
            known->second = row;
        }
    };
    for (const auto &link : space_->json("ip -j -4 addr show")) {
        for (const auto &info : link["addr_info"]) {
            const std::uint32_t peer = number(info.value("address", info["local"]));
            // In 169.254.0.0/16 nobody configures an address for the link alone.
            const bool manual = info["valid_life_time"] == forEver && info["scope"] != "link";
            const std::uint32_t status = info.value("deprecated", false) ? 2 : 1;
            const std::tuple<std::uint32_t, unsigned, std::uint32_t> order{link["ifindex"], info["prefixlen"], peer};
            expect(number(info["local"]), {1, order, status, manual});
            if (info.contains("broadcast")) {
                expect(number(info["broadcast"]), {3, order, status, manual});
            }
        }
    }
    const auto rows = addresses();
    ASSERT_EQ(rows.size(), expected.size());
    for (const IpmibIpAddress &row : rows) {
        ASSERT_TRUE(expected.contains(row.address)) << std::hex << row.address;
        const Expected &wanted = expected.at(row.address);
        const auto &[ifIndex, length, peer] = wanted.order;
        EXPECT_EQ(row.type, wanted.type);
        EXPECT_EQ(row.if_index, ifIndex);
        EXPECT_EQ(row.prefix_length, length);
        EXPECT_EQ(row.prefix, maskedIpv4(peer, length)) << std::hex << row.address;
        EXPECT_EQ(row.status, wanted.status);
        EXPECT_EQ(row.origin == IPMIB_ADDRESS_ORIGIN_MANUAL, wanted.manual);
        EXPECT_TRUE(prefixes().contains({row.if_index, row.prefix, row.prefix_length})) << std::hex << row.address;
    }
    for (const auto &[key, row] : prefixes()) {
        EXPECT_EQ(row.prefix, maskedIpv4(row.prefix, row.length)) << "zeros behind the length";
    }
}

TEST_F(IpTablesNetns, addressesAndBroadcastAddressesComeChangeAndGo)
{
    space_->run("ip addr add 10.0.0.1/24 brd + dev v0; ip addr add 10.0.0.2/24 brd + dev v0;"
                "ip addr add 10.0.0.2/25 dev v1; ip addr add 10.1.0.1/24 dev v1;"
                "ip addr add 10.2.0.1 peer 10.3.0.9/30 dev v1; ip addr add 10.4.0.1/32 dev v1");
    follow(IPMIB_FOLLOW_ADDRESSES);
    expectWhatIpSays();
    // One address is the broadcast address of another: it is what it is itself.
    space_->run("ip addr add 10.0.0.255/32 dev v0; ip addr add 10.5.0.1/16 brd 255.255.255.255 dev v0 "
                "valid_lft 1000 preferred_lft 0");
    EXPECT_TRUE(soon([&] { return addresses().size() == 9; }));
    expectWhatIpSays();
    space_->run("ip addr del 10.0.0.1/24 dev v0; ip addr change 10.5.0.1/16 brd 10.5.255.255 dev v0");
    EXPECT_TRUE(soon([&] { return !addresses().empty() && addresses()[0].address == number("10.0.0.2"); }));
    expectWhatIpSays();
    space_->run("ip addr flush dev v0; ip link del v1");
    EXPECT_TRUE(soon([&] { return addresses().size() == 1; })) << "127.0.0.1 is a row";
    expectWhatIpSays();
}

TEST_F(IpTablesNetns, originsAndLifetimesAreThoseOfTheKernel)
{
    space_->run("ip addr add 10.0.0.1/24 dev v0; ip addr add 10.1.0.1/24 dev v0 valid_lft 1000 preferred_lft 500;"
                "ip addr add 169.254.7.7/16 scope link dev v0; ip addr add 169.254.8.8/16 dev v1;"
                "ip addr add 10.2.0.1/24 dev v1 noprefixroute; ip addr add 10.3.0.1/24 dev v1 noprefixroute;"
                "ip route add 10.3.0.0/24 dev v1 proto kernel; ip addr add 10.4.0.1/32 dev v1");
    follow(IPMIB_FOLLOW_ADDRESSES);
    IpmibIpAddress address{};
    const auto origin = [&](const char *text) {
        EXPECT_TRUE(ip().findAddress(number(text), address)) << text;
        return address.origin;
    };
    EXPECT_EQ(origin("10.0.0.1"), 2u);
    EXPECT_EQ(origin("10.1.0.1"), 4u);
    EXPECT_EQ(origin("169.254.7.7"), 6u);
    EXPECT_EQ(origin("169.254.8.8"), 2u);
    EXPECT_EQ(origin("127.0.0.1"), 2u);
    IpmibIpPrefix prefix{};
    const auto find = [&](std::uint32_t ifIndex, const char *text, unsigned length) {
        EXPECT_TRUE(ip().findPrefix(ifIndex, number(text), length, prefix)) << text;
        return prefix;
    };
    EXPECT_EQ(find(1, "127.0.0.0", 8).origin, 3u);
    EXPECT_EQ(find(v0_, "169.254.0.0", 16).origin, 3u);
    EXPECT_EQ(find(v0_, "10.0.0.0", 24).origin, 2u);
    EXPECT_EQ(prefix.valid_s, forEver);
    EXPECT_EQ(prefix.preferred_s, forEver);
    EXPECT_EQ(prefix.autonomous, 0u);
    EXPECT_EQ(find(v0_, "10.1.0.0", 24).origin, 4u);
    EXPECT_LE(prefix.valid_s, 1'000u);
    EXPECT_GE(prefix.valid_s, 900u);
    EXPECT_LE(prefix.preferred_s, 500u);
    for (const auto &[ifIndex, text, length, onLink] :
         {std::tuple(1u, "127.0.0.0", 8, 1), std::tuple(v0_, "10.0.0.0", 24, 1), std::tuple(v1_, "10.2.0.0", 24, 0),
          std::tuple(v1_, "10.3.0.0", 24, 1), std::tuple(v1_, "10.4.0.1", 32, 0)}) {
        EXPECT_EQ(find(ifIndex, text, static_cast<unsigned>(length)).on_link, onLink) << text;
    }
    // A route that was there before the address, for which the kernel then enters none.
    space_->run("ip route add 10.9.0.0/24 dev v0; ip addr add 10.9.0.1/24 dev v0 noprefixroute");
    EXPECT_TRUE(soon([&] { return ip().findPrefix(v0_, number("10.9.0.0"), 24, prefix) && prefix.on_link == 1; }));
    space_->run("ip route del 10.9.0.0/24 dev v0");
    EXPECT_TRUE(soon([&] { return ip().findPrefix(v0_, number("10.9.0.0"), 24, prefix) && prefix.on_link == 0; }));
    // The kernel ends what has an end, and says so.
    space_->run("ip addr change 10.1.0.1/24 dev v0 valid_lft 60 preferred_lft 0");
    EXPECT_TRUE(soon([&] {
        ip().findAddress(number("10.1.0.1"), address);
        return address.status == 2;
    }));
    expectWhatIpSays();
}

TEST_F(IpTablesNetns, onlyWhatIsFollowedIsThere)
{
    space_->run("ip addr add 10.0.0.1/24 dev v0; ip route add default via 10.0.0.9;"
                "ip neigh add 10.0.0.9 lladdr 02:00:00:00:00:09 nud permanent dev v0");
    follow(0);
    IpmibIpInterface interface {
    };
    IpmibIpNeighbour neighbour{};
    IpmibReceiveAddress receive{};
    const std::uint8_t none = 0;
    EXPECT_TRUE(addresses().empty() && prefixes().empty() && routers().empty());
    EXPECT_FALSE(ip().interfaceAfter(IPMIB_IPV4, 0, interface));
    EXPECT_FALSE(ip().neighbourAfter(0, 0, neighbour));
    EXPECT_FALSE(ip().receiveAddressAfter(0, &none, 0, receive));
    EXPECT_EQ(ip().follow(IPMIB_FOLLOW_ROUTERS | IPMIB_FOLLOW_RECEIVE_ADDRESSES), "");
    EXPECT_EQ(routers().size(), 1u);
    EXPECT_TRUE(addresses().empty());
    EXPECT_TRUE(ip().receiveAddressAfter(0, &none, 0, receive));
    EXPECT_EQ(ip().follow(IPMIB_FOLLOW_ADDRESSES | IPMIB_FOLLOW_NEIGHBOURS), "");
    EXPECT_EQ((*platform_)->ipv4().routeMirror().timesRead(), 1u) << "it was there already";
    EXPECT_EQ(addresses().size(), 2u);
    EXPECT_TRUE(ip().neighbourAfter(0, 0, neighbour));
    IpmibIpv4Address older{};
    EXPECT_EQ((*platform_)->followIpv4(), "") << "the older tables are served from the same";
    EXPECT_EQ((*platform_)->ipv4().addressMirror().timesRead(), 1u);
    EXPECT_TRUE((*platform_)->ipv4().findAddress(number("10.0.0.1"), older));
}

TEST_F(IpTablesNetns, neighboursHaveTheirStates)
{
    const std::uint64_t began = monotonicMilliseconds() - 3'000;
    space_->run("ip addr add 10.0.0.1/24 dev v0;"
                "ip neigh add 10.0.0.2 lladdr 02:00:00:00:00:02 nud permanent dev v0;"
                "ip neigh add 10.0.0.3 lladdr 02:00:00:00:00:03 nud stale dev v0;"
                "ip neigh add 10.0.0.4 lladdr 02:00:00:00:00:04 nud reachable dev v0;"
                "ip neigh add 10.0.0.5 nud failed dev v0");
    follow(IPMIB_FOLLOW_NEIGHBOURS);
    (*platform_)->uptimeBegan(began);
    beginPacket();
    struct Expected {
        const char *address;
        unsigned type;
        unsigned state;
        unsigned size;
    };
    std::uint32_t at = 0;
    for (const Expected &expected :
         {Expected{"10.0.0.2", 4, 1, 6}, {"10.0.0.3", 3, 2, 6}, {"10.0.0.4", 3, 1, 6}, {"10.0.0.5", 3, 5, 0}}) {
        IpmibIpNeighbour next{};
        IpmibIpNeighbour row{};
        ASSERT_TRUE(ip().neighbourAfter(v0_, at, next));
        at = next.address;
        EXPECT_EQ(at, number(expected.address));
        ASSERT_TRUE(ip().findNeighbour(v0_, at, row)) << expected.address;
        EXPECT_EQ(row.if_index, v0_);
        EXPECT_EQ(row.type, expected.type) << expected.address;
        EXPECT_EQ(row.state, expected.state) << expected.address;
        EXPECT_EQ(row.link_layer_size, expected.size);
        EXPECT_EQ(row.link_layer[5], expected.size != 0 ? expected.address[7] - '0' : 0);
        EXPECT_LE(row.last_updated, (monotonicMilliseconds() - began) / 10);
        EXPECT_GE(row.last_updated, 195u); // kept in whole seconds, from an age in ticks
    }
    IpmibIpNeighbour row{};
    EXPECT_FALSE(ip().neighbourAfter(v0_, at, row));
    (*platform_)->uptimeBegan(monotonicMilliseconds() + 1'000);
    ASSERT_TRUE(ip().findNeighbour(v0_, number("10.0.0.2"), row));
    EXPECT_EQ(row.last_updated, 0u) << "it was there before";
}

TEST_F(IpTablesNetns, routersAreTheGatewaysOfDefaultRoutes)
{
    using Routers = std::vector<std::pair<std::string, std::uint32_t>>;
    space_->run("ip addr add 10.0.0.1/24 dev v0; ip addr add 10.1.0.1/24 dev v1;"
                "ip route add default via 10.0.0.9 metric 5; ip route add default dev v1 metric 9;"
                "ip route add 10.9.0.0/16 via 10.0.0.8; ip route add default via 10.0.0.7 table 77");
    follow(IPMIB_FOLLOW_ROUTERS);
    EXPECT_EQ(routers(), (Routers{{"10.0.0.9", v0_}}));
    space_->run("ip route add default metric 7 nexthop via 10.1.0.9 dev v1 nexthop via 10.0.0.9 dev v0;"
                "ip route append default via 10.0.0.6 metric 5");
    EXPECT_TRUE(soon([&] { return routers() == Routers{{"10.0.0.6", v0_}, {"10.0.0.9", v0_}, {"10.1.0.9", v1_}}; }));
    space_->run("ip route del default via 10.0.0.9 metric 5; ip route del default via 10.0.0.6 metric 5");
    EXPECT_TRUE(soon([&] { return routers() == Routers{{"10.0.0.9", v0_}, {"10.1.0.9", v1_}}; }));
    space_->run("ip route replace default via 10.0.0.5 metric 7");
    EXPECT_TRUE(soon([&] { return routers() == Routers{{"10.0.0.5", v0_}}; })) << "in place of both";
    space_->run("ip nexthop add id 1 via 10.0.0.4 dev v0; ip nexthop add id 2 via 10.1.0.4 dev v1;"
                "ip nexthop add id 3 group 1/2; ip route add default nhid 3 metric 3; ip route del default metric 7");
    EXPECT_TRUE(soon([&] { return routers() == Routers{{"10.0.0.4", v0_}, {"10.1.0.4", v1_}}; }));
    space_->run("ip nexthop replace id 2 via 10.1.0.3 dev v1");
    EXPECT_TRUE(soon([&] { return routers() == Routers{{"10.0.0.4", v0_}, {"10.1.0.3", v1_}}; }));
    // The kernel takes routes along without a word.
    space_->run("ip route add default via 10.0.0.9 metric 5; ip route add default via 10.0.0.3 src 10.0.0.1 metric 6");
    EXPECT_TRUE(soon([&] { return routers().size() == 4; }));
    space_->run("ip addr add 10.0.0.11/24 dev v0; ip addr del 10.0.0.1/24 dev v0; ip addr add 10.0.0.11/24 dev v0;"
                "ip route show default >/dev/null");
    const auto kernels = [&] {
        std::set<std::string> gateways;
        for (const auto &route : space_->json("ip -j -4 route show default")) {
            if (route.contains("gateway")) {
                gateways.insert(route["gateway"]);
            }
        }
        return gateways;
    };
    EXPECT_FALSE(kernels().contains("10.0.0.3"));
    EXPECT_TRUE(soon([&] {
        for (const auto &[address, ifIndex] : routers()) {
            if (address == "10.0.0.3") {
                return false;
            }
        }
        return true;
    }));
    space_->run("ip link set v0 down");
    EXPECT_TRUE(soon([&] {
        for (const auto &[address, ifIndex] : routers()) {
            if (ifIndex == v0_) {
                return false;
            }
        }
        return true;
    }));
}

TEST_F(IpTablesNetns, interfacesAreThoseWithTheProtocol)
{
    space_->run("ip addr add 10.0.0.1/24 dev v0");
    space_->sysctl("net/ipv4/neigh/v0/retrans_time_ms", "1234");
    space_->sysctl("net/ipv6/neigh/v0/retrans_time_ms", "4321");
    follow(IPMIB_FOLLOW_ADDRESSES);
    (*platform_)->uptimeBegan(monotonicMilliseconds());
    const auto rows = [&](std::uint32_t version) {
        std::map<std::uint32_t, IpmibIpInterface> all;
        IpmibIpInterface row{};
        while (ip().interfaceAfter(version, row.if_index, row)) {
            all[row.if_index] = row;
        }
        return all;
    };
    auto ipv4 = rows(IPMIB_IPV4);
    auto ipv6 = rows(IPMIB_IPV6);
    EXPECT_EQ(ipv4.size(), 3u);
    EXPECT_EQ(ipv6.size(), 3u);
    EXPECT_EQ(ipv4[v0_].enabled, 1u);
    EXPECT_EQ(ipv4[v0_].reasm_max, 65535u);
    const auto kept = [&](const char *name) { return std::stoul(space_->sysctl(name)); }; // in ticks of the kernel
    EXPECT_EQ(ipv4[v0_].retransmit_ms, kept("net/ipv4/neigh/v0/retrans_time_ms"));
    EXPECT_EQ(ipv4[v1_].enabled, 2u) << "it has no address";
    EXPECT_EQ(ipv4[1].enabled, 1u);
    EXPECT_EQ(ipv6[v0_].retransmit_ms, kept("net/ipv6/neigh/v0/retrans_time_ms"));
    EXPECT_GE(ipv6[v0_].retransmit_ms, 4321u);
    EXPECT_EQ(ipv6[1].enabled, 1u);
    EXPECT_EQ(ip().interfacesChanged(IPMIB_IPV4), 0u);
    const std::uint32_t six = ip().interfacesChanged(IPMIB_IPV6); // link-local addresses may have come meanwhile

    EXPECT_FALSE(platform_->waitUntil([] { return false; }, std::chrono::milliseconds(20)));
    space_->run("ip addr add 10.1.0.1/24 dev v1");
    EXPECT_TRUE(soon([&] { return rows(IPMIB_IPV4)[v1_].enabled == 1; }));
    const std::uint32_t changed = ip().interfacesChanged(IPMIB_IPV4);
    EXPECT_GT(changed, 0u);
    beginPacket();
    EXPECT_EQ(ip().interfacesChanged(IPMIB_IPV4), changed);
    EXPECT_FALSE(platform_->waitUntil([] { return false; }, std::chrono::milliseconds(20)));
    space_->run("ip link set v1 mtu 1000"); // too little for IPv6
    EXPECT_TRUE(soon([&] { return rows(IPMIB_IPV6).size() == 2; }));
    EXPECT_GT(ip().interfacesChanged(IPMIB_IPV6), six);
    EXPECT_EQ(rows(IPMIB_IPV4).size(), 3u);
    EXPECT_EQ(ip().interfacesChanged(IPMIB_IPV4), changed);
    space_->run("ip link del v0");
    EXPECT_TRUE(soon([&] { return rows(IPMIB_IPV4).size() == 1; }));
    EXPECT_GT(ip().interfacesChanged(IPMIB_IPV4), changed);
}

TEST_F(IpTablesNetns, timesAreThoseOfSysUpTime)
{
    space_->run("ip addr add 10.0.0.1/24 dev v0");
    follow(IPMIB_FOLLOW_ADDRESSES);
    IpmibIpAddress row{};
    ASSERT_TRUE(ip().findAddress(number("10.0.0.1"), row));
    EXPECT_GT(row.created, 500u) << "since boot";
    const std::uint64_t began = monotonicMilliseconds();
    (*platform_)->uptimeBegan(began);
    ASSERT_TRUE(ip().findAddress(number("10.0.0.1"), row));
    EXPECT_EQ(row.created, 0u) << "it was there before";
    EXPECT_EQ(row.changed, 0u);
    EXPECT_FALSE(platform_->waitUntil([] { return false; }, std::chrono::milliseconds(150)));
    space_->run("ip addr add 10.0.0.2/24 dev v0; ip addr change 10.0.0.1/24 dev v0 valid_lft 1000 preferred_lft 1000");
    const std::uint64_t now = (monotonicMilliseconds() - began) / 10;
    EXPECT_TRUE(soon([&] { return addresses().size() == 3 && addresses()[0].changed != 0; }));
    ASSERT_TRUE(ip().findAddress(number("10.0.0.2"), row));
    EXPECT_GE(row.created, 10u);
    EXPECT_LE(row.created, now + 1);
    ASSERT_TRUE(ip().findAddress(number("10.0.0.1"), row));
    EXPECT_EQ(row.created, 0u);
    EXPECT_GE(row.changed, 10u);
    EXPECT_LE(row.changed, now + 1);
    IpmibIpPrefix prefix{};
    ASSERT_TRUE(ip().findPrefix(v0_, number("10.0.0.0"), 24, prefix));
    EXPECT_EQ(prefix.valid_s, forEver) << "the second one has no end; lifetimes do not depend on sysUpTime";
}

} // namespace
