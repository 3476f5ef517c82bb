// SPDX-License-Identifier: BSD-3-Clause
// The default router services against the default routes that `ip` lists, configured and learned.
#include "addresses/test_radvd.h"
#include "addresses/test_rows.h"
#include "test_platform.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>
#include <set>

namespace
{

using namespace ipmib::platform;
using namespace std::chrono_literals;
using ipmib::netns::Namespace;
using ipmib::netns::Radvd;

using RouterKey = std::tuple<std::string, std::uint32_t>;

struct ListedRouter {
    std::int64_t expires = 0; // 0: never
    std::string preference;
};

// The gateways of the default routes of the main table that the kernel uses.
std::map<RouterKey, ListedRouter> listedRouters(const Namespace &space)
{
    std::map<std::string, std::uint32_t> index;
    for (const auto &link : space.json("ip -j link")) {
        index[link["ifname"]] = link["ifindex"];
    }
    std::map<RouterKey, ListedRouter> found;
    const auto add = [&](const nlohmann::json &hop, const nlohmann::json &route) {
        bool dead = false;
        for (const auto &flag : hop.value("flags", nlohmann::json::array())) {
            dead = dead || flag == "dead";
        }
        if (hop.contains("gateway") && !dead) {
            found[{hop["gateway"], index[hop["dev"]]}] = {route.value("expires", std::int64_t{0}),
                                                          route.value("pref", "")};
        }
    };
    for (const auto &route : space.json("ip -j -6 route show default table main")) {
        add(route, route);
        for (const auto &hop : route.value("nexthops", nlohmann::json::array())) {
            add(hop, route);
        }
    }
    return found;
}

std::set<RouterKey> routerKeysOf(const std::map<RouterKey, ListedRouter> &routers)
{
    std::set<RouterKey> keys;
    for (const auto &[key, router] : routers) {
        keys.insert(key);
    }
    return keys;
}

std::set<RouterKey> walkedRouterKeys()
{
    std::set<RouterKey> keys;
    for (const RouterRow &row : walkRouters()) {
        keys.insert(row.key());
    }
    return keys;
}

// The routers as `ip` lists them, in words, but for a second in the lifetimes of learned ones.
std::string routerDifferences(const Namespace &space)
{
    const auto expected = listedRouters(space);
    std::string found;
    if (walkedRouterKeys() != routerKeysOf(expected)) {
        return "other routers: " + testing::PrintToString(walkedRouterKeys()) + ", not " +
               testing::PrintToString(routerKeysOf(expected));
    }
    for (const RouterRow &row : walkRouters()) {
        const ListedRouter &router = expected.at(row.key());
        const std::int64_t lifetime = router.expires == 0 ? 65535 : std::max<std::int64_t>(router.expires, 1);
        const std::int64_t tolerance = router.expires == 0 ? 0 : 1;
        if (row.preference != router.preference || std::abs(row.lifetime - lifetime) > tolerance) {
            found += row.address + " has " + row.preference + ", " + std::to_string(row.lifetime) + " s, not " +
                     router.preference + ", " + std::to_string(lifetime) + " s\n";
        }
    }
    return found;
}

void expectRoutersOfIp(const Namespace &space)
{
    EXPECT_EQ(routerDifferences(space), "");
}

class Routers : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        space_.emplace();
        space_->run("ip link add v0 type veth peer name w0; ip link add v1 type veth peer name w1;"
                    "for i in v0 w0 v1 w1; do ip link set $i up; done;"
                    "ip addr add 2001:db8::1/64 dev v0 nodad; ip addr add 2001:db8:1::1/64 dev v1 nodad");
    }
    void run(const std::string &command) { space_->run(command); }
    // What is announced is there with the next packet, what had to be read again shortly after. A link that comes up
    // has its carrier, and its gateways, later than the command.
    void expectSettled(PlatformInside &platform)
    {
        std::string differences;
        platform.waitUntil([&] {
            platform->beginPacket();
            differences = routerDifferences(*space_);
            return platform->dumps().idle() && differences.empty();
        });
        EXPECT_EQ(differences, "");
    }

    std::optional<Namespace> space_;
};

TEST_F(Routers, configuredOnesComeAndGo)
{
    PlatformInside platform(*space_);
    EXPECT_TRUE(walkRouters().empty());
    run("ip -6 route add default via 2001:db8::9 dev v0 pref high; ip -6 route add default via fe80::1 dev v1 metric 7;"
        "ip -6 route add default via fe80::1 dev v0 metric 8 pref low;"
        "ip -6 route add default via 2001:db8:1::9 table 100; ip -6 route add 2001:db8:7::/48 via 2001:db8::8");
    platform->beginPacket();
    EXPECT_EQ(walkRouters().size(), 3u);
    expectRoutersOfIp(*space_);
    run("ip -6 route del default via fe80::1 dev v1 metric 7");
    platform->beginPacket();
    EXPECT_EQ(walkRouters().size(), 2u);
    expectRoutersOfIp(*space_);
    run("ip -6 route replace default via 2001:db8:1::7 dev v1 metric 8");
    expectSettled(platform);
    run("ip link set v0 down");
    expectSettled(platform);
    EXPECT_EQ(walkRouters().size(), 1u);
    run("ip link del v1");
    expectSettled(platform);
    EXPECT_TRUE(walkRouters().empty());
}

TEST_F(Routers, everyGatewayOfAMultipathRoute)
{
    PlatformInside platform(*space_);
    run("ip -6 route add default nexthop via 2001:db8::9 dev v0 nexthop via 2001:db8:1::9 dev v1 nexthop via fe80::7 "
        "dev v1");
    expectSettled(platform);
    EXPECT_EQ(walkRouters().size(), 3u);
    run("ip -6 route append default via 2001:db8::8 dev v0");
    expectSettled(platform);
    EXPECT_EQ(walkRouters().size(), 4u);
    run("ip -6 route del default via 2001:db8:1::9 dev v1");
    expectSettled(platform);
    EXPECT_EQ(walkRouters().size(), 3u);
    run("ip link set v1 down"); // its gateways go without a word
    expectSettled(platform);
    EXPECT_EQ(walkRouters().size(), 2u);
    run("ip link set v1 up");
    expectSettled(platform);
    run("ip -6 route replace default nexthop via 2001:db8::5 dev v0 nexthop via 2001:db8::6 dev v0");
    expectSettled(platform);
    EXPECT_EQ(walkRouters().size(), 2u);
    run("ip -6 route del default");
    expectSettled(platform);
    EXPECT_TRUE(walkRouters().empty());
}

class NexthopObjects : public Routers, public testing::WithParamInterface<const char *>
{
};

// With the compatible mode the kernel tells the gateways of a route beside the object, without it the object alone.
TEST_P(NexthopObjects, areResolved)
{
    space_->sysctl("net/ipv4/nexthop_compat_mode", GetParam());
    run("ip nexthop add id 1 via 2001:db8::9 dev v0; ip nexthop add id 2 via fe80::2 dev v1;"
        "ip nexthop add id 3 via 2001:db8::3 dev v0; ip nexthop add id 10 group 1/2;"
        "ip -6 route add default nhid 10");
    PlatformInside platform(*space_);
    const std::uint32_t v0 = space_->json("ip -j link show dev v0")[0]["ifindex"];
    const std::uint32_t v1 = space_->json("ip -j link show dev v1")[0]["ifindex"];
    EXPECT_EQ(walkedRouterKeys(), (std::set<RouterKey>{{"2001:db8::9", v0}, {"fe80::2", v1}}));
    const auto expectRouters = [&](const std::set<RouterKey> &expected) {
        platform.waitUntil([&] {
            platform->beginPacket();
            return walkedRouterKeys() == expected;
        });
        EXPECT_EQ(walkedRouterKeys(), expected);
    };
    run("ip nexthop replace id 10 group 2/3");
    expectRouters({{"2001:db8::3", v0}, {"fe80::2", v1}});
    run("ip nexthop replace id 2 via fe80::5 dev v1");
    expectRouters({{"2001:db8::3", v0}, {"fe80::5", v1}});
    run("ip -6 route add default nhid 1 metric 9");
    expectRouters({{"2001:db8::3", v0}, {"2001:db8::9", v0}, {"fe80::5", v1}});
    run("ip nexthop del id 10"); // and the route with it
    expectRouters({{"2001:db8::9", v0}});
    run("ip link set v0 down");
    expectRouters({});
}

INSTANTIATE_TEST_SUITE_P(Mode, NexthopObjects, testing::Values("1", "0"));

TEST_F(Routers, ofTwoRoutesThroughOneRouterTheConfiguredOneCounts)
{
    run("ip -6 route add default via fe80::1 dev v0 proto ra metric 50 expires 100 pref low;"
        "ip -6 route add default via fe80::1 dev v0 metric 100 pref high");
    PlatformInside platform(*space_);
    ASSERT_EQ(walkRouters().size(), 1u);
    EXPECT_EQ(walkRouters()[0].lifetime, 65535u);
    EXPECT_EQ(walkRouters()[0].preference, "high");
    run("ip -6 route del default via fe80::1 dev v0 metric 100");
    platform->beginPacket();
    EXPECT_LE(walkRouters()[0].lifetime, 100u);
    EXPECT_GE(walkRouters()[0].lifetime, 70u);
    EXPECT_EQ(walkRouters()[0].preference, "low");
}

// Routes for packets from some sources alone, as home routers have them.
TEST_F(Routers, routesOfSomeSourcesCount)
{
    PlatformInside platform(*space_);
    run("ip -6 route add default from 2001:db8::/64 via fe80::1 dev v0;"
        "ip -6 route add default from 2001:db8:1::/64 via fe80::1 dev v0");
    platform->beginPacket();
    EXPECT_EQ(walkRouters().size(), 1u);
    run("ip -6 route del default from 2001:db8::/64 via fe80::1 dev v0");
    platform->beginPacket();
    EXPECT_EQ(walkRouters().size(), 1u);
    run("ip -6 route del default from 2001:db8:1::/64 via fe80::1 dev v0");
    platform->beginPacket();
    EXPECT_TRUE(walkRouters().empty());
}

// Two routers that say nothing but that they are there, and a configured one. The kernel does not announce that a
// router has prolonged its lifetime or changed its preference.
TEST(LearnedRouters, countDownAreProlongedAndLapse)
{
    IPMIB_NEEDS_NAMESPACES();
    IPMIB_NEEDS_RADVD();
    const Namespace host;
    const Namespace first;
    const Namespace second;
    Namespace::connect(host, "v0", first, "w0");
    Namespace::connect(host, "v1", second, "w1");
    host.sysctl("net/ipv6/route/gc_interval", "6"); // seconds between the kernel's looks at lapsed routes
    host.run("ip -6 route add default via fe80::99 dev v0 metric 50");
    PlatformInside platform(host);
    const auto configuration = [](const std::string &device, const std::string &preference, const std::string &life) {
        return "interface " + device + " { AdvSendAdvert on; MinRtrAdvInterval 3; MaxRtrAdvInterval 4; " +
               "AdvDefaultPreference " + preference + "; AdvDefaultLifetime " + life + "; };\n";
    };
    Radvd high(first, configuration("w0", "high", "8"));
    Radvd low(second, configuration("w1", "low", "9000"));
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return walkRouters().size() == 3;
    }));
    // An advertisement may come just behind a reading, which counts for a tenth of a second.
    const auto expectRoutersOfIpSoon = [&] {
        std::string left;
        platform.waitFor([&] {
            platform->beginPacket();
            left = routerDifferences(host);
            return left.empty();
        });
        EXPECT_EQ(left, "");
    };
    expectRoutersOfIpSoon();
    const auto rowWith = [&](const std::string &preference) {
        platform->beginPacket();
        for (const RouterRow &row : walkRouters()) {
            if (row.preference == preference && row.lifetime != 65535) {
                return row;
            }
        }
        return RouterRow{};
    };
    EXPECT_TRUE(platform.waitFor([&] { return rowWith("high").lifetime <= 6; })) << "it counts down";
    expectRoutersOfIpSoon();
    EXPECT_TRUE(platform.waitFor([&] { return rowWith("high").lifetime >= 7; })) << "it is prolonged";
    expectRoutersOfIpSoon();

    low.readAgain(configuration("w1", "medium", "9000"));
    EXPECT_TRUE(platform.waitFor([&] { return rowWith("medium").lifetime > 8990; }));
    expectRoutersOfIpSoon();

    high.vanish();
    EXPECT_TRUE(platform.waitFor([&] { return rowWith("high").lifetime == 1; })) << "lapsed, and still listed";
    EXPECT_TRUE(platform.waitFor([&] { return rowWith("high").lifetime == 0; })) << "the kernel dropped it";
    platform->beginPacket();
    EXPECT_EQ(walkRouters().size(), 2u);
    expectRoutersOfIpSoon();
}

TEST(LearnedRouters, theKernelIsAskedWhenAnAdvertisementMayHaveCome)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    PlatformInside platform(space);
    const auto readsOf100Walks = [&] {
        const auto before = platform->addressing().kernelReads();
        for (int i = 0; i < 100; ++i) {
            platform->beginPacket();
            walkRouters();
        }
        return platform->addressing().kernelReads() - before;
    };
    space.run("ip -6 route add default via fe80::1 dev v0");
    EXPECT_EQ(readsOf100Walks(), 0u) << "nothing is learned";
    space.run("ip -6 route add default via fe80::2 dev v0 proto ra metric 50 expires 100");
    auto reads = readsOf100Walks();
    EXPECT_GE(reads, 1u);
    for (int i = 0; i < 4; ++i) {
        platform.waitUntil([] { return false; }, 110ms); // a tenth of a second is the shortest time between two
        reads += readsOf100Walks();
    }
    EXPECT_LE(reads, 2u) << "none has come";
}

} // namespace
