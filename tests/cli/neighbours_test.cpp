// SPDX-License-Identifier: BSD-3-Clause
// `ipmibctl show neighbours` says what `ip -6 neigh` says, field by field.
#include "netns/namespace.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <vector>

namespace
{

using ipmib::netns::Namespace;
using nlohmann::json;
using namespace std::chrono_literals;

const std::string program = IPMIB_CTL;

class NeighboursOfAMachine : public testing::Test
{
  protected:
    // One neighbour in each of the kernel's states, on two interfaces, and one that is no neighbour at all.
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        space.emplace();
        other.emplace();
        Namespace::connect(*space, "eth0", *other, "peer0");
        Namespace::connect(*space, "wlan1", *other, "peer1");
        space->run("ip -6 address add 2001:db8::1/64 dev eth0 nodad;"
                   "ip -6 address add 2001:db8:1::1/64 dev wlan1 nodad");
        for (const char *name : {"eth0", "wlan1"}) { // they stay in their states while they are looked at
            space->sysctl(std::string("net/ipv6/neigh/") + name + "/base_reachable_time_ms", "3600000");
            space->sysctl(std::string("net/ipv6/neigh/") + name + "/mcast_solicit", "1000");
        }
        space->run("ip -batch - <<'END'\n"
                   "neigh add fe80::53 dev eth0 lladdr 02:00:5e:00:53:01 nud permanent\n"
                   "neigh add fe80::53 dev wlan1 lladdr 02:00:5e:00:53:02 nud permanent\n"
                   "neigh add 2001:db8::20 dev eth0 lladdr 02:00:5e:00:53:20 nud reachable\n"
                   "neigh add 2001:db8::21 dev eth0 lladdr 02:00:5e:00:53:21 nud stale\n"
                   "neigh add 2001:db8:1::22 dev wlan1 lladdr 02:00:5e:00:53:22 nud stale router\n"
                   "neigh add 2001:db8:1::23 dev wlan1 nud failed\n"
                   "neigh add proxy 2001:db8:1::24 dev wlan1\n"
                   "END");
        // Nobody has that address.
        space->run("ping -6 -c 1 -W 1 2001:db8::99 >/dev/null 2>&1 & for i in $(seq 600); do"
                   " ip -6 neigh show to 2001:db8::99 | grep -q INCOMPLETE && break; sleep 0.1; done");
    }

    // As programs are told: address, interface, link-layer address, state, type.
    using Row = std::map<std::string, json>;

    std::vector<Row> listed() const
    {
        static const std::map<std::string, std::string> states = {
            {"REACHABLE", "reachable"}, {"PERMANENT", "reachable"}, {"STALE", "stale"},          {"DELAY", "delay"},
            {"PROBE", "probe"},         {"FAILED", "invalid"},      {"INCOMPLETE", "incomplete"}};
        std::vector<Row> rows;
        for (const json &neighbour : space->json("ip -6 -j neigh")) {
            const std::string state = neighbour["state"][0];
            const std::string device = neighbour["dev"];
            std::string address = neighbour["dst"];
            if (address.starts_with("fe80:")) {
                address.append("%").append(device);
            }
            rows.push_back({{"address", address},
                            {"interface", device},
                            {"linkLayerAddress", neighbour.value("lladdr", json())},
                            {"state", states.at(state)},
                            {"type", state == "PERMANENT" ? "static" : "dynamic"}});
        }
        return sorted(rows);
    }

    std::vector<Row> shown() const
    {
        std::vector<Row> rows;
        for (const json &object : space->json(program + " show neighbours --json")) {
            Row row = object.get<Row>();
            EXPECT_TRUE(row.at("updatedAge").is_number_unsigned());
            EXPECT_EQ(row.erase("updated") + row.erase("updatedAge"), 2u);
            rows.push_back(row);
        }
        return sorted(rows);
    }

    static std::vector<Row> sorted(std::vector<Row> rows)
    {
        std::ranges::sort(rows, {}, [](const Row &row) { return json(row).dump(); });
        return rows;
    }

    std::optional<Namespace> space;
    std::optional<Namespace> other;
};

TEST_F(NeighboursOfAMachine, areThoseThatIpLists)
{
    const auto end = std::chrono::steady_clock::now() + 20s;
    std::vector<Row> before;
    std::vector<Row> actual;
    do { // states change by themselves: what counts is a look between two looks of ip that are equal
        before = listed();
        actual = shown();
    } while (before != listed() && std::chrono::steady_clock::now() < end);
    EXPECT_EQ(actual, before);
    EXPECT_EQ(before.size(), 7u);
    std::set<std::string> states;
    for (const Row &row : before) {
        states.insert(row.at("state").get<std::string>() + "/" + row.at("type").get<std::string>());
    }
    EXPECT_EQ(states, (std::set<std::string>{"incomplete/dynamic", "invalid/dynamic", "reachable/dynamic",
                                             "reachable/static", "stale/dynamic"}));
}

TEST_F(NeighboursOfAMachine, areWrittenInOneLineEach)
{
    std::istringstream text(space->run(program + " show neighbours eth0"));
    std::string line;
    std::getline(text, line);
    EXPECT_TRUE(line.starts_with("ADDRESS ")) << line;
    std::vector<std::string> lines;
    for (; std::getline(text, line); lines.push_back(line)) {
        EXPECT_TRUE(line.ends_with(" ago")) << line;
    }
    EXPECT_EQ(lines.size(), 4u);
    const std::vector<std::string> permanent = {"fe80::53%eth0", "eth0", "02:00:5e:00:53:01", "reachable", "static"};
    EXPECT_EQ(std::ranges::count_if(lines,
                                    [&](const std::string &each) {
                                        std::istringstream words(each);
                                        return std::ranges::all_of(permanent, [&](const std::string &expected) {
                                            std::string word;
                                            return words >> word && word == expected;
                                        });
                                    }),
              1);
}

} // namespace
