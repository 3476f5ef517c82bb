// SPDX-License-Identifier: BSD-3-Clause
// A walk of the table of neighbours equals `ip -6 neigh` row by row: index, link-layer address, type, state.
#include "host/plugin.h"
#include "netns/namespace.h"

#include <nlohmann/json.hpp>

#include <arpa/inet.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <map>

namespace
{

using namespace ipmib::host;
using ipmib::netns::Namespace;

const Oid entry{1, 3, 6, 1, 2, 1, 4, 35, 1};
constexpr SubId firstColumn = 4; // link-layer address, last updated, type, state, row status
constexpr std::size_t columnCount = 5;

struct Row {
    std::string linkLayer;
    std::uint64_t type = 0;
    std::uint64_t state = 0;
    bool operator==(const Row &) const = default;
};
void PrintTo(const Row &row, std::ostream *out)
{
    *out << row.linkLayer << " type " << row.type << " state " << row.state;
}
using Rows = std::map<std::vector<SubId>, Row>; // by index

std::string hex(std::span<const std::uint8_t> bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, text.empty() ? "%02x" : ":%02x", byte);
        text += digits;
    }
    return text;
}

// ifIndex, type and address with its length; a link-local address is of type 4 and ends with its interface as the zone.
std::vector<SubId> indexOf(SubId ifIndex, const std::string &address)
{
    std::array<std::uint8_t, 16> bytes{};
    EXPECT_EQ(inet_pton(AF_INET6, address.c_str(), bytes.data()), 1) << address;
    const bool linkLocal = bytes[0] == 0xfe && (bytes[1] & 0xc0) == 0x80;
    std::vector<SubId> index{ifIndex, linkLocal ? 4u : 2u, linkLocal ? 20u : 16u};
    index.insert(index.end(), bytes.begin(), bytes.end());
    if (linkLocal) {
        index.insert(index.end(), {ifIndex >> 24, ifIndex >> 16 & 0xff, ifIndex >> 8 & 0xff, ifIndex & 0xff});
    }
    return index;
}

Rows listed(const Namespace &space)
{
    static const std::map<std::string, std::uint64_t> states = {{"REACHABLE", 1}, {"PERMANENT", 1}, {"STALE", 2},
                                                                {"PROBE", 4},     {"FAILED", 5},    {"INCOMPLETE", 7}};
    std::map<std::string, SubId> interfaces;
    for (const auto &link : space.json("ip -j link")) {
        interfaces[link["ifname"]] = link["ifindex"];
    }
    Rows rows;
    for (const auto &neighbour : space.json("ip -6 -j neigh")) {
        const std::string state = neighbour["state"][0];
        rows[indexOf(interfaces[neighbour["dev"]], neighbour["dst"])] = {
            neighbour.value("lladdr", "00:00:00:00:00:00"), state == "PERMANENT" ? 4u : 3u, states.at(state)};
    }
    return rows;
}

// All columns side by side, a packet a row.
Rows walked(Plugin &plugin)
{
    Rows rows;
    std::array<Oid, columnCount> names;
    for (std::size_t i = 0; i < columnCount; ++i) {
        names[i] = entry;
        names[i].append(firstColumn + static_cast<SubId>(i));
    }
    for (;;) {
        std::array<Variable, columnCount> variables;
        for (std::size_t i = 0; i < columnCount; ++i) {
            variables[i].asked = names[i].view();
        }
        plugin.platform()->begin_packet();
        plugin.resolver().getNext(variables, entry.view());
        const OidView name = variables[0].name.view();
        if (variables[0].status != Status::ok || name[entry.size()] != firstColumn) {
            return rows;
        }
        const OidView index = name.subspan(entry.size() + 1);
        const auto [row, isNew] =
            rows.emplace(std::vector<SubId>(index.begin(), index.end()),
                         Row{hex(variables[0].value.octets), variables[2].value.number, variables[3].value.number});
        if (!isNew || variables[4].value.number != 1) {
            ADD_FAILURE() << "a row comes twice, or is not active";
            return rows;
        }
        for (std::size_t i = 0; i < columnCount; ++i) {
            names[i] = variables[i].name;
        }
    }
}

class NeighbourWalk : public testing::Test
{
  protected:
    void SetUp() override { IPMIB_NEEDS_NAMESPACES(); }

    static PluginOptions options()
    {
        PluginOptions options;
        options.platform = IPMIB_PLATFORM;
        options.module = IPMIB_MODULE;
        return options;
    }
};

TEST_F(NeighbourWalk, twentyThousandOnSixteenInterfaces)
{
    const Namespace space;
    const std::string path = testing::TempDir() + "walk" + std::to_string(getpid()) + ".batch";
    std::ofstream batch(path);
    for (int i = 0; i < 8; ++i) {
        batch << "link add left" << i << " type veth peer name right" << i << "\nlink set left" << i
              << " up\nlink set right" << i << " up\n";
    }
    for (int i = 0; i < 20'000; ++i) {
        batch << "neigh add " << (i % 5 == 0 ? "fe80::" : "2001:db8::") << std::hex << i + 1 << std::dec << " dev "
              << (i % 2 == 0 ? "left" : "right") << i / 2 % 8 << " lladdr 02:00:00:00:" << i / 100 % 100 / 10
              << i / 100 % 10 << ":" << i % 100 / 10 << i % 10 << " nud permanent\n";
    }
    batch.close();
    space.run("ip -batch " + path);
    std::remove(path.c_str());

    const ipmib::netns::Inside inside(space);
    Plugin plugin(options());
    const Rows rows = walked(plugin);
    EXPECT_EQ(rows.size(), 20'000u);
    EXPECT_TRUE(rows == listed(space));
}

TEST_F(NeighbourWalk, neighboursOfAllKinds)
{
    const Namespace space;
    space.run("ip link add eth0 type veth peer name peer0; ip link set eth0 up; ip link set peer0 up");
    space.sysctl("net/ipv6/neigh/eth0/base_reachable_time_ms", "3600000"); // they stay in their states
    space.sysctl("net/ipv6/neigh/eth0/mcast_solicit", "1000");
    for (const char *neighbour :
         {"2001:db8::1 lladdr 02:00:00:00:00:01 nud permanent", "2001:db8::2 lladdr 02:00:00:00:00:02 nud reachable",
          "2001:db8::3 lladdr 02:00:00:00:00:03 nud stale", "2001:db8::4 nud failed", "2001:db8::5 nud incomplete",
          "fe80::6 lladdr 02:00:00:00:00:06 nud permanent", "fec0::7 lladdr 02:00:00:00:00:07 nud permanent"}) {
        space.run(std::string("ip -6 neigh add dev eth0 ") + neighbour);
    }
    space.run("ip -6 neigh add fe80::6 dev peer0 lladdr 02:00:00:00:00:16 nud permanent");
    const ipmib::netns::Inside inside(space);
    Plugin plugin(options());
    const Rows rows = walked(plugin);
    EXPECT_EQ(rows.size(), 8u);
    EXPECT_EQ(rows, listed(space));
}

} // namespace
