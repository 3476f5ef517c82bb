// SPDX-License-Identifier: BSD-3-Clause
// `ipmibctl show addresses` and `show routers` say what `ip -6 address` and `ip -6 route` say.
#include "netns/namespace.h"

#include <nlohmann/json.hpp>

#include <map>
#include <set>
#include <string>

namespace
{

using ipmib::netns::Namespace;
using nlohmann::json;

const std::string program = IPMIB_CTL;

bool isLinkLocal(const std::string &address)
{
    return address.starts_with("fe80:");
}

std::string zoned(const std::string &address, const std::string &device)
{
    return isLinkLocal(address) ? address + "%" + device : address;
}

TEST(AddressesOfAMachine, areThoseThatIpLists)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    const Namespace other;
    Namespace::connect(space, "eth0", other, "peer0");
    Namespace::connect(space, "wlan1", other, "peer1");
    space.run("ip -batch - <<'END'\n"
              "addr add 2001:db8::1/64 dev eth0 nodad\n"
              "addr add 2001:db8::2/128 dev eth0 nodad preferred_lft 0\n"
              "addr add fd00::1/48 dev wlan1 nodad\n"
              "addr flush dev wlan1 scope link\n"
              "addr add fe80::7/70 dev wlan1 nodad\n"
              "END");
    std::map<std::string, std::set<std::string>> expected; // interface -> address with length and status
    for (const json &link : space.json("ip -j address")) {
        for (const json &info : link["addr_info"]) {
            const std::string address = info["local"];
            std::string shown =
                zoned(address, link["ifname"]) + "/" + std::to_string(info["prefixlen"].get<unsigned>());
            shown += info.value("deprecated", false) ? " deprecated" : " preferred";
            expected[link["ifname"]].insert(shown);
        }
    }
    std::map<std::string, std::set<std::string>> actual;
    for (const json &row : space.json(program + " show addresses --json")) {
        if (row["type"] == "unicast") {
            std::string shown = row["address"];
            shown.append(" ").append(row["status"]);
            actual[row["interface"]].insert(shown);
        }
    }
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(expected["eth0"].size(), 3u);
}

TEST(RoutersOfAMachine, areTheGatewaysOfItsDefaultRoutes)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    const Namespace other;
    Namespace::connect(space, "eth0", other, "peer0");
    space.run("ip -6 -batch - <<'END'\n"
              "addr add 2001:db8::1/64 dev eth0 nodad\n"
              "route add default via fe80::53 dev eth0 metric 10 pref high\n"
              "route add default via 2001:db8::99 dev eth0 metric 20\n"
              "END");
    std::set<std::string> expected;
    for (const json &route : space.json("ip -6 -j route show default")) {
        std::string shown = zoned(route["gateway"], route["dev"]);
        shown.append(" ").append(route["dev"]).append(" ").append(route["pref"]);
        expected.insert(shown);
    }
    std::set<std::string> actual;
    for (const json &row : space.json(program + " show routers --json")) {
        std::string shown = row["address"];
        shown.append(" ").append(row["interface"]).append(" ").append(row["preference"]);
        actual.insert(shown);
    }
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(actual.size(), 2u);
}

} // namespace
