// SPDX-License-Identifier: BSD-3-Clause
// For tests: what the services say of neighbours, and what the kernel's own tool says, in one form.
#include "neighbours/neighbour_testing.h"

#include <nlohmann/json.hpp>

#include <arpa/inet.h>

#include <algorithm>
#include <cstdio>
#include <fstream>

namespace ipmib::platform
{

void PrintTo(const ShownNeighbour &row, std::ostream *out)
{
    *out << row.linkLayer << " type " << row.type << " state " << row.state;
}

AddressBytes addressOf(const std::string &text)
{
    AddressBytes address{};
    EXPECT_EQ(inet_pton(AF_INET6, text.c_str(), address.data()), 1) << text;
    return address;
}

std::string linkLayerText(const std::uint8_t *bytes)
{
    char text[18];
    std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", bytes[0], bytes[1], bytes[2], bytes[3], bytes[4],
                  bytes[5]);
    return text;
}

NeighbourEntry keyOf(std::uint32_t ifIndex, const AddressBytes &address)
{
    NeighbourEntry entry{};
    entry.if_index = ipmib_be32(ifIndex);
    std::copy(address.begin(), address.end(), entry.address);
    return entry;
}

ShownNeighbours walked()
{
    constexpr std::uint32_t lastIfIndex = 64;
    ShownNeighbours rows;
    for (std::uint32_t ifIndex = 1; ifIndex <= lastIfIndex; ++ifIndex) {
        for (const std::uint32_t mode : {1u, 2u}) {
            AddressBytes last{};
            NeighbourEntry entry = keyOf(ifIndex, last);
            while (ND_GetNextNetToPhysicalTable(mode, &entry) == 0) {
                AddressBytes address;
                std::copy(std::begin(entry.address), std::end(entry.address), address.begin());
                EXPECT_EQ(ipmib_be32_get(entry.if_index), ifIndex);
                EXPECT_LT(last, address);
                EXPECT_EQ(mode == 2, address[0] == 0xfe && (address[1] & 0xc0) == 0x80);
                char text[INET6_ADDRSTRLEN];
                inet_ntop(AF_INET6, entry.address, text, sizeof text);
                rows[{ifIndex, text}] = {linkLayerText(entry.link_layer), ipmib_be32_get(entry.type) + 1,
                                         ipmib_be32_get(entry.state)};
                last = address;
            }
        }
    }
    return rows;
}

ShownNeighbours listed(const netns::Namespace &space)
{
    static const std::map<std::string, std::uint32_t> states = {
        {"REACHABLE", 1}, {"PERMANENT", 1}, {"STALE", 2}, {"DELAY", 3}, {"PROBE", 4}, {"FAILED", 5}, {"INCOMPLETE", 7}};
    std::map<std::string, std::uint32_t> indexes;
    for (const auto &link : space.json("ip -j link")) {
        indexes[link["ifname"]] = link["ifindex"];
    }
    ShownNeighbours rows;
    for (const auto &neighbour : space.json("ip -6 -j neigh")) {
        const std::string state = neighbour["state"][0];
        EXPECT_EQ(states.count(state), 1u) << state;
        rows[{indexes[neighbour["dev"]], neighbour["dst"]}] = {neighbour.value("lladdr", "00:00:00:00:00:00"),
                                                               state == "PERMANENT" ? 4u : 3u, states.at(state)};
    }
    return rows;
}

std::string batchOf(int first, int count, const std::string &command, const std::vector<std::string> &devices)
{
    std::string batch;
    for (int i = first; i < first + count; ++i) {
        char line[128];
        std::snprintf(line, sizeof line, "neigh %s %s::%x:%x dev %s lladdr 02:00:00:%02x:%02x:%02x nud permanent\n",
                      command.c_str(), i % 4 == 0 ? "fe80" : "2001:db8", i >> 16, i & 0xffff,
                      devices[static_cast<std::size_t>(i) % devices.size()].c_str(), i >> 16 & 0xff, i >> 8 & 0xff,
                      i & 0xff);
        batch += line;
    }
    return batch;
}

void runBatch(const netns::Namespace &space, const std::string &batch)
{
    const std::string path = testing::TempDir() + "neighbours" + std::to_string(getpid()) + ".batch";
    std::ofstream(path) << batch;
    space.run("ip -6 -batch " + path);
    std::remove(path.c_str());
}

void NeighboursNetns::SetUp()
{
    IPMIB_NEEDS_NAMESPACES();
    space_.emplace();
    space_->run("ip link add eth0 type veth peer name peer0; ip link set eth0 up; ip link set peer0 up");
    holdStates("eth0");
}

void NeighboursNetns::holdStates(const std::string &device) const
{
    const std::string settings = "net/ipv6/neigh/" + device + "/";
    space_->sysctl(settings + "base_reachable_time_ms", "3600000");
    space_->sysctl(settings + "delay_first_probe_time", "3600");
    space_->sysctl(settings + "mcast_solicit", "1000");
    space_->sysctl(settings + "ucast_solicit", "1000");
}

std::uint32_t NeighboursNetns::indexOf(const std::string &device) const
{
    return space_->json("ip -j link show " + device)[0]["ifindex"];
}

ShownNeighbour NeighboursNetns::get(const std::string &address, const std::string &device) const
{
    NeighbourEntry entry{};
    if (ND_GetNetToPhysicalTable(indexOf(device), addressOf(address).data(), &entry, 16) != 0) {
        return {};
    }
    return {linkLayerText(entry.link_layer), ipmib_be32_get(entry.type) + 1, ipmib_be32_get(entry.state)};
}

void NeighboursNetns::settle(PlatformInside &platform)
{
    platform->beginPacket();
    EXPECT_TRUE(platform.waitUntil([&] { return !platform->neighbours().mirror().refreshing(); }));
}

} // namespace ipmib::platform
