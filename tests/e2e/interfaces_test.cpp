// SPDX-License-Identifier: BSD-3-Clause
// What stands beside our tables when nobody else serves it: the system group and the interface tables.

#include "e2e/agent_under_test.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <map>
#include <sstream>

namespace ipmib::e2e
{

namespace
{

constexpr const char *system = "1.3.6.1.2.1.1";
constexpr const char *interfaces = "1.3.6.1.2.1.2";
constexpr const char *ifMib = "1.3.6.1.2.1.31";
const std::string ifEntry = "1.3.6.1.2.1.2.2.1.";
const std::string ifXEntry = "1.3.6.1.2.1.31.1.1.1.";

class InterfacesTest : public AgentTest
{
  protected:
    // A column's values by ifIndex, as net-snmp's programs write them, without quotes. They write octets that all are
    // printable as text, which a random link-layer address now and then is, unless the output has an x.
    std::map<int, std::string> column(const std::string &identifier, const char *output = "-Oqe") const
    {
        std::map<int, std::string> values;
        for (const std::string &row : walk("snmpbulkwalk", publicV2, {output}, identifier)) {
            const std::size_t space = row.find(' ');
            std::string value = row.substr(space + 1);
            std::erase(value, '"');
            values[std::stoi(row.substr(row.rfind('.', space) + 1))] = value;
        }
        return values;
    }

    // A shell's words that wait until the kernel has decided which state a device is in.
    static std::string untilStateOf(const std::string &device, const std::string &state)
    {
        return "for i in $(seq 600); do ip link show dev " + device + " | grep -q 'state " + state +
               " ' && break; sleep 0.1; done";
    }

    std::uint64_t number(const std::string &instance) const
    {
        const Result result = snmp("snmpget", publicV2, {"-Oqvt", instance});
        EXPECT_EQ(result.status, 0) << instance << ": " << result.errors;
        return std::stoull(result.output);
    }
};

TEST_F(InterfacesTest, TheSystemGroupIsThatOfTheConfiguration)
{
    startAgent(everybody + "syscontact me@example.net\nsyslocation the attic\nsysname gate\nsysservices 76\n");
    const auto holds = [this](const std::string &row) {
        const Words rows = walk("snmpwalk", publicV2, {}, system);
        return std::ranges::find(rows, row) != rows.end();
    };
    for (const char *row : {
             ".1.3.6.1.2.1.1.2.0 = OID: .1.3.6.1.4.1.8072.3.2.10",
             ".1.3.6.1.2.1.1.4.0 = STRING: \"me@example.net\"",
             ".1.3.6.1.2.1.1.5.0 = STRING: \"gate\"",
             ".1.3.6.1.2.1.1.6.0 = STRING: \"the attic\"",
             ".1.3.6.1.2.1.1.7.0 = INTEGER: 76",
             ".1.3.6.1.2.1.1.9.1.2.1 = OID: .1.3.6.1.2.1.31",
         }) {
        EXPECT_TRUE(holds(row)) << row;
    }
    EXPECT_NE(snmp("snmpset", writerV2, {"1.3.6.1.2.1.1.4.0", "s", "you"}).status, 0);

    writeFile("test.conf", everybody + "syscontact you@example.net\n");
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    EXPECT_TRUE(holds(".1.3.6.1.2.1.1.4.0 = STRING: \"you@example.net\""));
    stopAgent();
}

// Of the second interface; the first row of the table shows that each column stands by itself.
TEST_F(InterfacesTest, EveryColumnHasItsTypeAndItsPlace)
{
    startAgent();
    const auto ofTheSecond = [this](const char *root) {
        Words rows = walk("snmpwalk", publicV2, {}, root);
        std::erase_if(rows, [](const std::string &row) { return row.find(".2 = ") == std::string::npos; });
        return rows;
    };
    EXPECT_EQ(ofTheSecond(interfaces), (Words{
                                           ".1.3.6.1.2.1.2.2.1.1.2 = INTEGER: 2",
                                           ".1.3.6.1.2.1.2.2.1.2.2 = STRING: \"eth0\"",
                                           ".1.3.6.1.2.1.2.2.1.3.2 = INTEGER: 6",
                                           ".1.3.6.1.2.1.2.2.1.4.2 = INTEGER: 1500",
                                           ".1.3.6.1.2.1.2.2.1.5.2 = Gauge32: 4294967295",
                                           ".1.3.6.1.2.1.2.2.1.6.2 = Hex-STRING: 02 00 00 00 00 02 ",
                                           ".1.3.6.1.2.1.2.2.1.7.2 = INTEGER: 1",
                                           ".1.3.6.1.2.1.2.2.1.8.2 = INTEGER: 1",
                                           ".1.3.6.1.2.1.2.2.1.9.2 = Timeticks: (0) 0:00:00.00",
                                           ".1.3.6.1.2.1.2.2.1.10.2 = Counter32: 201",
                                           ".1.3.6.1.2.1.2.2.1.11.2 = Counter32: 202",
                                           ".1.3.6.1.2.1.2.2.1.12.2 = Counter32: 407",
                                           ".1.3.6.1.2.1.2.2.1.13.2 = Counter32: 205",
                                           ".1.3.6.1.2.1.2.2.1.14.2 = Counter32: 206",
                                           ".1.3.6.1.2.1.2.2.1.15.2 = Counter32: 213",
                                           ".1.3.6.1.2.1.2.2.1.16.2 = Counter32: 207",
                                           ".1.3.6.1.2.1.2.2.1.17.2 = Counter32: 208",
                                           ".1.3.6.1.2.1.2.2.1.18.2 = Counter32: 419",
                                           ".1.3.6.1.2.1.2.2.1.19.2 = Counter32: 211",
                                           ".1.3.6.1.2.1.2.2.1.20.2 = Counter32: 212",
                                           ".1.3.6.1.2.1.2.2.1.21.2 = Gauge32: 0",
                                           ".1.3.6.1.2.1.2.2.1.22.2 = OID: .0.0",
                                       }));
    EXPECT_EQ(ofTheSecond(ifMib), (Words{
                                      ".1.3.6.1.2.1.31.1.1.1.1.2 = STRING: \"eth0\"",
                                      ".1.3.6.1.2.1.31.1.1.1.2.2 = Counter32: 203",
                                      ".1.3.6.1.2.1.31.1.1.1.3.2 = Counter32: 204",
                                      ".1.3.6.1.2.1.31.1.1.1.4.2 = Counter32: 209",
                                      ".1.3.6.1.2.1.31.1.1.1.5.2 = Counter32: 210",
                                      ".1.3.6.1.2.1.31.1.1.1.6.2 = Counter64: 4294967497",
                                      ".1.3.6.1.2.1.31.1.1.1.7.2 = Counter64: 4294967498",
                                      ".1.3.6.1.2.1.31.1.1.1.8.2 = Counter64: 4294967499",
                                      ".1.3.6.1.2.1.31.1.1.1.9.2 = Counter64: 4294967500",
                                      ".1.3.6.1.2.1.31.1.1.1.10.2 = Counter64: 4294967503",
                                      ".1.3.6.1.2.1.31.1.1.1.11.2 = Counter64: 4294967504",
                                      ".1.3.6.1.2.1.31.1.1.1.12.2 = Counter64: 4294967505",
                                      ".1.3.6.1.2.1.31.1.1.1.13.2 = Counter64: 4294967506",
                                      ".1.3.6.1.2.1.31.1.1.1.14.2 = INTEGER: 2",
                                      ".1.3.6.1.2.1.31.1.1.1.15.2 = Gauge32: 25000",
                                      ".1.3.6.1.2.1.31.1.1.1.16.2 = INTEGER: 2",
                                      ".1.3.6.1.2.1.31.1.1.1.17.2 = INTEGER: 1",
                                      ".1.3.6.1.2.1.31.1.1.1.18.2 = STRING: \"uplink\"",
                                      ".1.3.6.1.2.1.31.1.1.1.19.2 = Timeticks: (0) 0:00:00.00",
                                  }));
    EXPECT_EQ(column(ifEntry + "8"), (std::map<int, std::string>{{1, "1"}, {2, "1"}, {3, "7"}}));
    EXPECT_EQ(number(std::string(interfaces) + ".1.0"), 3u);
    stopAgent();
}

TEST_F(InterfacesTest, WhatIsAskedBetweenAndBeyondTheRowsIsAnsweredAsWell)
{
    startAgent();
    const auto next = [this](const std::string &asked) {
        const std::string row = snmp("snmpgetnext", publicV2, {asked}).output;
        return row.substr(0, row.find(' '));
    };
    EXPECT_EQ(next(ifEntry + "2"), "." + ifEntry + "2.1");
    EXPECT_EQ(next(ifEntry + "2.0"), "." + ifEntry + "2.1");
    EXPECT_EQ(next(ifEntry + "2.1.7"), "." + ifEntry + "2.2");
    EXPECT_EQ(next(ifEntry + "2.3"), "." + ifEntry + "3.1");
    EXPECT_EQ(next(ifEntry + "2.4294967295"), "." + ifEntry + "3.1");
    EXPECT_EQ(next("1.3.6.1.2.1.2.2"), "." + ifEntry + "1.1");
    EXPECT_TRUE(next(ifEntry + "22.3").starts_with(".1.3.6.1.2.1.4."));
    EXPECT_TRUE(next(ifEntry + "4294967295").starts_with(".1.3.6.1.2.1.4."));
    EXPECT_EQ(next(ifXEntry + "19.3"), ".1.3.6.1.2.1.31.1.5.0");

    const Words answers =
        linesOf(snmp("snmpget", publicV2,
                     {ifEntry + "2.4", ifEntry + "2.1.1", ifEntry + "2", ifEntry + "23.1", ifEntry + "0.1"})
                    .output);
    ASSERT_EQ(answers.size(), 5u);
    for (std::size_t i = 0; i < answers.size(); ++i) {
        EXPECT_NE(answers[i].find(i < 3 ? "No Such Instance" : "No Such Object"), std::string::npos) << answers[i];
    }
    stopAgent();
}

// It is in the list of interfaces, and gone by the time that its counters are read.
TEST_F(InterfacesTest, AnInterfaceThatVanishesCostsTheWalkItsOwnRowAlone)
{
    startAgent(everybody, {"--vanished-interface=2"});
    EXPECT_EQ(column(ifEntry + "10"), (std::map<int, std::string>{{1, "101"}, {3, "301"}}));
    EXPECT_EQ(column(ifEntry + "1"), (std::map<int, std::string>{{1, "1"}, {2, "2"}, {3, "3"}}));
    stopAgent();
    for (const int edge : {1, 3}) {
        startAgent(everybody, {"--vanished-interface=" + std::to_string(edge)});
        EXPECT_EQ(walk("snmpwalk", publicV2, {}, interfaces).size(), 1u + 3 * 11 + 2 * 11);
        EXPECT_EQ(walk("snmpbulkwalk", publicV2, {}, interfaces).size(), 1u + 3 * 11 + 2 * 11);
        const std::string read = snmp("snmpget", publicV2, {ifEntry + "10." + std::to_string(edge)}).output;
        EXPECT_NE(read.find("No Such Instance"), std::string::npos) << read;
        stopAgent();
    }
}

TEST_F(InterfacesTest, APacketOverAllTablesBeginsOnce)
{
    const std::string line = "scripted platform: a packet begins";
    startAgent(everybody, {"--log-packets"});
    snmp("snmpget", publicV2, {ifEntry + "10.1", ifXEntry + "6.2", "1.3.6.1.2.1.2.1.0", "1.3.6.1.2.1.4.26.0"});
    EXPECT_EQ(timesLogged(line), 1u);
    snmp("snmpbulkget", publicV2, {"-Cr50", interfaces, ifMib, "1.3.6.1.2.1.4"});
    EXPECT_EQ(timesLogged(line), 2u);
    stopAgent();
}

TEST_F(InterfacesTest, RowsAreWhatIpSaysOfLinks)
{
    IPMIB_NEEDS_NAMESPACES();
    network()->run("ip link add v0 address 5a:5e:33:29:3d:70 type veth peer name v1; ip link add br0 type bridge;"
                   "ip link set v0 mtu 1400 up; ip link set v0 alias 'to the core'; ip link set v1 up; ip link add v2 "
                   "type veth peer name v3;"
                   "ip link set v2 up; ip addr add fe80::1/64 dev v0 nodad; " +
                   untilStateOf("v2", "LOWERLAYERDOWN"));
    network()->waitForLinkLocals({"v0", "v1"});
    startAgent(everybody, {"--platform", "linux"});
    network()->run("ping -q -c 3 -i 0.2 -I v0 ff02::1 >/dev/null || true");

    const auto before = network()->json("ip -j -s link");
    std::map<int, std::map<int, std::string>> table;
    std::map<int, std::map<int, std::string>> xTable;
    for (const int number : {2, 3, 4, 6, 7, 8, 10, 11, 12, 13, 14, 16, 17, 19, 20}) {
        table[number] = column(ifEntry + std::to_string(number), number == 6 ? "-Oqex" : "-Oqe");
    }
    for (const int number : {1, 6, 7, 8, 10, 11, 15, 18}) {
        xTable[number] = column(ifXEntry + std::to_string(number));
    }
    const auto after = network()->json("ip -j -s link");

    ASSERT_EQ(table[2].size(), before.size());
    EXPECT_EQ(number(std::string(interfaces) + ".1.0"), before.size());
    bool carried = false;
    for (std::size_t i = 0; i < before.size(); ++i) {
        const auto &link = before[i];
        const int index = link["ifindex"];
        const std::string name = link["ifname"];
        SCOPED_TRACE(name);
        EXPECT_EQ(table[2][index], name);
        EXPECT_EQ(xTable[1][index], name);
        EXPECT_EQ(table[3][index], name == "lo" ? "24" : name == "br0" ? "209" : "6");
        EXPECT_EQ(table[4][index], std::to_string(link["mtu"].get<int>()));
        std::string address = name == "lo" ? "" : link["address"].get<std::string>() + " ";
        std::ranges::replace(address, ':', ' ');
        std::ranges::transform(address, address.begin(), [](unsigned char c) { return std::toupper(c); });
        EXPECT_EQ(table[6][index], address);
        EXPECT_EQ(table[7][index], name == "br0" || name == "v3" ? "2" : "1");
        EXPECT_EQ(table[8][index], name == "br0" || name == "v3" ? "2" : name == "v2" ? "7" : "1");
        EXPECT_EQ(xTable[18][index], link.value("ifalias", ""));

        const auto between = [&](const std::map<int, std::string> &values, const char *way, auto count) {
            const std::uint64_t value = std::stoull(values.at(index));
            EXPECT_LE(count(link["stats64"][way]), value) << way;
            EXPECT_GE(count(after[i]["stats64"][way]), value) << way;
            carried = carried || (name == "v1" && value > 0);
        };
        const auto field = [](const char *key) {
            return [key](const nlohmann::json &way) { return way[key].template get<std::uint64_t>(); };
        };
        for (const auto *values : {&table[10], &xTable[6]}) {
            between(*values, "rx", field("bytes"));
        }
        for (const auto *values : {&table[16], &xTable[10]}) {
            between(*values, "tx", field("bytes"));
        }
        for (const auto *values : {&table[17], &xTable[11]}) {
            between(*values, "tx", field("packets"));
        }
        for (const auto *values : {&table[12], &xTable[8]}) {
            between(*values, "rx", field("multicast"));
        }
        for (const auto *values : {&table[11], &xTable[7]}) {
            between(*values, "rx", [](const nlohmann::json &way) {
                return way["packets"].get<std::uint64_t>() - way["multicast"].get<std::uint64_t>();
            });
        }
        between(table[13], "rx", field("dropped"));
        between(table[14], "rx", field("errors"));
        between(table[19], "tx", field("dropped"));
        between(table[20], "tx", field("errors"));
    }
    EXPECT_TRUE(carried) << "v1 has received nothing, so counters were compared with counters that stand";
    stopAgent();
}

TEST_F(InterfacesTest, ChangesAreSeenAndDated)
{
    IPMIB_NEEDS_NAMESPACES();
    network()->run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    network()->waitForLinkLocals({"v0", "v1"});
    startAgent(everybody, {"--platform", "linux"});
    const int v0 = network()->json("ip -j link show dev v0")[0]["ifindex"];
    const std::string status = ifEntry + "8." + std::to_string(v0);
    const std::string changed = ifEntry + "9." + std::to_string(v0);
    const std::string uptime = "1.3.6.1.2.1.1.3.0";
    const std::string rowsChanged = "1.3.6.1.2.1.31.1.5.0";
    EXPECT_EQ(number(changed), 0u) << "before the start";
    EXPECT_EQ(number(rowsChanged), 0u) << "before the start";

    const std::uint64_t before = number(uptime);
    network()->run("ip link set v0 down");
    EXPECT_EQ(number(status), 2u);
    const std::uint64_t moment = number(changed);
    EXPECT_GE(moment + 1, before) << "both are cut to hundredths of a second, each by itself";
    EXPECT_LE(moment, number(uptime));
    EXPECT_EQ(number(changed), moment) << "nothing has happened since";
    EXPECT_EQ(number(rowsChanged), 0u);

    network()->run("ip link set v0 up; " + untilStateOf("v0", "UP"));
    EXPECT_EQ(number(status), 1u);
    const std::uint64_t again = number(changed);
    EXPECT_GE(again, moment);
    network()->run("ip link add late type bridge; ip link set v0 alias new");
    EXPECT_GE(number(rowsChanged), moment);
    EXPECT_EQ(number(changed), again) << "a new alias is no new state";
    const int late = network()->json("ip -j link show dev late")[0]["ifindex"];
    EXPECT_EQ(column(ifXEntry + "1").at(late), "late");
    EXPECT_EQ(column(ifXEntry + "18").at(v0), "new");
    network()->run("ip link del late");
    EXPECT_FALSE(column(ifXEntry + "1").contains(late));
    stopAgent();
}

// Collectors drop every row whose ifIndex has no interface.
TEST_F(InterfacesTest, ASimulatedDeviceHasItsOwnInterfaces)
{
    const std::string file = writeFile("device.json", R"({"interfaces": [
        {"name": "wan", "ifIndex": 7, "alias": "to the provider", "speed": 2500, "mtu": 1492, "mac": "02:00:5e:00:53:01",
         "counters": {"ipv6": {"inOctets": 5000000000, "inReceives": 30, "inMcastPkts": 4},
                      "ipv4": {"inOctets": 11, "inReceives": 5}}},
        {"name": "off", "ifIndex": 9, "up": false},
        {"name": "flap", "ifIndex": 11, "down": [{"from": 10, "to": 20}]},
        {"name": "later", "ifIndex": 12, "gone": [{"from": 0, "to": 100}]}]})");
    startAgent(everybody, {"--platform", "simulated:" + file, "--at=15"});
    using Column = std::map<int, std::string>;
    EXPECT_EQ(column(ifEntry + "2"), (Column{{7, "wan"}, {9, "off"}, {11, "flap"}}));
    EXPECT_EQ(column(ifEntry + "4").at(7), "1492");
    EXPECT_EQ(column(ifEntry + "6").at(7), "02 00 5E 00 53 01 ");
    EXPECT_EQ(column(ifEntry + "7"), (Column{{7, "1"}, {9, "2"}, {11, "1"}}));
    EXPECT_EQ(column(ifEntry + "8"), (Column{{7, "1"}, {9, "2"}, {11, "2"}}));
    EXPECT_EQ(column(ifXEntry + "6").at(7), "5000000011");
    EXPECT_EQ(column(ifXEntry + "7").at(7), "31");
    EXPECT_EQ(column(ifXEntry + "8").at(7), "4");
    EXPECT_EQ(column(ifXEntry + "15"), (Column{{7, "2500"}, {9, "1000"}, {11, "1000"}}));
    EXPECT_EQ(column(ifXEntry + "18").at(7), "to the provider");
    EXPECT_EQ(number(std::string(interfaces) + ".1.0"), 3u);
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
