// SPDX-License-Identifier: BSD-3-Clause
// The tables of addresses, prefixes and default routers of a router with 2,000 addresses on 64 interfaces, against what
// `ip` lists, row by row.
#include "live_agent.h"

#include "addresses/test_radvd.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <sstream>
#include <tuple>
#include <utility>

namespace
{

using namespace ipmib::live;
using namespace std::chrono_literals;
using ipmib::host::SubId;
using ipmib::netns::Namespace;
using ipmib::netns::Radvd;

const Identifier prefixEntry{1, 3, 6, 1, 2, 1, 4, 32, 1};
const Identifier addressEntry{1, 3, 6, 1, 2, 1, 4, 34, 1};
const Identifier routerEntry{1, 3, 6, 1, 2, 1, 4, 37, 1};

const std::vector<SubId> prefixColumns{5, 6, 7, 8, 9};
const std::vector<SubId> addressColumns{3, 4, 5, 6, 7, 8, 9, 10, 11};
const std::vector<SubId> routerColumns{4, 5};

constexpr std::int64_t forEver = 0xFFFFFFFF;

bool isLinkLocal(const std::string &address)
{
    return address.substr(0, 3) == "fe8";
}

// The address as index parts: type, length and octets; of a link-local one with its zone.
Identifier indexOf(const std::string &address, std::uint32_t ifIndex)
{
    std::uint8_t bytes[16];
    EXPECT_EQ(inet_pton(AF_INET6, address.c_str(), bytes), 1) << address;
    const bool zoned = isLinkLocal(address);
    Identifier index{zoned ? 4u : 2u, zoned ? 20u : 16u};
    index.insert(index.end(), bytes, bytes + 16);
    for (int shift = 24; zoned && shift >= 0; shift -= 8) {
        index.push_back(ifIndex >> shift & 0xFF);
    }
    return index;
}

Identifier prefixIndexOf(const std::string &address, unsigned length, std::uint32_t ifIndex)
{
    Identifier index{ifIndex};
    const bool linkLocal = isLinkLocal(address);
    const Identifier masked = indexOf(linkLocal ? "fe80::" : address, ifIndex);
    index.insert(index.end(), masked.begin(), masked.end());
    const unsigned bits = linkLocal ? 10 : length;
    for (unsigned bit = bits; bit < 128; ++bit) {
        index[3 + bit / 8] &= ~(0x80u >> bit % 8);
    }
    index.push_back(bits);
    return index;
}

struct ListedAddress {
    std::uint32_t ifIndex;
    unsigned length;
    SubId status;
    SubId origin;
    bool mainOne; // not a further link-local one of its interface

    bool operator==(const ListedAddress &) const = default;
};

class AddressesOfARouter : public testing::Test
{
  protected:
    static constexpr unsigned pairs = 32;
    static constexpr unsigned perInterface = 31;

    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        IPMIB_NEEDS_RADVD();
        router.emplace();
        upstream.emplace();
        second.emplace();
        Namespace::connect(*router, "wan", *upstream, "w0");
        Namespace::connect(*router, "wan2", *second, "w1");
        router->sysctl("net/ipv6/conf/all/forwarding", "1");
        for (const std::string name : {"wan", "wan2"}) {
            router->sysctl("net/ipv6/conf/" + name + "/accept_ra", "2"); // a router that listens to routers
        }
        router->sysctl("net/ipv6/conf/wan/use_tempaddr", "2");
        makeInterfaces();
        makeSpecialAddresses();
        router->run("ip -6 route add default via fe80::abcd dev a0 metric 7 pref high;"
                    "ip -6 route add default via 2001:db8:0:a0::99 dev a0 metric 8");
        agent.emplace(*router); // before the routers speak: the kernel does not keep all that they say
        firstRadvd.emplace(*upstream, R"(interface w0 { AdvSendAdvert on; MinRtrAdvInterval 3; MaxRtrAdvInterval 4;
            AdvDefaultLifetime 30; AdvDefaultPreference low;
            prefix 2001:db8:f1::/64 { AdvValidLifetime 100; AdvPreferredLifetime 50; };
            prefix 2001:db8:f2::/64 { AdvAutonomous off; AdvValidLifetime 90; AdvPreferredLifetime 40; }; };)");
        secondRadvd.emplace(*second, R"(interface w1 { AdvSendAdvert on; MinRtrAdvInterval 3; MaxRtrAdvInterval 4;
            AdvDefaultLifetime 9000; };)");
        ASSERT_TRUE(agent->platform().waitFor([&] {
            agent->platform()->beginPacket();
            return routersAreThere() && settled();
        }));
    }
    void TearDown() override { agent.reset(); }

    void makeInterfaces()
    {
        std::ostringstream setup;
        for (unsigned i = 0; i < pairs; ++i) {
            setup << "link add a" << i << " type veth peer name b" << i << "\n";
            for (const char end : {'a', 'b'}) {
                setup << "link set " << end << i << " addrgenmode none\n" // fe80::1 on each of them, and no other
                      << "link set " << end << i << " up\n"
                      << "addr add fe80::1/64 dev " << end << i << " nodad\n";
                for (unsigned k = 0; k < perInterface; ++k) {
                    setup << "addr add 2001:db8:" << std::hex << i << ":" << end << k % 4 << "::" << k + 1 << std::dec
                          << (k % 9 == 8 ? "/128" : "/64") << " dev " << end << i << " nodad\n";
                }
            }
        }
        router->run("ip -batch - <<'END'\n" + setup.str() + "END");
    }

    void makeSpecialAddresses()
    {
        upstream->run("ip addr add 2001:db8:e::d/64 dev w0 nodad");
        router->sysctl("net/ipv6/conf/wan/accept_dad", "1");
        router->run("ip addr add 2001:db8:e::d/64 dev wan; ip addr add 2001:db8:e::1/64 dev wan nodad preferred_lft 0;"
                    "ip addr add 2001:db8:e::7/128 dev wan nodad valid_lft 500 preferred_lft 300; sleep 1.5");
        router->sysctl("net/ipv6/conf/wan2/accept_dad", "1");
        router->run("ip addr add fe80::5/64 dev wan2 nodad"); // not the oldest one there
        router->sysctl("net/ipv6/conf/wan2/dad_transmits", "200");
        router->run("ip addr add 2001:db8:e::3/64 dev wan2");
    }

    bool routersAreThere()
    {
        const auto routers = agent->walk(routerEntry, routerColumns);
        return !routers.empty() && routers.at(4).size() == 4;
    }
    // Whether the mirrors have what the kernel has by now: it announces some changes a moment after it lists them.
    bool settled()
    {
        const auto &addresses = agent->platform()->addressing().addresses();
        std::size_t mirrored = 0;
        addresses.each([&](const auto &) { ++mirrored; });
        const auto all = listed();
        const auto globals = std::count_if(all.begin(), all.end(), [](const auto &row) { return row.first[0] == 2; });
        return agent->platform()->dumps().idle() && mirrored == static_cast<std::size_t>(globals) &&
               std::any_of(all.begin(), all.end(), [](const auto &row) { return row.second.origin == 6; });
    }

    // By index in the table.
    std::map<Identifier, ListedAddress> listed() const
    {
        std::map<Identifier, ListedAddress> found;
        for (const auto &link : router->json("ip -j -6 addr")) {
            std::vector<Identifier> linkLocals; // newest first
            for (const auto &info : link.value("addr_info", nlohmann::json::array())) {
                if (!info.contains("local")) {
                    continue;
                }
                const std::string text = info["local"];
                ListedAddress row{link["ifindex"], info["prefixlen"], 1, 2, true};
                row.status = info.value("dadfailed", false)    ? 7
                             : info.value("tentative", false)  ? 6
                             : info.value("deprecated", false) ? 2
                                                               : 1;
                const bool made = isLinkLocal(text) && text != "fe80::1";
                row.origin = info.value("temporary", false)                      ? 6
                             : info.value("mngtmpaddr", false) || made           ? 5
                             : text == "::1"                                     ? 1
                             : info.value("dynamic", false) && row.length == 128 ? 4
                             : info.value("dynamic", false)                      ? 1
                                                                                 : 2;
                const Identifier index = indexOf(text, row.ifIndex);
                found[index] = row;
                if (isLinkLocal(text)) {
                    linkLocals.push_back(index);
                }
            }
            for (std::size_t i = 0; i + 1 < linkLocals.size(); ++i) {
                found[linkLocals[i]].mainOne = false;
            }
        }
        return found;
    }

    std::optional<Namespace> router;
    std::optional<Namespace> upstream;
    std::optional<Namespace> second;
    std::optional<Radvd> firstRadvd;
    std::optional<Radvd> secondRadvd;
    std::optional<LiveAgent> agent;
};

TEST_F(AddressesOfARouter, everyRowIsWhatIpSays)
{
    std::map<Identifier, ListedAddress> expected;
    Table table;
    Table prefixes;
    do { // again when the kernel has come to the end of trying an address in between
        expected = listed();
        table = agent->walk(addressEntry, addressColumns);
        prefixes = agent->walk(prefixEntry, prefixColumns);
    } while (expected != listed());
    ASSERT_EQ(table.size(), addressColumns.size());
    EXPECT_GT(table.at(3).size(), 2u * pairs * perInterface);

    std::size_t anycasts = 0;
    std::map<std::uint64_t, unsigned> statuses;
    for (const auto &[index, cell] : table.at(5)) {
        // Every pointer names a row, and ends with the length of the prefix.
        const Identifier column{1, 3, 6, 1, 2, 1, 4, 32, 1, 5};
        ASSERT_GT(cell.objectId.size(), column.size());
        ASSERT_TRUE(std::equal(column.begin(), column.end(), cell.objectId.begin()));
        const Identifier row(cell.objectId.begin() + static_cast<std::ptrdiff_t>(column.size()), cell.objectId.end());
        EXPECT_TRUE(prefixes.at(5).contains(row));
        EXPECT_EQ(table.at(10).at(index).number, 1u);
        EXPECT_EQ(table.at(11).at(index).number, 2u);
        EXPECT_GE(table.at(9).at(index).number, table.at(8).at(index).number);
        EXPECT_LE(table.at(9).at(index).number, (agent->platform()->now() + 1) * std::uint64_t{100});
        if (table.at(4).at(index).number == 2) {
            ++anycasts;
            continue;
        }
        const auto found = expected.find(index);
        ASSERT_NE(found, expected.end()) << testing::PrintToString(index);
        EXPECT_TRUE(found->second.mainOne);
        EXPECT_EQ(table.at(3).at(index).number, found->second.ifIndex);
        EXPECT_EQ(table.at(6).at(index).number, found->second.origin) << testing::PrintToString(index);
        EXPECT_EQ(table.at(7).at(index).number, found->second.status) << testing::PrintToString(index);
        EXPECT_EQ(row.back(), index[0] == 4 ? 10u : found->second.length);
        ++statuses[table.at(7).at(index).number];
    }
    for (const auto &[index, row] : expected) {
        EXPECT_EQ(table.at(3).contains(index), row.mainOne) << testing::PrintToString(index);
    }
    EXPECT_EQ(anycasts, 0u) << "the kernel joins those of all routers, and nobody has asked for them";
    EXPECT_EQ(statuses[7], 1u);
    EXPECT_GE(statuses[6], 1u);
    EXPECT_GE(statuses[2], 1u);
}

// Of a row's index: the interface, the type, the length, the octets and the prefix length.
TEST_F(AddressesOfARouter, prefixesAreThoseOfAddressesAndRoutesAndCountDown)
{
    const auto remaining = [&](const std::string &prefix) {
        return router->json("ip -j -6 route show " + prefix)[0].value("expires", std::uint64_t{forEver});
    };
    std::set<Identifier> expected;
    for (const auto &[index, row] : listed()) {
        char text[INET6_ADDRSTRLEN];
        std::uint8_t bytes[16];
        std::copy(index.begin() + 2, index.begin() + 18, bytes);
        expected.insert(prefixIndexOf(inet_ntop(AF_INET6, bytes, text, sizeof text), row.length, row.ifIndex));
    }
    const std::uint32_t wan = router->json("ip -j link show dev wan")[0]["ifindex"];
    expected.insert(prefixIndexOf("2001:db8:f2::", 64, wan)); // on the link, without an address

    for (int round = 0; round < 2; ++round) {
        const std::uint64_t formedBefore = remaining("2001:db8:f1::/64");
        const std::uint64_t onLinkBefore = remaining("2001:db8:f2::/64");
        const Table table = agent->walk(prefixEntry, prefixColumns);
        std::set<Identifier> walked;
        for (const auto &[index, cell] : table.at(5)) {
            walked.insert(index);
        }
        EXPECT_EQ(walked, expected);
        const Identifier formed = prefixIndexOf("2001:db8:f1::", 64, wan);
        const Identifier onLink = prefixIndexOf("2001:db8:f2::", 64, wan);
        const Identifier leased = prefixIndexOf("2001:db8:e::7", 128, wan);
        const Identifier manual = prefixIndexOf("2001:db8:e::", 64, wan);
        const Identifier linkLocal = prefixIndexOf("fe80::", 10, wan);
        const auto value = [&](SubId column, const Identifier &index) {
            return table.contains(column) && table.at(column).contains(index) ? table.at(column).at(index).number : 0;
        };
        EXPECT_EQ(value(5, formed), 5u);
        EXPECT_EQ(value(5, onLink), 5u);
        EXPECT_EQ(value(5, leased), 4u);
        EXPECT_EQ(value(5, manual), 2u);
        EXPECT_EQ(value(5, linkLocal), 3u);
        EXPECT_EQ(value(7, formed), 1u);
        EXPECT_EQ(value(7, onLink), 2u);
        EXPECT_EQ(value(6, onLink), 1u);
        if (round == 1) { // until then an advertisement may prolong them between one reading and the next
            const double late = agent->platform().longestPause(); // it counts from when its advertisement was read
            for (const auto &[index, before, prefix] : {std::tuple{formed, formedBefore, "2001:db8:f1::/64"},
                                                        std::tuple{onLink, onLinkBefore, "2001:db8:f2::/64"}}) {
                EXPECT_LE(static_cast<double>(value(9, index)), static_cast<double>(before) + 1 + late) << prefix;
                EXPECT_GE(value(9, index) + 1, remaining(prefix)) << prefix;
            }
        }
        EXPECT_EQ(value(9, onLink) - value(8, onLink), 50u);
        EXPECT_NEAR(static_cast<double>(value(9, leased) - value(8, leased)), 200, 1);
        EXPECT_EQ(value(9, manual), static_cast<std::uint64_t>(forEver));
        EXPECT_EQ(value(9, linkLocal), static_cast<std::uint64_t>(forEver));
        if (round == 0) {
            const std::uint64_t before = value(9, leased);
            Identifier valid = prefixEntry;
            valid.push_back(9);
            valid.insert(valid.end(), leased.begin(), leased.end());
            firstRadvd->vanish(); // nobody prolongs anything any more
            agent->platform().waitFor([] { return false; }, 2s);
            agent->platform()->beginPacket();
            EXPECT_LT(agent->get(valid).number, before);
        }
    }
}

TEST_F(AddressesOfARouter, defaultRoutersWithPreferenceAndLifetime)
{
    const auto index = [&](const std::string &device) {
        return router->json("ip -j link show dev " + device)[0]["ifindex"].get<std::uint32_t>();
    };
    const auto nameOf = [&](const std::string &address, const std::string &device) {
        Identifier name = indexOf(address, index(device));
        name.push_back(index(device));
        return name;
    };
    const auto gatewayOn = [&](const std::string &device) {
        for (const auto &route : router->json("ip -j -6 route show default")) {
            if (route.value("dev", "") == device) {
                return route;
            }
        }
        return nlohmann::json();
    };
    const auto expires = [](const nlohmann::json &route) { return route["expires"].get<std::uint64_t>(); };
    nlohmann::json low = gatewayOn("wan");
    nlohmann::json medium = gatewayOn("wan2");
    Table table;
    nlohmann::json lowBefore;
    nlohmann::json mediumBefore;
    do { // until nothing is advertised while the table is read
        lowBefore = std::exchange(low, {});
        mediumBefore = std::exchange(medium, {});
        table = agent->walk(routerEntry, routerColumns);
        low = gatewayOn("wan");
        medium = gatewayOn("wan2");
    } while (expires(low) > expires(lowBefore) || expires(medium) > expires(mediumBefore));
    struct Expected {
        Identifier name;
        std::uint64_t least;
        std::uint64_t most; // lifetime
        std::int32_t preference;
    };
    const Expected expected[] = {
        {nameOf("2001:db8:0:a0::99", "a0"), 65535, 65535, 0},
        {nameOf("fe80::abcd", "a0"), 65535, 65535, 1},
        {nameOf(low["gateway"], "wan"), expires(low) - 1, expires(lowBefore) + 1, -1},
        {nameOf(medium["gateway"], "wan2"), expires(medium) - 1, expires(mediumBefore) + 1, 0},
    };
    EXPECT_EQ(table.at(4).size(), std::size(expected));
    for (const Expected &row : expected) {
        ASSERT_TRUE(table.at(4).contains(row.name)) << testing::PrintToString(row.name);
        EXPECT_GE(table.at(4).at(row.name).number, row.least);
        EXPECT_LE(table.at(4).at(row.name).number, row.most);
        EXPECT_EQ(static_cast<std::int32_t>(table.at(5).at(row.name).number), row.preference);
    }
}

} // namespace
