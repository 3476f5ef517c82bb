// SPDX-License-Identifier: BSD-3-Clause
// The tables of connections over a simulated device: every row, every column, and what follows any identifier.
#include "tables/tables.h"

#include "host/testing/packets.h"
#include "platform/simulated/test_scenario.h"

#include <gtest/gtest.h>

#include <map>

namespace ipmib::tables
{
namespace
{

using host::testing::Identifier;
using host::testing::Instances;

constexpr const char *device = R"({
  "interfaces": [{ "name": "a", "ifIndex": 2 }],
  "connections": {
    "tcp": [
      { "local": "192.0.2.1", "localPort": 443, "remote": "198.51.100.7", "remotePort": 65534, "count": 3, "process": 7 },
      { "local": "0.0.0.1", "localPort": 443, "remote": "192.0.2.9", "remotePort": 1, "state": "timeWait" },
      { "local": "2001:db8::1", "localPort": 22, "remote": "2001:db8::ffff", "remotePort": 65535, "count": 2,
        "state": "closeWait" },
      { "local": "fe80::1", "localPort": 179, "remote": "fe80::2", "remotePort": 9, "interface": "a" }
    ],
    "listeners": [
      { "local": "any", "localPort": 443, "process": 4194304 }, { "local": "any", "localPort": 80 },
      { "local": "0.0.0.0", "localPort": 81 }, { "local": "192.0.2.1", "localPort": 443 }, { "local": "::", "localPort": 22 },
      { "local": "fe80::1", "localPort": 179, "interface": "a" }
    ],
    "udp": [
      { "local": "any", "localPort": 161 }, { "local": "0.0.0.0", "localPort": 161 }, { "local": "0.0.0.0", "localPort": 53 },
      { "local": "192.0.2.1", "localPort": 53, "instance": 4294967295 }, { "local": "192.0.2.1", "localPort": 53 },
      { "local": "192.0.2.1", "localPort": 53, "remote": "192.0.2.9", "remotePort": 53 },
      { "local": "::1", "localPort": 53, "process": 5 }
    ]
  }
})";

class ConnectionTablesTest : public testing::Test
{
  protected:
    // What a walk finds: values by instances, in its order, which is that of identifiers.
    static std::vector<std::pair<Identifier, host::Value>> walk(host::Source &source, const Identifier &entry)
    {
        std::vector<std::pair<Identifier, host::Value>> found;
        host::Oid asked{host::OidView(entry)};
        for (host::Variable variable;; asked = variable.name) {
            variable.asked = asked.view();
            source.getNext({&variable, 1}, entry);
            if (variable.status != host::Status::ok) {
                return found;
            }
            const host::OidView name = variable.name.view();
            found.emplace_back(Identifier(name.begin(), name.end()), variable.value);
        }
    }

    // The values of a column by index, after a look at random identifiers.
    static std::map<Identifier, std::uint64_t> columnOf(host::Source &source, const Identifier &entry,
                                                        host::SubId number)
    {
        std::map<Identifier, std::uint64_t> column;
        std::vector<Identifier> names;
        for (const auto &[name, value] : walk(source, entry)) {
            names.push_back(name);
            if (name[entry.size()] == number) {
                column[Identifier(name.begin() + static_cast<std::ptrdiff_t>(entry.size()) + 1, name.end())] =
                    value.number;
            }
        }
        EXPECT_EQ(names.size(), column.size() * source.objects().size()) << "every row has every column";
        std::vector<Identifier> objects;
        for (const host::Oid &object : source.objects()) {
            objects.emplace_back(object.view().begin(), object.view().end());
        }
        const Instances instances(objects, names);
        host::testing::Random random(1);
        const auto anyValue = [](host::OidView, const host::Value &) {};
        for (int i = 0; i < 1'000 && !HasFailure(); ++i) {
            host::testing::checkGetNext(source, instances, random, anyValue);
            host::testing::checkGet(source, instances, random, anyValue, [](host::OidView) { return false; });
        }
        return column;
    }

    static Identifier joined(std::initializer_list<Identifier> parts)
    {
        Identifier all;
        for (const Identifier &part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    // Ends as they stand in an index.
    static Identifier any(host::SubId port) { return {0, 0, port}; }
    static Identifier ipv4(const Identifier &address, host::SubId port) { return joined({{1, 4}, address, {port}}); }
    static Identifier ipv6(host::SubId last, host::SubId port)
    {
        return {2, 16, 0x20, 1, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, last >> 8, last & 0xFF, port};
    }
    static Identifier linkLocal(host::SubId last, host::SubId port)
    {
        return {4, 20, 0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, last, 0, 0, 0, 2, port};
    }

    simulated::ScenarioFile file{device};
    simulated::Running running{file.path(), 0};
    const IpmibConnectionHooks &hooks = *ipmib_platform_hooks.connections;
    std::vector<SourcePointer> tables = connectionTables(hooks); // connections, listeners, endpoints
};

TEST_F(ConnectionTablesTest, tcpConnectionTableHasBothVersions)
{
    const Identifier entry{1, 3, 6, 1, 2, 1, 6, 19, 1};
    const std::map<Identifier, std::uint64_t> states{
        {joined({ipv4({0, 0, 0, 1}, 443), ipv4({192, 0, 2, 9}, 1)}), 11},
        {joined({ipv4({192, 0, 2, 1}, 443), ipv4({198, 51, 100, 7}, 65534)}), 5},
        {joined({ipv4({192, 0, 2, 1}, 443), ipv4({198, 51, 100, 7}, 65535)}), 5},
        {joined({ipv4({192, 0, 2, 1}, 443), ipv4({198, 51, 100, 8}, 65534)}), 5},
        {joined({ipv6(1, 22), ipv6(0xFFFF, 65535)}), 8},
        {joined({ipv6(1, 22), {2, 16, 0x20, 1, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 65535}}), 8},
        {joined({linkLocal(1, 179), linkLocal(2, 9)}), 5}};
    EXPECT_EQ(columnOf(*tables[0], entry, 7), states);
    EXPECT_EQ(columnOf(*tables[0], entry, 8)[joined({ipv4({192, 0, 2, 1}, 443), ipv4({198, 51, 100, 8}, 65534)})], 7u);
}

TEST_F(ConnectionTablesTest, tcpListenerTableKnowsWhoTakesBothVersions)
{
    const std::map<Identifier, std::uint64_t> processes{
        {any(80), 0},
        {any(443), 4'194'304},
        {ipv4({0, 0, 0, 0}, 81), 0},
        {ipv4({192, 0, 2, 1}, 443), 0},
        {Identifier{2, 16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 22}, 0},
        {linkLocal(1, 179), 0}};
    EXPECT_EQ(columnOf(*tables[1], {1, 3, 6, 1, 2, 1, 6, 20, 1}, 4), processes);
}

TEST_F(ConnectionTablesTest, udpEndpointTableHasAllThatShareAPort)
{
    const Identifier dns = ipv4({192, 0, 2, 1}, 53);
    const std::map<Identifier, std::uint64_t> processes{
        {joined({any(161), any(0), {1}}), 0},
        {joined({ipv4({0, 0, 0, 0}, 53), any(0), {1}}), 0},
        {joined({ipv4({0, 0, 0, 0}, 161), any(0), {1}}), 0},
        {joined({dns, any(0), {1}}), 0},
        {joined({dns, any(0), {4'294'967'295}}), 0},
        {joined({dns, ipv4({192, 0, 2, 9}, 53), {1}}), 0},
        {joined({{2, 16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 53}, any(0), {1}}), 5}};
    EXPECT_EQ(columnOf(*tables[2], {1, 3, 6, 1, 2, 1, 7, 7, 1}, 8), processes);
}

TEST_F(ConnectionTablesTest, tcpConnTableHasListenersAmongTheConnections)
{
    const SourcePointer table = tcpConnTable(hooks);
    const std::map<Identifier, std::uint64_t> states{{{0, 0, 0, 0, 80, 0, 0, 0, 0, 0}, 2},
                                                     {{0, 0, 0, 0, 81, 0, 0, 0, 0, 0}, 2},
                                                     {{0, 0, 0, 0, 443, 0, 0, 0, 0, 0}, 2},
                                                     {{0, 0, 0, 1, 443, 192, 0, 2, 9, 1}, 11},
                                                     {{192, 0, 2, 1, 443, 0, 0, 0, 0, 0}, 2},
                                                     {{192, 0, 2, 1, 443, 198, 51, 100, 7, 65534}, 5},
                                                     {{192, 0, 2, 1, 443, 198, 51, 100, 7, 65535}, 5},
                                                     {{192, 0, 2, 1, 443, 198, 51, 100, 8, 65534}, 5}};
    EXPECT_EQ(columnOf(*table, {1, 3, 6, 1, 2, 1, 6, 13, 1}, 1), states);
}

TEST_F(ConnectionTablesTest, udpTableHasEachLocalEndOnce)
{
    const SourcePointer table = udpTable(hooks);
    const std::map<Identifier, std::uint64_t> ports{
        {{0, 0, 0, 0, 53}, 53}, {{0, 0, 0, 0, 161}, 161}, {{192, 0, 2, 1, 53}, 53}};
    EXPECT_EQ(columnOf(*table, {1, 3, 6, 1, 2, 1, 7, 5, 1}, 2), ports);
}

} // namespace
} // namespace ipmib::tables
