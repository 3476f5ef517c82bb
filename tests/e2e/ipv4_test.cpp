// SPDX-License-Identifier: BSD-3-Clause
// The older IPv4 tables, which stand beside ours when nobody else serves them.

#include "e2e/agent_under_test.h"
#include "e2e/rows.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>

namespace ipmib::e2e
{

namespace
{

const std::string ipAddrEntry = "1.3.6.1.2.1.4.20.1.";
const std::string ipNetToMediaEntry = "1.3.6.1.2.1.4.22.1.";

class Ipv4Test : public AgentTest
{
  protected:
    using Column = std::map<std::string, std::string>;

    // A column's values by index, as net-snmp's programs write them, without quotes.
    Column column(const std::string &entry, int number) const
    {
        const std::string root = entry + std::to_string(number);
        Column values;
        for (const std::string &row : walk("snmpbulkwalk", publicV2, {"-Oqe"}, root)) {
            const std::size_t space = row.find(' ');
            if (space == std::string::npos || row.find(" No Such ") != std::string::npos) {
                continue;
            }
            std::string value = row.substr(space + 1);
            std::erase(value, '"');
            values[row.substr(root.size() + 2, space - root.size() - 2)] = value;
        }
        return values;
    }

    std::string next(const std::string &asked) const
    {
        const std::string row = snmp("snmpgetnext", publicV2, {asked}).output;
        return row.substr(0, row.find(' '));
    }

    void expectAddresses() const;
    void expectNeighbours() const;
};

TEST_F(Ipv4Test, EveryColumnHasItsTypeAndItsPlace)
{
    startAgent();
    EXPECT_EQ(walk("snmpwalk", publicV2, {}, "1.3.6.1.2.1.4.20"),
              (Words{
                  ".1.3.6.1.2.1.4.20.1.1.127.0.0.1 = IpAddress: 127.0.0.1",
                  ".1.3.6.1.2.1.4.20.1.1.192.0.2.1 = IpAddress: 192.0.2.1",
                  ".1.3.6.1.2.1.4.20.1.1.223.255.255.255 = IpAddress: 223.255.255.255",
                  ".1.3.6.1.2.1.4.20.1.2.127.0.0.1 = INTEGER: 1",
                  ".1.3.6.1.2.1.4.20.1.2.192.0.2.1 = INTEGER: 2",
                  ".1.3.6.1.2.1.4.20.1.2.223.255.255.255 = INTEGER: 3",
                  ".1.3.6.1.2.1.4.20.1.3.127.0.0.1 = IpAddress: 255.0.0.0",
                  ".1.3.6.1.2.1.4.20.1.3.192.0.2.1 = IpAddress: 255.255.255.0",
                  ".1.3.6.1.2.1.4.20.1.3.223.255.255.255 = IpAddress: 0.0.0.0",
                  ".1.3.6.1.2.1.4.20.1.4.127.0.0.1 = INTEGER: 1",
                  ".1.3.6.1.2.1.4.20.1.4.192.0.2.1 = INTEGER: 0",
                  ".1.3.6.1.2.1.4.20.1.4.223.255.255.255 = INTEGER: 1",
                  ".1.3.6.1.2.1.4.20.1.5.127.0.0.1 = INTEGER: 65535",
                  ".1.3.6.1.2.1.4.20.1.5.192.0.2.1 = INTEGER: 576",
                  ".1.3.6.1.2.1.4.20.1.5.223.255.255.255 = INTEGER: 65535",
              }));
    Words neighbour = walk("snmpwalk", publicV2, {}, "1.3.6.1.2.1.4.22");
    EXPECT_EQ(neighbour.size(), 16u);
    std::erase_if(neighbour, [](const std::string &row) { return row.find(".2.192.0.2.9 = ") == std::string::npos; });
    EXPECT_EQ(neighbour, (Words{
                             ".1.3.6.1.2.1.4.22.1.1.2.192.0.2.9 = INTEGER: 2",
                             ".1.3.6.1.2.1.4.22.1.2.2.192.0.2.9 = Hex-STRING: 02 00 00 00 00 09 ",
                             ".1.3.6.1.2.1.4.22.1.3.2.192.0.2.9 = IpAddress: 192.0.2.9",
                             ".1.3.6.1.2.1.4.22.1.4.2.192.0.2.9 = INTEGER: 3",
                         }));
    EXPECT_EQ(column(ipNetToMediaEntry, 2).at("2.0.0.0.1"), "") << "no link-layer address";
    EXPECT_EQ(
        column(ipNetToMediaEntry, 4),
        (Column{{"2.0.0.0.1", "1"}, {"2.192.0.2.9", "3"}, {"2.255.255.255.255", "4"}, {"2147483647.192.0.2.9", "2"}}));
    stopAgent();
}

TEST_F(Ipv4Test, WhatIsAskedBetweenAndBeyondTheRowsIsAnsweredAsWell)
{
    startAgent();
    const std::string ifIndex = ipAddrEntry + "2";
    const std::string middle = "." + ifIndex + ".192.0.2.1";
    EXPECT_EQ(next("1.3.6.1.2.1.4.20"), "." + ipAddrEntry + "1.127.0.0.1");
    EXPECT_EQ(next(ipAddrEntry + "0"), "." + ipAddrEntry + "1.127.0.0.1");
    EXPECT_EQ(next(ifIndex), "." + ifIndex + ".127.0.0.1");
    EXPECT_EQ(next(ifIndex + ".127.0.0"), "." + ifIndex + ".127.0.0.1");
    for (const char *behind : {".127.0.0.1", ".127.0.0.1.0", ".127.0.0.256", ".127.4294967295", ".192", ".192.0.2",
                               ".192.0.2.0.4294967295", ".191.999"}) {
        EXPECT_EQ(next(ifIndex + behind), middle) << behind;
    }
    EXPECT_EQ(next(ifIndex + ".192.0.2.1.0"), "." + ifIndex + ".223.255.255.255");
    for (const char *beyond : {".223.255.255.255", ".256", ".4294967295.1.1.1", ".223.255.255.255.1"}) {
        EXPECT_EQ(next(ifIndex + beyond), "." + ipAddrEntry + "3.127.0.0.1") << beyond;
    }
    EXPECT_EQ(next(ipAddrEntry + "5.256"), ".1.3.6.1.2.1.4.21.1.1.10.0.0.0") << "routes are next";

    const std::string type = ipNetToMediaEntry + "4";
    EXPECT_EQ(next(type), "." + type + ".2.0.0.0.1");
    EXPECT_EQ(next(type + ".2"), "." + type + ".2.0.0.0.1");
    EXPECT_EQ(next(type + ".2.0.0.0.0"), "." + type + ".2.0.0.0.1");
    EXPECT_EQ(next(type + ".2.0.0.0.1.5"), "." + type + ".2.192.0.2.9");
    EXPECT_EQ(next(type + ".2.192.0.300.1"), "." + type + ".2.255.255.255.255");
    for (const char *behind :
         {".2.255.255.255.255", ".2.300", ".3", ".2147483646.255.255.255.255", ".2147483647.192"}) {
        EXPECT_EQ(next(type + behind), "." + type + ".2147483647.192.0.2.9") << behind;
    }
    for (const char *beyond : {".2147483647.192.0.2.9", ".4294967295", ".2147483647.300.1.1.1.1.1"}) {
        EXPECT_EQ(next(type + beyond), ".1.3.6.1.2.1.4.24.3.0") << beyond;
    }

    const Words answers = linesOf(snmp("snmpget", publicV2,
                                       {ifIndex + ".127.0.0.2", ifIndex + ".127.0.0", ifIndex + ".127.0.0.1.0",
                                        ifIndex + ".127.0.0.257", ifIndex, type + ".3.192.0.2.9", type + ".192.0.2.9",
                                        ipAddrEntry + "6.127.0.0.1", ipNetToMediaEntry + "0.2.192.0.2.9"})
                                      .output);
    ASSERT_EQ(answers.size(), 9u);
    for (std::size_t i = 0; i < answers.size(); ++i) {
        EXPECT_NE(answers[i].find(i < 7 ? "No Such Instance" : "No Such Object"), std::string::npos) << answers[i];
    }
    stopAgent();
}

std::string dotted(std::uint32_t address)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += (text.empty() ? "" : ".") + std::to_string(address >> shift & 0xFF);
    }
    return text;
}

// One row for an address: that of the lowest ifIndex, and there of the shortest prefix.
void Ipv4Test::expectAddresses() const
{
    std::map<std::string, std::pair<int, nlohmann::json>> expected;
    for (const auto &link : network()->json("ip -j -4 addr")) {
        for (const auto &info : link.value("addr_info", nlohmann::json::array())) {
            const int index = link["ifindex"];
            auto &one = expected.try_emplace(info["local"], index, info).first->second;
            if (std::pair(index, info["prefixlen"].get<int>()) <
                std::pair(one.first, one.second["prefixlen"].get<int>())) {
                one = {index, info};
            }
        }
    }
    Column ifIndexes;
    Column masks;
    Column broadcasts;
    for (const auto &[address, row] : expected) {
        const int length = row.second["prefixlen"];
        ifIndexes[address] = std::to_string(row.first);
        masks[address] = dotted(length == 0 ? 0 : UINT32_MAX << (32 - length));
        const std::string broadcast = row.second.value("broadcast", "255.255.255.255");
        broadcasts[address] = std::to_string(std::stoi(broadcast.substr(broadcast.rfind('.') + 1)) % 2);
    }
    EXPECT_EQ(column(ipAddrEntry, 2), ifIndexes);
    EXPECT_EQ(column(ipAddrEntry, 3), masks);
    EXPECT_EQ(column(ipAddrEntry, 4), broadcasts);
    for (const auto &[index, address] : column(ipAddrEntry, 1)) {
        EXPECT_EQ(index, address);
    }
}

TEST_F(Ipv4Test, AddressesAreWhatIpSaysOfThemAndFollowIt)
{
    IPMIB_NEEDS_NAMESPACES();
    network()->run(
        "ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up;"
        "ip addr add 10.0.0.1/24 brd + dev v0; ip addr add 10.0.0.2/24 dev v0; ip addr add 10.0.0.1/16 dev v0;"
        "ip addr add 10.0.0.1/30 dev v1; ip addr add 10.2.0.1/23 broadcast 10.2.0.0 dev v1;"
        "ip addr add 10.3.0.1 peer 10.3.0.2/32 dev v0; ip addr add 10.3.0.1 peer 10.3.0.3/32 dev v0");
    startAgent(everybody, {"--platform", "linux"});
    expectAddresses();
    EXPECT_EQ(column(ipAddrEntry, 1).size(), 5u);
    EXPECT_EQ(column(ipAddrEntry, 4).at("10.2.0.1"), "0");

    network()->run("ip addr del 10.3.0.1 peer 10.3.0.2/32 dev v0; ip addr add 192.0.2.200/29 dev v1");
    expectAddresses();
    EXPECT_TRUE(column(ipAddrEntry, 1).contains("10.3.0.1")) << "it has another peer still";
    EXPECT_TRUE(column(ipAddrEntry, 1).contains("192.0.2.200"));
    network()->run("ip addr del 10.3.0.1 peer 10.3.0.3/32 dev v0; ip addr del 10.0.0.1/24 dev v0;"
                   "ip addr del 10.0.0.1/16 dev v0");
    expectAddresses();
    EXPECT_FALSE(column(ipAddrEntry, 1).contains("10.3.0.1"));
    EXPECT_TRUE(column(ipAddrEntry, 1).contains("10.0.0.1")) << "of the other interface";
    network()->run("ip link del v0");
    expectAddresses();
    EXPECT_EQ(column(ipAddrEntry, 1), (Column{{"127.0.0.1", "127.0.0.1"}}));
    stopAgent();
}

void Ipv4Test::expectNeighbours() const
{
    Column types;
    Column linkLayers;
    for (const auto &row : network()->json("ip -j -4 neigh")) {
        const std::string device = row["dev"];
        const int index = network()->json("ip -j link show dev " + device)[0]["ifindex"];
        const std::string key = std::to_string(index) + "." + row["dst"].get<std::string>();
        const std::string state = row["state"][0];
        types[key] = state == "PERMANENT" ? "4" : state == "FAILED" || state == "INCOMPLETE" ? "2" : "3";
        std::string address = row.value("lladdr", "");
        std::ranges::replace(address, ':', ' ');
        std::ranges::transform(address, address.begin(), [](unsigned char c) { return std::toupper(c); });
        linkLayers[key] = address.empty() ? "" : address + " ";
    }
    EXPECT_EQ(column(ipNetToMediaEntry, 4), types);
    EXPECT_EQ(column(ipNetToMediaEntry, 2), linkLayers);
    Column ifIndexes;
    Column addresses;
    for (const auto &[key, type] : types) {
        const std::size_t dot = key.find('.');
        ifIndexes[key] = key.substr(0, dot);
        addresses[key] = key.substr(dot + 1);
    }
    EXPECT_EQ(column(ipNetToMediaEntry, 1), ifIndexes);
    EXPECT_EQ(column(ipNetToMediaEntry, 3), addresses);
}

TEST_F(Ipv4Test, NeighboursAreWhatIpSaysOfThemAndFollowIt)
{
    IPMIB_NEEDS_NAMESPACES();
    network()->run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up;"
                   "ip addr add 10.0.0.1/24 dev v0; ip addr add 10.1.0.1/24 dev v1;"
                   "ip neigh add 10.0.0.9 lladdr 02:00:00:00:00:09 nud permanent dev v0;"
                   "ip neigh add 10.0.0.10 lladdr 02:00:00:00:00:0a nud stale dev v0;"
                   "ip neigh add 10.0.0.200 nud failed dev v0;"
                   "ip neigh add 10.0.0.13 lladdr 02:00:00:00:00:0d nud noarp dev v0;"
                   "ip neigh add proxy 10.0.0.14 dev v0;"
                   "ip neigh add 10.0.0.9 lladdr 02:00:00:00:00:19 nud permanent dev v1");
    startAgent(everybody, {"--platform", "linux"});
    const int v0 = network()->json("ip -j link show dev v0")[0]["ifindex"];
    const auto onV0 = [v0](const char *address) { return std::to_string(v0) + "." + address; };
    expectNeighbours();
    const Column types = column(ipNetToMediaEntry, 4);
    EXPECT_EQ(types.size(), 4u);
    EXPECT_EQ(types.at(onV0("10.0.0.9")), "4");
    EXPECT_EQ(types.at(onV0("10.0.0.10")), "3");
    EXPECT_EQ(types.at(onV0("10.0.0.200")), "2");

    network()->run("ip neigh del 10.0.0.9 dev v0; ip neigh add 10.0.0.1 lladdr 02:00:00:00:00:01 nud permanent dev v1;"
                   "ip neigh replace 10.0.0.10 lladdr 02:00:00:00:00:1a nud permanent dev v0");
    expectNeighbours();
    EXPECT_EQ(column(ipNetToMediaEntry, 4).at(onV0("10.0.0.10")), "4");
    EXPECT_EQ(snmp("snmpget", publicV2, {"-Oqv", ipNetToMediaEntry + "2." + onV0("10.0.0.10")}).output,
              "\"02 00 00 00 00 1A \"\n");
    network()->run("ip link del v0");
    EXPECT_EQ(column(ipNetToMediaEntry, 4), Column());
    stopAgent();
}

// The tables lie among those of the module.
TEST_F(Ipv4Test, AWalkOverEverythingAscends)
{
    IPMIB_NEEDS_NAMESPACES();
    network()->run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up;"
                   "for i in $(seq 150); do echo addr add 10.$((i % 7)).0.$i/24 dev v0;"
                   " echo neigh add 10.7.$((i % 3)).$i lladdr 02:00:00:00:00:09 nud permanent dev v$((i % 2)); done"
                   " | ip -batch -");
    startAgent(everybody, {"--platform", "linux"});
    for (const char *repetitions : {"-Cr1", "-Cr50"}) {
        const Words rows = walk("snmpbulkwalk", publicV2, {repetitions}, "1.3.6.1.2.1");
        expectIncreasing(rows);
        EXPECT_EQ(rowsBelow(rows, ".1.3.6.1.2.1.4.20").size(), 5 * 151u);
        EXPECT_EQ(rowsBelow(rows, ".1.3.6.1.2.1.4.22").size(), 4 * 150u);
    }
    stopAgent();
}

TEST_F(Ipv4Test, ASimulatedDeviceHasItsOwn)
{
    const std::string file = writeFile("device.json", R"({"interfaces": [
        {"name": "wan", "ifIndex": 7, "ipv6": false, "ipv4Addresses": ["192.0.2.2/30"],
         "ipv4Neighbours": [{"address": "192.0.2.1", "mac": "02:00:5e:00:53:01"}]},
        {"name": "lan", "ifIndex": 8, "ipv4Addresses": ["10.0.0.1/8", "192.0.2.129/25"],
         "ipv4Neighbours": [{"address": "10.0.0.2", "type": "invalid"},
                            {"address": "10.0.0.3", "mac": "02:00:5e:00:53:03", "type": "static"}]},
        {"name": "off", "ifIndex": 9, "up": false, "ipv4Addresses": ["192.0.2.65/26"],
         "ipv4Neighbours": [{"address": "192.0.2.66"}]},
        {"name": "last", "ifIndex": 10, "ipv4Neighbours": [{"address": "10.0.0.2", "mac": "02:00:5e:00:53:02"}]}],
        "services": {"ipv4": {"down": [{"from": 50}]}}})");
    startAgent(everybody, {"--platform", "simulated:" + file, "--at=15"});
    EXPECT_EQ(column(ipAddrEntry, 2), (Column{{"10.0.0.1", "8"}, {"192.0.2.2", "7"}, {"192.0.2.129", "8"}}));
    EXPECT_EQ(column(ipAddrEntry, 3).at("192.0.2.129"), "255.255.255.128");
    EXPECT_EQ(column(ipNetToMediaEntry, 4),
              (Column{{"7.192.0.2.1", "3"}, {"8.10.0.0.2", "2"}, {"8.10.0.0.3", "4"}, {"10.10.0.0.2", "3"}}));
    EXPECT_EQ(column(ipNetToMediaEntry, 2).at("8.10.0.0.3"), "02 00 5E 00 53 03 ");
    stopAgent();

    startAgent(everybody, {"--platform", "simulated:" + file, "--at=50"});
    EXPECT_EQ(column(ipAddrEntry, 2), Column()) << "the IPv4 service does not run";
    EXPECT_EQ(column(ipNetToMediaEntry, 4), Column());
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
