// SPDX-License-Identifier: BSD-3-Clause
// The rows of connections, listeners and endpoints against the sockets that `ss` lists.
#include "connections/test_sockets.h"
#include "test_platform.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <sys/resource.h>

#include <map>
#include <set>
#include <sstream>

namespace ipmib::platform
{
namespace
{

using namespace testing;
using netns::Namespace;
using Rows = std::multiset<std::string>;

constexpr SocketTimes alwaysAnew{std::chrono::milliseconds(-1), std::chrono::seconds(10), std::chrono::seconds(10)};

std::uint32_t indexOf(const Namespace &space, const std::string &device)
{
    return space.json("ip -j link show dev " + device)[0]["ifindex"];
}

// As ss writes it.
std::string textOf(const IpmibEnd &end)
{
    const std::string port = ":" + (end.port == 0 ? "*" : std::to_string(end.port));
    char text[INET6_ADDRSTRLEN];
    switch (end.type) {
    case IPMIB_END_ANY:
        EXPECT_EQ(end.size, 0u);
        return "*" + port;
    case IPMIB_END_IPV4:
        EXPECT_EQ(end.size, 4u);
        return inet_ntop(AF_INET, end.octets, text, sizeof text) + port;
    default:
        EXPECT_EQ(end.size, end.type == IPMIB_END_IPV6Z ? 20u : 16u);
        const std::string zone = end.type == IPMIB_END_IPV6Z ? "%" + std::to_string(end.octets[19]) : "";
        return "[" + std::string(inet_ntop(AF_INET6, end.octets, text, sizeof text)) + "]" + zone + port;
    }
}

std::string stateText(std::uint32_t table, std::uint32_t state)
{
    static const char *const names[] = {"",           "CLOSE",      "LISTEN",     "SYN-SENT", "SYN-RECV", "ESTAB",
                                        "FIN-WAIT-1", "FIN-WAIT-2", "CLOSE-WAIT", "LAST-ACK", "CLOSING",  "TIME-WAIT"};
    return table == IPMIB_UDP_ENDPOINTS ? "" : names[table == IPMIB_TCP_LISTENERS ? 2 : state];
}

// Every row, which also is where a question for its key finds it.
Rows rowsOf(PlatformInside &platform, std::uint32_t table)
{
    const SocketReading &reading = platform->connections().reading(table);
    const unsigned before = reading.timesRead();
    platform->connections().areRead(table);
    EXPECT_TRUE(platform.waitUntil([&] { return reading.timesRead() > before; }));
    Rows rows;
    IpmibConnection row{};
    while (platform->connections().next(table, row.key, row)) {
        IpmibConnection found{};
        EXPECT_TRUE(platform->connections().find(table, row.key, found));
        EXPECT_EQ(found.state, row.state);
        EXPECT_EQ(row.process, 0u);
        const bool hasRemote = table == IPMIB_TCP_CONNECTIONS || row.key.remote.size != 0;
        std::string line = stateText(table, row.state) + " " + textOf(row.key.local) + " " +
                           (hasRemote ? textOf(row.key.remote) : "any");
        rows.insert(line + (table == IPMIB_UDP_ENDPOINTS ? " " + std::to_string(row.key.instance) : ""));
    }
    EXPECT_EQ(rows.size(), platform->connections().table(table).size());
    return rows;
}

// "[::ffff:192.0.2.1]" is IPv4, a name behind a '%' a number, and an end that is open is "any".
std::string normalised(std::string end, const std::map<std::string, std::uint32_t> &interfaces)
{
    const std::string mapped = "[::ffff:";
    if (end.starts_with(mapped)) {
        end = end.substr(mapped.size());
        end.erase(end.find(']'), 1);
    }
    if (const auto percent = end.find('%'); percent != std::string::npos) {
        const auto colon = end.find(':', end.find(']') == std::string::npos ? percent : end.find(']'));
        const std::string name = end.substr(percent + 1, colon - percent - 1);
        end = end.substr(0, percent) + "%" + std::to_string(interfaces.at(name)) + end.substr(colon);
    }
    return end;
}

// The same of ss; by table.
std::map<std::uint32_t, Rows> listed(const Namespace &space)
{
    std::map<std::string, std::uint32_t> interfaces;
    for (const auto &link : space.json("ip -j link")) {
        interfaces[link["ifname"]] = link["ifindex"];
    }
    std::map<std::uint32_t, Rows> tables{
        {IPMIB_TCP_CONNECTIONS, {}}, {IPMIB_TCP_LISTENERS, {}}, {IPMIB_UDP_ENDPOINTS, {}}};
    std::istringstream lines(space.run("ss -tunaHeO"));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string protocol;
        std::string state;
        std::string local;
        std::string remote;
        std::string word;
        words >> protocol >> state >> word >> word >> local >> remote;
        std::string inode;
        while (words >> word) {
            inode = word.starts_with("ino:") ? word.substr(4) : inode;
        }
        const std::uint32_t table = protocol == "udp"   ? IPMIB_UDP_ENDPOINTS
                                    : state == "LISTEN" ? IPMIB_TCP_LISTENERS
                                                        : IPMIB_TCP_CONNECTIONS;
        if (remote.starts_with("[fe80:") && local.find('%') != std::string::npos) { // ss says it of the local end alone
            const auto zone = local.find('%');
            remote.insert(remote.find(']') + 1, local.substr(zone, local.rfind(':') - zone));
        }
        const bool isOpen = remote.ends_with(":*");
        tables[table].insert((table == IPMIB_UDP_ENDPOINTS ? "" : state) + " " + normalised(local, interfaces) + " " +
                             (isOpen ? "any" : normalised(remote, interfaces)) +
                             (table == IPMIB_UDP_ENDPOINTS ? " " + inode : ""));
    }
    return tables;
}

// States may still change when the test goes on.
void expectAsListed(PlatformInside &platform, const Namespace &space)
{
    constexpr int attempts = 50;
    for (std::uint32_t table = 0; table < IPMIB_CONNECTION_TABLES; ++table) {
        Rows rows;
        Rows expected;
        for (int i = 0; i < attempts && (i == 0 || rows != expected); ++i) {
            expected = listed(space)[table];
            rows = rowsOf(platform, table);
        }
        EXPECT_EQ(rows, expected) << "table " << table;
    }
}

// A neighbour that answers nothing stands for a peer that has gone.
void addSilentNeighbour(const Namespace &space)
{
    space.run(
        "ip link add d0 type veth peer name d1; ip link set d0 up; ip link set d1 up; ip addr add 192.0.2.1/24 dev d0; "
        "ip addr add fe80::1/64 dev d0 nodad; ip neigh add 192.0.2.9 lladdr 02:00:00:00:00:09 dev d0");
}

TEST(ConnectionsNetns, everyStateOfTcpIsAsListed)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    addSilentNeighbour(space);
    PlatformInside platform(space);
    platform->connections().setTimes(alwaysAnew);
    for (const std::string address : {"127.0.0.1", "::1"}) {
        const Place place(address, 5'000);
        const Descriptor listener = listening(place);
        const auto established = connection(listener, place);
        const auto halfClosed = connection(listener, place); // FIN-WAIT-2 and CLOSE-WAIT
        shutdown(halfClosed.first.get(), SHUT_WR);
        const auto finWait = connection(listener, place); // its end waits behind data that nobody reads
        fill(finWait.first);
        shutdown(finWait.first.get(), SHUT_WR);
        const auto closing = connection(listener, place);
        fill(closing.first);
        shutdown(closing.first.get(), SHUT_WR);
        shutdown(closing.second.get(), SHUT_WR);
        const auto lastAck = connection(listener, place);
        shutdown(lastAck.second.get(), SHUT_WR);
        fill(lastAck.first);
        shutdown(lastAck.first.get(), SHUT_WR);
        {
            const auto ended = connection(listener, place); // TIME-WAIT
            shutdown(ended.first.get(), SHUT_WR);
        }
        const Descriptor synSent = connecting(Place("192.0.2.9", 5'000));
        const Descriptor wild = listening(Place("192.0.2.1", 5'001));
        sendSyn("192.0.2.9", "192.0.2.1", 5'001);
        expectAsListed(platform, space);
        std::set<std::string> states;
        for (const std::string &row : rowsOf(platform, IPMIB_TCP_CONNECTIONS)) {
            states.insert(row.substr(0, row.find(' ')));
        }
        EXPECT_EQ(states, (std::set<std::string>{"SYN-SENT", "SYN-RECV", "ESTAB", "FIN-WAIT-1", "FIN-WAIT-2",
                                                 "CLOSE-WAIT", "LAST-ACK", "CLOSING", "TIME-WAIT"}));
    }
}

TEST(ConnectionsNetns, whoTakesBothVersionsIsOfNeither)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    addSilentNeighbour(space);
    PlatformInside platform(space);
    platform->connections().setTimes(alwaysAnew);
    const std::string zoned = "fe80::1%" + std::to_string(indexOf(space, "d0"));
    const Descriptor both = listening(Place("::", 5'000));
    const Descriptor onlyIpv6 = listening(Place("::", 5'001), {{IPPROTO_IPV6, IPV6_V6ONLY}});
    const Descriptor ipv4 = listening(Place("0.0.0.0", 5'001));
    const Descriptor mapped = listening(Place("::ffff:127.0.0.1", 5'002));
    const Descriptor linkLocal = listening(Place(zoned, 5'003));
    const auto byIpv4 = connection(both, Place("127.0.0.1", 5'000));
    const auto onLink = connection(linkLocal, Place(zoned, 5'003));
    EXPECT_EQ(rowsOf(platform, IPMIB_TCP_LISTENERS),
              (Rows{"LISTEN *:5000 any", "LISTEN [::]:5001 any", "LISTEN 0.0.0.0:5001 any", "LISTEN 127.0.0.1:5002 any",
                    "LISTEN [fe80::1]%" + zoned.substr(zoned.find('%') + 1) + ":5003 any"}));

    const std::vector<std::pair<int, int>> shared{{SOL_SOCKET, SO_REUSEPORT}};
    const Descriptor one = bound(SOCK_DGRAM, Place("0.0.0.0", 6'000), shared);
    const Descriptor other = bound(SOCK_DGRAM, Place("0.0.0.0", 6'000), shared);
    const Descriptor udpOfBoth = bound(SOCK_DGRAM, Place("::", 6'001));
    const Descriptor udpIpv6 = bound(SOCK_DGRAM, Place("::1", 6'002));
    const Descriptor udpLinkLocal = bound(SOCK_DGRAM, Place(zoned, 6'003));
    const Descriptor connected = bound(SOCK_DGRAM, Place("127.0.0.1", 6'004));
    const Place peer("127.0.0.1", 6'000);
    ASSERT_EQ(connect(connected.get(), peer.get(), peer.size), 0);
    EXPECT_EQ(rowsOf(platform, IPMIB_UDP_ENDPOINTS).size(), 6u) << "two that share a port are two";
    expectAsListed(platform, space);
}

// Reads in pieces, drops what nobody asks for, and reads again what is asked for.
TEST(ConnectionsNetns, thousandsAreReadWhenTheyAreAskedFor)
{
    IPMIB_NEEDS_NAMESPACES();
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
    const rlim_t most = 1'000;
    const auto count = std::min<rlim_t>(most, (files.rlim_cur - 200) / 4); // of each version
    const Namespace space;
    PlatformInside platform(space);
    const SocketReading &reading = platform->connections().reading(IPMIB_TCP_CONNECTIONS);
    std::vector<std::pair<Descriptor, Descriptor>> connections;
    std::vector<Descriptor> listeners;
    for (const std::string address : {"127.0.0.1", "::1"}) {
        const Place place(address, 5'000);
        listeners.push_back(listening(place));
        for (rlim_t i = 0; i < count; ++i) {
            connections.push_back(connection(listeners.back(), place));
        }
    }
    EXPECT_TRUE(reading.isIdle()) << "nobody has asked";
    const auto areRead = [&](std::uint32_t table) { return platform->connections().areRead(table) == 1; };
    EXPECT_TRUE(platform.waitUntil([&] { return areRead(IPMIB_TCP_CONNECTIONS) && areRead(IPMIB_TCP_LISTENERS); }));
    EXPECT_EQ(reading.timesRead(), 1u) << "one reading for both tables";
    EXPECT_TRUE(platform->connections().reading(IPMIB_UDP_ENDPOINTS).isIdle());
    EXPECT_EQ(platform->connections().table(IPMIB_TCP_CONNECTIONS).size(), 2 * connections.size());

    platform->connections().setTimes(alwaysAnew);
    connections.resize(connections.size() / 2);
    expectAsListed(platform, space);

    SocketTimes soonIdle = alwaysAnew;
    soonIdle.idle = std::chrono::milliseconds(1);
    platform->connections().setTimes(soonIdle);
    areRead(IPMIB_TCP_CONNECTIONS);
    EXPECT_TRUE(platform.waitUntil([&] { return reading.isIdle(); }));
    EXPECT_EQ(platform->connections().table(IPMIB_TCP_CONNECTIONS).memory(), 0u);
    EXPECT_TRUE(platform.waitUntil([&] { return areRead(IPMIB_TCP_CONNECTIONS); })) << "and are read again";
}

} // namespace
} // namespace ipmib::platform
