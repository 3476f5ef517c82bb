// SPDX-License-Identifier: BSD-3-Clause
// Walks over the statistics tables of a router with 64 interfaces of many kinds: every interface once, in order, each
// value the kernel's; also while interfaces come and go.
#include "live_agent.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>
#include <sstream>

namespace
{

using namespace ipmib::live;
using ipmib::host::SubId;
using ipmib::host::ValueType;
using ipmib::netns::Namespace;

const Identifier scalars{1, 3, 6, 1, 2, 1, 4};
const Identifier ipv6InterfaceEntry{1, 3, 6, 1, 2, 1, 4, 30, 1};
const Identifier ipSystemStatsEntry{1, 3, 6, 1, 2, 1, 4, 31, 1, 1};
const Identifier ipIfStatsEntry{1, 3, 6, 1, 2, 1, 4, 31, 3, 1};

using Counters = std::map<std::string, std::uint64_t>;

Counters countersOf(const Namespace &space, const std::string &file)
{
    std::istringstream text(space.file("/proc/thread-self/net/" + file));
    Counters counters;
    std::string name;
    for (std::uint64_t value; text >> name >> value;) {
        counters[name] = value;
    }
    return counters;
}

// What the statistics tables have in common: the kernel's names of a column, summed. 64-bit columns stand for both.
struct Column {
    SubId narrow;
    SubId wide; // 0: none
    std::vector<std::string> names;
};
const Column columns[] = {
    {3, 4, {"InReceives"}},
    {7, 0, {"InHdrErrors"}},
    {8, 0, {"InNoRoutes"}},
    {9, 0, {"InAddrErrors"}},
    {10, 0, {"InUnknownProtos"}},
    {12, 13, {"OutForwDatagrams", "InNoRoutes", "InTooBigErrors"}},
    {14, 0, {"ReasmReqds"}},
    {15, 0, {"ReasmOKs"}},
    {16, 0, {"ReasmFails"}},
    {17, 0, {"InDiscards"}},
    {18, 0, {"InDelivers"}},
    {20, 0, {"OutRequests"}},
    {23, 24, {"OutForwDatagrams"}},
    {25, 0, {"OutDiscards"}},
    {26, 0, {"FragFails", "FragOKs"}},
    {27, 0, {"FragOKs"}},
    {28, 0, {"FragFails"}},
    {29, 0, {"FragCreates"}},
    {30, 31, {"OutTransmits"}},
};
// Served by interface alone.
const Column interfaceColumns[] = {
    {11, 0, {"InTruncatedPkts"}}, {34, 0, {"InMcastPkts"}}, {38, 0, {"OutMcastPkts"}},
    {5, 6, {"InOctets"}},         {0, 21, {"OutRequests"}}, {32, 33, {"OutOctets"}},
};

// The kernel's counters just before and just after a walk: a router is never quite still.
struct Bracket {
    Counters before;
    Counters after;
};

std::uint64_t sum(const Counters &kernel, const Column &column)
{
    std::uint64_t total = 0;
    for (const std::string &name : column.names) {
        const auto found = kernel.find("Ip6" + name);
        total += found == kernel.end() ? 0 : found->second;
    }
    return total;
}

void expectColumn(const Table &table, const Column &column, const Identifier &row, const Bracket &kernel)
{
    const auto expectCell = [&](SubId which, ValueType type) {
        if (which == 0) {
            return;
        }
        ASSERT_TRUE(table.contains(which) && table.at(which).contains(row)) << "no column " << which;
        const Cell &cell = table.at(which).at(row);
        EXPECT_EQ(cell.type, type) << which;
        EXPECT_GE(cell.number, sum(kernel.before, column)) << which << " " << column.names.front();
        EXPECT_LE(cell.number, sum(kernel.after, column)) << which << " " << column.names.front();
    };
    expectCell(column.narrow, ValueType::counter32);
    expectCell(column.wide, ValueType::counter64);
}

class TrafficOfARouter : public testing::Test
{
  protected:
    static constexpr unsigned interfaces = 64;

    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        router.emplace();
        left.emplace();
        right.emplace();
        Namespace::connect(*left, "wan", *router, "left");
        Namespace::connect(*right, "wan", *router, "right");
        left->run("ip addr add 2001:db8:1::2/64 dev wan nodad; ip -6 route add default via 2001:db8:1::1");
        right->run("ip addr add 2001:db8:2::2/64 dev wan nodad; ip -6 route add default via 2001:db8:2::1");
        router->sysctl("net/ipv6/conf/all/forwarding", "1");
        std::ostringstream setup;
        setup << "addr add 2001:db8:1::1/64 dev left nodad\naddr add 2001:db8:2::1/64 dev right nodad\n"
              << "link add off type veth peer name small mtu 1279\nlink set off up\nlink set small up\n"
              << "tuntap add tun0 mode tun\ntuntap add tap0 mode tap\nlink set tap0 up\n"
              << "link add vxlan0 type vxlan id 7 dstport 4789\nlink add ifb7 type ifb\n";
        for (unsigned i = 0; i < 27; ++i) {
            setup << "link add br" << i << " type bridge\nlink add mv" << i << " link right type macvlan\n";
            if (i % 3 != 0) {
                setup << "link set br" << i << " up\nlink set mv" << i << " up\n";
            }
        }
        router->run("ip -batch - <<'END'\n" + setup.str() + "END");
        router->sysctl("net/ipv6/conf/off/disable_ipv6", "1");
        ASSERT_EQ(names().size(), interfaces - 1);
        router->run("ip link add last type bridge");
    }

    void traffic() const
    {
        left->run("ping -6 -q -n -c 30 -i 0.002 2001:db8:2::2 > /dev/null");
        left->run("ping -6 -q -n -c 3 -i 0.002 -s 3000 2001:db8:1::1 > /dev/null");
        left->run("ping -6 -q -n -c 1 -W 1 -t 1 2001:db8:2::2 > /dev/null || true");
        right->run("ping -6 -q -n -c 5 -i 0.002 2001:db8:1::2 > /dev/null");
    }

    // Of every interface, and under "" of the system.
    std::map<std::string, Counters> counters() const
    {
        std::map<std::string, Counters> all{{"", countersOf(*router, "snmp6")}, {"small", {}}};
        for (const auto &[index, name] : names()) {
            if (name != "small") {
                all[name] = countersOf(*router, "dev_snmp6/" + name);
            }
        }
        return all;
    }

    std::map<SubId, std::string> names() const
    {
        std::map<SubId, std::string> found;
        for (const auto &link : router->json("ip -j link")) {
            found[link["ifindex"]] = link["ifname"];
        }
        return found;
    }

    std::optional<Namespace> router, left, right;
};

TEST_F(TrafficOfARouter, everyInterfaceHasItsTwoRowsAndTheKernelsCounters)
{
    LiveAgent agent(*router);
    traffic();
    auto before = counters();
    const Table table = agent.walk(ipIfStatsEntry);
    auto after = counters();
    ASSERT_EQ(names().size(), interfaces);
    EXPECT_EQ(table.size(), 30u) << "columns";
    for (const auto &[column, rows] : table) {
        EXPECT_EQ(rows.size(), 2 * interfaces) << "column " << column;
    }
    for (const auto &[index, name] : names()) {
        SCOPED_TRACE(name);
        const Bracket kernel{before[name], after[name]};
        for (const auto &column : columns) {
            expectColumn(table, {column.narrow, column.narrow == 12 ? 0 : column.wide, column.names}, {2, index},
                         kernel);
        }
        for (const auto &column : interfaceColumns) {
            expectColumn(table, column, {2, index}, kernel);
        }
        for (const auto &[column, rows] : table) {
            ASSERT_TRUE(rows.contains({1, index})) << column;
            EXPECT_EQ(rows.at({1, index}).number, 0u) << "IPv4 is not counted here";
        }
    }
    for (const auto &[index, name] : names()) {
        if (name == "left" || name == "right") {
            EXPECT_GE(table.at(24).at({2, index}).number, 35u) << "forwarded out of " << name;
            EXPECT_GE(table.at(12).at({2, index}).number, 35u) << "forwarded into " << name;
        }
    }
}

TEST_F(TrafficOfARouter, theSystemsRowIsTheKernels)
{
    LiveAgent agent(*router);
    traffic();
    Bracket kernel;
    kernel.before = countersOf(*router, "snmp6");
    const Table table = agent.walk(ipSystemStatsEntry);
    kernel.after = countersOf(*router, "snmp6");
    EXPECT_EQ(table.size(), 24u);
    for (const auto &column : columns) {
        expectColumn(table, column, {2}, kernel);
    }
    EXPECT_GE(table.at(24).at({2}).number, 70u) << "forwarded";
}

TEST_F(TrafficOfARouter, theInterfaceTableHasEveryInterfaceWithIp6)
{
    LiveAgent agent(*router);
    const auto listed = [&] {
        std::map<std::string, bool> linkLocal;
        for (const auto &link : router->json("ip -j -6 addr")) {
            for (const auto &address : link["addr_info"]) {
                const bool isLocal = address["scope"] == "link" || address["local"] == "::1";
                const bool isUsable = !address.value("tentative", false);
                linkLocal[link["ifname"]] = linkLocal[link["ifname"]] || (isLocal && isUsable);
            }
        }
        return linkLocal;
    };
    std::map<std::string, bool> linkLocal;
    Table table;
    do { // until no interface gets its link-local address while the table is read
        linkLocal = listed();
        table = agent.walk(ipv6InterfaceEntry);
    } while (linkLocal != listed());
    for (const auto &[index, name] : names()) {
        SCOPED_TRACE(name);
        const Identifier row{index};
        if (name == "small") {
            EXPECT_FALSE(table.at(5).contains(row)) << "its MTU leaves no room for IPv6";
            continue;
        }
        ASSERT_TRUE(table.at(5).contains(row));
        EXPECT_EQ(table.at(5).at(row).number, linkLocal[name] ? 1u : 2u);
        EXPECT_EQ(table.at(3).at(row).octets.size(), 8u);
        EXPECT_EQ(std::to_string(table.at(7).at(row).number),
                  router->sysctl("net/ipv6/neigh/" + name + "/retrans_time_ms"));
        const auto base = std::stoul(router->sysctl("net/ipv6/neigh/" + name + "/base_reachable_time_ms"));
        EXPECT_GE(table.at(6).at(row).number, base / 2);
        EXPECT_LE(table.at(6).at(row).number, base * 3 / 2);
    }
    EXPECT_EQ(table.at(5).size(), interfaces - 1);
    Identifier hopLimit = scalars;
    hopLimit.insert(hopLimit.end(), {26, 0});
    EXPECT_EQ(std::to_string(agent.get(hopLimit).number), router->sysctl("net/ipv6/conf/default/hop_limit"));
}

// Interfaces are added, renamed and removed between any two steps of the walk.
TEST_F(TrafficOfARouter, aWalkEndsInOrderWhileInterfacesComeAndGo)
{
    LiveAgent agent(*router);
    Identifier column = ipIfStatsEntry;
    column.push_back(6);
    const std::set<SubId> stay = [&] {
        std::set<SubId> found;
        for (const auto &[index, name] : names()) {
            if (!name.starts_with("br")) {
                found.insert(index);
            }
        }
        return found;
    }();
    std::map<SubId, std::set<SubId>> seen;
    Identifier name = column;
    unsigned step = 0;
    for (Cell cell; agent.next(name, column, cell); ++step) {
        const SubId version = name[name.size() - 2];
        EXPECT_TRUE(seen[version].insert(name.back()).second);
        EXPECT_TRUE(router->json("ip -j link").dump().find("\"ifindex\":" + std::to_string(name.back()) + ",") !=
                    std::string::npos)
            << "a row of an interface that is gone";
        if (step % 4 == 0 && step / 4 < 27) {
            const std::string i = std::to_string(step / 4);
            router->run("ip link del br" + i + "; ip link add new" + i + " type bridge; ip link set new" + i +
                        " name name" + i);
        }
        ASSERT_LT(step, 500u);
    }
    EXPECT_GT(step, 2 * stay.size());
    for (const auto &[version, rows] : seen) {
        for (const SubId index : stay) {
            EXPECT_TRUE(rows.contains(index)) << version << "." << index;
        }
    }
}

// As in a GETBULK over the whole table: all columns of a row side by side.
TEST_F(TrafficOfARouter, aRowOfAllColumnsIsOneRequestAndOneKernelReading)
{
    LiveAgent agent(*router);
    traffic();
    const Table table = agent.walk(ipIfStatsEntry); // and the kernel's order of counters is known from here on
    std::vector<Identifier> asked;
    for (const auto &[column, rows] : table) {
        asked.push_back(ipIfStatsEntry);
        asked.back().insert(asked.back().end(), {column, 2});
    }
    for (unsigned row = 0; row < interfaces; ++row) {
        agent.platform()->beginPacket();
        const auto requests = agent.resolver().requestCount();
        const auto readings = agent.platform()->ip6Links().kernelReads();
        std::vector<ipmib::host::Variable> variables(asked.size());
        for (std::size_t i = 0; i < asked.size(); ++i) {
            variables[i].asked = asked[i];
        }
        agent.resolver().getNext(variables, ipIfStatsEntry);
        EXPECT_EQ(agent.platform()->ip6Links().kernelReads() - readings, 1u);
        if (row > 0) { // the first starts from an incomplete index
            EXPECT_EQ(agent.resolver().requestCount() - requests, 1u);
        }
        for (std::size_t i = 0; i < asked.size(); ++i) {
            asked[i].assign(variables[i].name.view().begin(), variables[i].name.view().end());
            EXPECT_EQ(asked[i].back(), asked[0].back());
        }
    }
}

} // namespace
