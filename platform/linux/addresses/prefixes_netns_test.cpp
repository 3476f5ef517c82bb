// SPDX-License-Identifier: BSD-3-Clause
// The prefix services against the addresses and routes that `ip` lists, and against what a router advertises.
#include "addresses/test_radvd.h"
#include "addresses/test_rows.h"
#include "test_platform.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace
{

using namespace ipmib::platform;
using namespace std::chrono_literals;
using ipmib::netns::Namespace;
using ipmib::netns::Radvd;

constexpr std::uint32_t forEver = 0xFFFFFFFF;
constexpr std::uint32_t originManual = 2;
constexpr std::uint32_t originWellKnown = 4;
constexpr std::uint32_t originDhcp = 8;
constexpr std::uint32_t originAdvertised = 16;

using Key = std::tuple<std::uint32_t, std::string, std::uint32_t>;

std::map<std::string, std::uint32_t> indexes(const Namespace &space)
{
    std::map<std::string, std::uint32_t> found;
    for (const auto &link : space.json("ip -j link")) {
        found[link["ifname"]] = link["ifindex"];
    }
    return found;
}

bool isLinkLocalOrMulticast(const std::string &address)
{
    return address.substr(0, 2) == "ff" || address.substr(0, 3) == "fe8";
}

// What has to be listed: the prefix of each address, and each on-link route.
std::set<Key> expectedKeys(const Namespace &space)
{
    std::set<Key> keys;
    for (const auto &link : space.json("ip -j -6 addr")) {
        for (const auto &info : link.value("addr_info", nlohmann::json::array())) {
            if (info.contains("local") && !isLinkLocalOrMulticast(info["local"])) {
                const std::uint32_t length = info["prefixlen"];
                keys.insert({link["ifindex"], networkText(info["local"], length), length});
            }
        }
    }
    auto index = indexes(space);
    for (const auto &route : space.json("ip -j -d -6 route show table main")) {
        const std::string destination = route["dst"];
        if (route.contains("gateway") || !route.contains("dev") || destination == "default" ||
            route["type"] != "unicast" || isLinkLocalOrMulticast(destination)) {
            continue;
        }
        const auto slash = destination.find('/');
        const auto length = slash == std::string::npos ? 128 : std::stoul(destination.substr(slash + 1));
        keys.insert({index[route["dev"]], destination.substr(0, slash), length});
    }
    return keys;
}

std::vector<PrefixRow> walkAll(const Namespace &space)
{
    std::set<std::uint32_t> ascending;
    for (const auto &[name, ifIndex] : indexes(space)) {
        ascending.insert(ifIndex);
    }
    std::vector<PrefixRow> rows;
    for (const std::uint32_t ifIndex : ascending) {
        for (PrefixRow &row : walkPrefixes(ifIndex)) {
            rows.push_back(std::move(row));
        }
    }
    return rows;
}

std::set<Key> walkedKeys(const Namespace &space)
{
    std::set<Key> keys;
    for (const PrefixRow &row : walkAll(space)) {
        EXPECT_TRUE(keys.insert(row.key()).second);
    }
    return keys;
}

const PrefixRow *rowOf(const std::vector<PrefixRow> &rows, const std::string &prefix, std::uint32_t length)
{
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [&](const PrefixRow &row) { return row.prefix == prefix && row.length == length; });
    return found == rows.end() ? nullptr : &*found;
}

nlohmann::json routeTo(const Namespace &space, const std::string &prefix)
{
    return space.json("ip -j -6 route show " + prefix)[0];
}

nlohmann::json addressIn(const Namespace &space, const std::string &device, const std::string &start)
{
    for (const auto &link : space.json("ip -j -6 addr show dev " + device)) { // an empty one for each other link
        for (const auto &info : link.value("addr_info", nlohmann::json::array())) {
            if (info.value("local", "").substr(0, start.size()) == start && !info.value("temporary", false)) {
                return info;
            }
        }
    }
    ADD_FAILURE() << "no address " << start;
    return {};
}

// Two whole seconds that were read one after the other, perhaps on a machine that has much else to do.
void expectSameSeconds(std::uint32_t row, std::int64_t listed)
{
    if (row == forEver || listed == forEver) {
        EXPECT_EQ(row, listed);
    } else {
        EXPECT_NEAR(row, static_cast<double>(listed), 10.0);
    }
}

TEST(PrefixesNetns, everyAddressAndEveryOnLinkRoute)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    PlatformInside platform(space);
    EXPECT_EQ(walkedKeys(space), expectedKeys(space));

    space.run("ip addr add 2001:db8:1::1/64 dev v0 nodad; ip addr add 2001:db8:1::2/64 dev v0 nodad;"
              "ip addr add 2001:db8:1::3/128 dev v0 nodad; ip addr add 2001:db8:1::4/48 dev v0 nodad;"
              "ip addr add 2001:db8:1::1/64 dev v1 nodad; ip addr add 2001:db8:2::1/64 dev v0 nodad noprefixroute;"
              "ip addr add 2001:db8:3::1 peer 2001:db8:4::1/64 dev v1 nodad;"
              "ip addr add fec0::1/10 dev v1 nodad; ip addr add fe80::7/9 dev v1 nodad;"
              "ip -6 route add 2001:db8:5::/56 dev v1; ip -6 route add 2001:db8:6::/56 dev v1 proto static;"
              "ip -6 route add 2001:db8:7::/56 via 2001:db8:1::9 dev v0; ip -6 route add unreachable 2001:db8:8::/64;"
              "ip -6 route add default dev v1");
    const auto settled = [&] {
        platform->beginPacket();
        return platform->dumps().idle() && walkedKeys(space) == expectedKeys(space);
    };
    EXPECT_TRUE(platform.waitUntil(settled));
    EXPECT_EQ(walkedKeys(space), expectedKeys(space));
    const auto rows = walkAll(space);
    EXPECT_GE(rows.size(), 10u);
    for (const PrefixRow &row : rows) {
        EXPECT_EQ(row.origin, row.prefix == "::1" ? originWellKnown : originManual) << row.prefix;
        EXPECT_EQ(row.valid, forEver);
        EXPECT_EQ(row.preferred, forEver);
        EXPECT_FALSE(row.autonomous);
    }
    EXPECT_TRUE(rowOf(rows, "2001:db8:1::", 64)->onLink);
    EXPECT_FALSE(rowOf(rows, "2001:db8:2::", 64)->onLink);
    EXPECT_EQ(rowOf(rows, "2001:db8:7::", 56), nullptr);

    space.run("ip addr del 2001:db8:1::1/64 dev v0; ip -6 route del 2001:db8:5::/56;"
              "ip -6 route replace 2001:db8:6::/56 dev v0 proto static; ip addr del 2001:db8:1::3/128 dev v0");
    EXPECT_TRUE(platform.waitUntil(settled));
    EXPECT_EQ(walkedKeys(space), expectedKeys(space));
    EXPECT_NE(rowOf(walkAll(space), "2001:db8:1::", 64), nullptr) << "another address has it";

    space.run("ip link set v1 down");
    EXPECT_TRUE(platform.waitUntil(settled));
    EXPECT_EQ(walkedKeys(space), expectedKeys(space));
    space.run("ip link del v0");
    EXPECT_TRUE(platform.waitUntil(settled));
    EXPECT_EQ(walkedKeys(space), std::set<Key>({{1, "::1", 128}}));
}

TEST(PrefixesNetns, theNextOneBehindAnyKey)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    std::mt19937 random(7);
    for (int i = 0; i < 60; ++i) {
        char command[128];
        std::snprintf(command, sizeof command, "ip addr add 2001:db8:%x:%x::%x/%d dev v%d nodad", i % 5, i % 3, i + 1,
                      32 + i * 7 % 97, i % 2);
        space.run(command);
    }
    PlatformInside platform(space);
    platform.waitUntil([&] {
        platform->beginPacket();
        return walkedKeys(space) == expectedKeys(space);
    });
    for (const std::uint32_t ifIndex : {indexes(space)["v0"], indexes(space)["v1"]}) {
        std::vector<std::string> keys; // prefix and length as the 20 bytes that a record orders by
        FullPrefixRecord record{};
        for (std::uint32_t result = IP6CFG_GetFirstFullPrefix(ifIndex, -1, &record); result == 0;
             result = IP6CFG_GetNextFullPrefix(ifIndex, -1, &record)) {
            keys.emplace_back(reinterpret_cast<const char *>(record.prefix), 20);
        }
        ASSERT_GT(keys.size(), 20u);
        for (int i = 0; i < 2'000; ++i) {
            std::string key = keys[random() % keys.size()];
            key[random() % 16] = static_cast<char>(random());
            const std::uint32_t length =
                std::array{random() % 129, random(), 0ul, 0xFFFFFFFFul}[random() % 4] & 0xFFFFFFFF;
            FullPrefixRecord cursor{};
            std::copy(key.begin(), key.begin() + 16, cursor.prefix);
            cursor.length = ipmib_be32(length);
            const std::string asked(reinterpret_cast<const char *>(cursor.prefix), 20);
            const auto expected = std::upper_bound(keys.begin(), keys.end(), asked, [](const auto &a, const auto &b) {
                return std::memcmp(a.data(), b.data(), 20) < 0;
            });
            if (IP6CFG_GetNextFullPrefix(ifIndex, -1, &cursor) != 0) {
                EXPECT_EQ(expected, keys.end());
            } else {
                ASSERT_NE(expected, keys.end());
                EXPECT_EQ(std::string(reinterpret_cast<const char *>(cursor.prefix), 20), *expected);
            }
        }
    }
    FullPrefixRecord record{};
    EXPECT_NE(IP6CFG_GetFirstFullPrefix(4711, -1, &record), 0u);
}

TEST(PrefixesNetns, leasedAddressesCountDown)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up;"
              "ip addr add 2001:db8::7/128 dev v0 nodad valid_lft 300 preferred_lft 200");
    PlatformInside platform(space);
    const std::uint32_t v0 = indexes(space)["v0"];
    const auto expectListed = [&] {
        const auto rows = walkPrefixes(v0);
        const PrefixRow *row = rowOf(rows, "2001:db8::7", 128);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->origin, originDhcp);
        const auto info = addressIn(space, "v0", "2001:db8::7");
        expectSameSeconds(row->valid, info["valid_life_time"]);
        expectSameSeconds(row->preferred, info["preferred_life_time"]);
    };
    expectListed();
    platform.waitFor([&] { return false; }, 2100ms);
    platform->beginPacket();
    expectListed();
    EXPECT_LT(rowOf(walkPrefixes(v0), "2001:db8::7", 128)->valid, 299u);
    // A renewal, of which the kernel announces the address, but not that it changed the route to it.
    space.run("ip addr change 2001:db8::7/128 dev v0 valid_lft 900 preferred_lft 800");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return rowOf(walkPrefixes(v0), "2001:db8::7", 128)->valid > 890;
    }));
    expectListed();
}

constexpr char advertised[] = R"(interface w0 {
    AdvSendAdvert on; MinRtrAdvInterval 3; MaxRtrAdvInterval 4; AdvDefaultLifetime 9;
    prefix 2001:db8:1::/64 { AdvValidLifetime 120; AdvPreferredLifetime 60; };
    prefix 2001:db8:2::/64 { AdvAutonomous off; AdvValidLifetime 90; AdvPreferredLifetime 40; };
    prefix 2001:db8:3::/64 { AdvOnLink off; AdvValidLifetime infinity; AdvPreferredLifetime infinity; };
    prefix 2001:db8:4::/64 { AdvValidLifetime infinity; AdvPreferredLifetime infinity; };
};
)";

class AdvertisedPrefixes : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        IPMIB_NEEDS_RADVD();
        host_.emplace();
        router_.emplace();
        Namespace::connect(*host_, "v0", *router_, "w0");
        host_->run("ip addr add 2001:db8:9::1/64 dev v0 nodad");
    }
    void start() { radvd_.emplace(*router_, advertised); }
    std::vector<PrefixRow> rows() const { return walkPrefixes(indexes(*host_)["v0"]); }

    // What the kernel says of the lifetimes that rows are compared with, in seconds.
    struct Listed {
        std::int64_t preferred; // of an address in 2001:db8:1::/64
        std::int64_t valid[2];  // of the routes to 2001:db8:1::/64 and 2001:db8:2::/64
    };
    Listed listed() const
    {
        return {addressIn(*host_, "v0", "2001:db8:1:")["preferred_life_time"],
                {routeTo(*host_, "2001:db8:1::/64")["expires"], routeTo(*host_, "2001:db8:2::/64")["expires"]}};
    }

    // Lifetimes of all learned rows against those of the routes and the addresses. What the kernel keeps nowhere, the
    // preferred lifetime of a prefix without addresses, is compared with what was advertised when this is known.
    void expectWhatIpSays(PlatformInside &platform, bool heard) const
    {
        Listed before;
        Listed after;
        std::vector<PrefixRow> found;
        do { // again when an advertisement has renewed them in between
            before = listed();
            platform->beginPacket();
            found = rows();
            after = listed();
        } while (after.preferred > before.preferred || after.valid[0] > before.valid[0] ||
                 after.valid[1] > before.valid[1]);
        const double late = platform.longestPause(); // a lifetime counts from when its advertisement was read
        const auto expectBetween = [late](std::uint32_t seconds, std::int64_t atMost, std::int64_t atLeast) {
            EXPECT_LE(seconds, static_cast<double>(atMost) + 1 + late); // both are whole seconds
            EXPECT_GE(seconds, atLeast - 1);
        };
        ASSERT_NE(rowOf(found, "2001:db8:1::", 64), nullptr);
        expectBetween(rowOf(found, "2001:db8:1::", 64)->preferred, before.preferred, after.preferred);
        for (const int i : {0, 1}) {
            const PrefixRow *row = rowOf(found, i == 0 ? "2001:db8:1::" : "2001:db8:2::", 64);
            ASSERT_NE(row, nullptr);
            EXPECT_EQ(row->origin, originAdvertised);
            expectBetween(row->valid, before.valid[i], after.valid[i]);
            EXPECT_TRUE(row->onLink);
        }
        const PrefixRow *noAddresses = rowOf(found, "2001:db8:2::", 64);
        EXPECT_EQ(noAddresses->valid - noAddresses->preferred, heard ? 50u : 0u);
        for (const char *prefix : {"2001:db8:3::", "2001:db8:4::"}) {
            const PrefixRow *row = rowOf(found, prefix, 64);
            EXPECT_EQ(row->origin, originAdvertised) << prefix;
            EXPECT_EQ(row->valid, forEver);
            EXPECT_EQ(row->preferred, forEver);
        }
        EXPECT_FALSE(rowOf(found, "2001:db8:3::", 64)->onLink);
        EXPECT_TRUE(rowOf(found, "2001:db8:4::", 64)->onLink);
        EXPECT_TRUE(rowOf(found, "2001:db8:1::", 64)->autonomous);
        EXPECT_FALSE(rowOf(found, "2001:db8:2::", 64)->autonomous);
        EXPECT_TRUE(rowOf(found, "2001:db8:3::", 64)->autonomous);
        EXPECT_EQ(rowOf(found, "2001:db8:9::", 64)->origin, originManual);
        EXPECT_EQ(walkedKeys(*host_), expectedKeys(*host_));
    }

    std::optional<Namespace> host_;
    std::optional<Namespace> router_;
    std::optional<Radvd> radvd_;
};

TEST_F(AdvertisedPrefixes, areHeardAndCountDownAndAreRenewed)
{
    PlatformInside platform(*host_);
    start();
    ASSERT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return walkedKeys(*host_) == expectedKeys(*host_) && rowOf(rows(), "2001:db8:4::", 64) != nullptr &&
               rowOf(rows(), "2001:db8:3::", 64) != nullptr;
    }));
    expectWhatIpSays(platform, true);
    const auto validNow = [&] {
        platform->beginPacket();
        return rowOf(rows(), "2001:db8:1::", 64)->valid;
    };
    EXPECT_TRUE(platform.waitFor([&] { return validNow() <= 118; })) << "it counts down";
    expectWhatIpSays(platform, true);
    EXPECT_TRUE(platform.waitFor([&] { return validNow() >= 119; })) << "the next advertisement renews it";
    expectWhatIpSays(platform, true);
}

TEST_F(AdvertisedPrefixes, areFoundByAPlatformThatStartsLater)
{
    start();
    PlatformInside platform(*host_); // only for waiting
    ASSERT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return rowOf(rows(), "2001:db8:4::", 64) != nullptr && rowOf(rows(), "2001:db8:3::", 64) != nullptr;
    }));
    radvd_->vanish();
    setRunning(nullptr);
    PlatformInside later(*host_);
    expectWhatIpSays(later, false);
    // Whoever forms an address from an advertisement marks it, or enters the route as well: this is a lease.
    host_->run("ip addr add 2001:db8:2::77/64 dev v0 nodad valid_lft 90 preferred_lft 40");
    const auto origin = [&]() -> std::uint32_t {
        later->beginPacket();
        for (const AddressRow &row : walkAddresses()) {
            if (row.address == "2001:db8:2::77") {
                return row.record.origin;
            }
        }
        return 0;
    };
    EXPECT_TRUE(later.waitUntil([&] { return origin() != 0; }));
    EXPECT_EQ(origin(), 16u);
    EXPECT_EQ(rowOf(rows(), "2001:db8:2::", 64)->origin, originAdvertised);
}

TEST_F(AdvertisedPrefixes, areGoneWhenTheRouterTakesThemBack)
{
    PlatformInside platform(*host_);
    start();
    const auto has = [&](const std::string &prefix) {
        platform->beginPacket();
        return rowOf(rows(), prefix, 64) != nullptr;
    };
    ASSERT_TRUE(platform.waitUntil([&] { return has("2001:db8:2::"); }));
    radvd_->readAgain(R"(interface w0 {
        AdvSendAdvert on; MinRtrAdvInterval 3; MaxRtrAdvInterval 4; AdvDefaultLifetime 9;
        prefix 2001:db8:2::/64 { AdvAutonomous off; AdvValidLifetime 0; AdvPreferredLifetime 0; };
        prefix 2001:db8:9::/64 { AdvAutonomous on; AdvValidLifetime 100; AdvPreferredLifetime 50; };
    };)");
    EXPECT_TRUE(platform.waitUntil([&] { return !has("2001:db8:2::"); }));
    EXPECT_EQ(walkedKeys(*host_), expectedKeys(*host_));
    // One that is configured too stays what it is; the router says that addresses may be formed.
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return rowOf(rows(), "2001:db8:9::", 64)->autonomous;
    }));
    const auto found = rows();
    EXPECT_EQ(rowOf(found, "2001:db8:9::", 64)->origin, originManual);
    EXPECT_EQ(rowOf(found, "2001:db8:9::", 64)->valid, forEver);

    host_->run("ip link set v0 down");
    EXPECT_TRUE(platform.waitUntil([&] { return !has("2001:db8:1::") && platform->dumps().idle(); }));
    EXPECT_EQ(walkedKeys(*host_), expectedKeys(*host_));
}

} // namespace
