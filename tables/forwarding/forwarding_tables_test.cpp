// SPDX-License-Identifier: BSD-3-Clause
// The tables of the IP-FORWARD-MIB over a simulated device's routes: every row, every column, and what follows any
// identifier.
#include "tables/tables.h"

#include "host/testing/packets.h"
#include "platform/simulated/test_scenario.h"

#include <algorithm>
#include <map>
#include <set>

namespace ipmib::tables
{
namespace
{

using host::testing::Identifier;
using host::testing::Instances;

const Identifier inetCidrRouteEntry{1, 3, 6, 1, 2, 1, 4, 24, 7, 1};
const Identifier ipCidrRouteEntry{1, 3, 6, 1, 2, 1, 4, 24, 4, 1};
const Identifier ipRouteEntry{1, 3, 6, 1, 2, 1, 4, 21, 1};

constexpr const char *device = R"({
  "uptime": 5000,
  "interfaces": [{ "name": "a", "ifIndex": 2 }, { "name": "b", "ifIndex": 3 }],
  "routes": [
    { "destination": "0.0.0.0/0", "type": "reject" },
    { "destination": "0.0.0.0/0", "interface": "a", "via": "192.0.2.1", "metric": 100, "protocol": "dhcp" },
    { "destination": "0.0.0.0/8", "interface": "a" },
    { "destination": "10.0.0.0/8", "type": "blackhole" },
    { "destination": "10.0.0.0/16", "interface": "a", "via": "192.0.2.7", "tos": 8 },
    { "destination": "10.0.0.0/16", "interface": "a", "via": "192.0.2.7", "tos": 8, "table": 7, "metric": 4294967 },
    { "destination": "10.0.0.0/16", "interface": "b", "via": "192.0.2.7", "tos": 8, "metric": 1 },
    { "destination": "10.0.0.0/16", "interface": "b", "via": "192.0.2.6", "tos": 16, "protocol": "ttdp" },
    {
      "destination": "10.1.0.0/24", "count": 30, "changed": 4000, "protocol": "bgp", "as": 4200000000,
      "nextHops": [
        { "interface": "a", "via": "2001:db8::7" }, { "interface": "b", "via": "fe80::7" },
        { "interface": "b" }, { "interface": "a" }, { "interface": "a", "via": "192.0.2.7" }
      ]
    },
    { "destination": "255.255.255.255/32", "interface": "b", "via": "255.0.0.1", "table": 4294967295, "tos": 255 },
    { "destination": "::/0", "interface": "a", "via": "fe80::1" },
    { "destination": "2001:db8::/64", "interface": "b", "count": 10, "metric": 256 },
    { "destination": "fe80::/64", "interface": "a", "metric": 256 },
    { "destination": "fe80::/64", "interface": "b", "metric": 256 },
    { "destination": "ff00::/8", "type": "other", "metric": 1 }
  ]
})";

class ForwardingTablesTest : public testing::Test
{
  protected:
    ForwardingTablesTest()
    {
        IpmibRoute row{};
        while (hooks.next(&row.key, &row) == 0) {
            routes.push_back(row);
        }
        EXPECT_EQ(routes.size(), 8 + 30 * 5 + 1 + 1 + 10 + 3);
    }

    // All instances, as a walk finds them.
    static std::vector<Identifier> walk(host::Source &source, host::OidView root)
    {
        std::vector<Identifier> found;
        host::Oid asked(root);
        for (host::Variable variable;; asked = variable.name) {
            variable.asked = asked.view();
            source.getNext({&variable, 1}, root);
            if (variable.status != host::Status::ok) {
                return found;
            }
            const host::OidView name = variable.name.view();
            found.emplace_back(name.begin(), name.end());
        }
    }

    static std::vector<Identifier> objectsOf(const host::Source &source)
    {
        std::vector<Identifier> objects;
        for (const host::Oid &object : source.objects()) {
            objects.emplace_back(object.view().begin(), object.view().end());
        }
        return objects;
    }

    // The indexes of the rows, each of which has every column.
    static std::vector<Identifier> indexesOf(host::Source &source, const Identifier &entry)
    {
        std::map<host::SubId, std::vector<Identifier>> columns;
        for (const Identifier &name : walk(source, entry)) {
            columns[name[entry.size()]].emplace_back(name.begin() + static_cast<std::ptrdiff_t>(entry.size()) + 1,
                                                     name.end());
        }
        EXPECT_EQ(columns.size(), source.objects().size());
        for (const auto &[column, indexes] : columns) {
            EXPECT_EQ(indexes, columns.begin()->second) << column;
            EXPECT_TRUE(std::ranges::is_sorted(indexes, std::ranges::less_equal())) << column;
        }
        return columns.empty() ? std::vector<Identifier>() : columns.begin()->second;
    }

    // Against all instances: what follows identifiers of all kinds, and what is there.
    static void checkRandomly(host::Source &source, const Identifier &entry)
    {
        const Instances instances(objectsOf(source), walk(source, entry));
        host::testing::Random random(1);
        const auto anyValue = [](host::OidView, const host::Value &) {};
        for (int i = 0; i < 1'000 && !HasFailure(); ++i) {
            host::testing::checkGetNext(source, instances, random, anyValue);
            host::testing::checkGet(source, instances, random, anyValue, [](host::OidView) { return false; });
        }
    }

    static host::Value get(host::Source &source, Identifier name, host::SubId column, const Identifier &index)
    {
        name.push_back(column);
        name.insert(name.end(), index.begin(), index.end());
        host::Variable variable;
        variable.asked = name;
        source.get({&variable, 1});
        EXPECT_EQ(variable.status, host::Status::ok);
        return variable.value;
    }

    simulated::ScenarioFile file{device};
    simulated::Running running{file.path(), 0};
    const IpmibRouteHooks &hooks = *ipmib_platform_hooks.routes;
    std::vector<IpmibRoute> routes;
};

// As RFC 4292 has it; the policy is zeroDotZero and the numbers that are left when zeros in front are.
Identifier inetCidrIndex(const IpmibRouteKey &key)
{
    const host::SubId size = key.version == IPMIB_IPV4 ? 4 : 16;
    Identifier index{key.version, size};
    index.insert(index.end(), key.destination, key.destination + size);
    index.push_back(key.prefix_length);
    Identifier policy{0, 0};
    for (const std::uint32_t number : key.policy) {
        if (number != 0 || policy.size() > 2) {
            policy.push_back(number);
        }
    }
    index.push_back(static_cast<host::SubId>(policy.size()));
    index.insert(index.end(), policy.begin(), policy.end());
    index.insert(index.end(), {key.next_hop_type, key.next_hop_size});
    index.insert(index.end(), key.next_hop, key.next_hop + key.next_hop_size);
    return index;
}

TEST_F(ForwardingTablesTest, inetCidrRouteTableHasARowForEachNextHop)
{
    const SourcePointer table = inetCidrRouteTable(hooks);
    std::vector<Identifier> expected;
    for (const IpmibRoute &route : routes) {
        const Identifier index = expected.emplace_back(inetCidrIndex(route.key));
        const auto number = [&](host::SubId column) { return get(*table, inetCidrRouteEntry, column, index).number; };
        EXPECT_EQ(number(7), route.if_index);
        EXPECT_EQ(number(8), route.type);
        EXPECT_EQ(number(9), route.protocol);
        EXPECT_EQ(number(10), route.age_s);
        EXPECT_EQ(number(11), route.next_hop_as);
        EXPECT_EQ(number(12), static_cast<std::uint32_t>(route.metric));
        for (const host::SubId column : {13, 14, 15, 16}) {
            EXPECT_EQ(number(column), UINT32_MAX) << "-1";
        }
        EXPECT_EQ(number(17), 1u);
    }
    EXPECT_EQ(indexesOf(*table, inetCidrRouteEntry), expected);
    checkRandomly(*table, inetCidrRouteEntry);
}

TEST_F(ForwardingTablesTest, ipCidrRouteTableLosesNone)
{
    const SourcePointer table = ipCidrRouteTable(hooks);
    const std::vector<Identifier> indexes = indexesOf(*table, ipCidrRouteEntry);
    std::multiset<Identifier> expected;
    for (const IpmibRoute &route : routes) {
        if (route.key.version == IPMIB_IPV4) {
            const std::uint8_t *to = route.key.destination;
            const std::uint8_t none[4] = {};
            const std::uint8_t *via = route.key.next_hop_type == IPMIB_NEXT_HOP_IPV4 ? route.key.next_hop : none;
            const std::uint32_t mask = route.key.prefix_length == 0 ? 0 : UINT32_MAX << (32 - route.key.prefix_length);
            expected.insert({to[0], to[1], to[2], to[3], mask >> 24, mask >> 16 & 255, mask >> 8 & 255, mask & 255,
                             route.tos, via[0], via[1], via[2], via[3]});
        }
    }
    std::multiset<Identifier> found;
    for (Identifier index : indexes) {
        index[8] %= 256;
        found.insert(index);
    }
    EXPECT_EQ(found, expected);
    checkRandomly(*table, ipCidrRouteEntry);
    const Identifier repeated{10, 0, 0, 0, 255, 255, 0, 0, 8 + 512, 192, 0, 2, 7};
    EXPECT_EQ(get(*table, ipCidrRouteEntry, 11, repeated).number, 4'294'967u) << "the third one";
    const Identifier nowhere{10, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(get(*table, ipCidrRouteEntry, 6, nowhere).number, 2u) << "a black hole rejects";
    EXPECT_EQ(get(*table, ipCidrRouteEntry, 9, nowhere).objectId.size(), 2u);
}

TEST_F(ForwardingTablesTest, ipRouteTableHasTheFirstRouteOfEachDestination)
{
    const SourcePointer table = ipRouteTable(hooks);
    std::map<Identifier, IpmibRoute> first;
    for (const IpmibRoute &route : routes) {
        if (route.key.version == IPMIB_IPV4) {
            first.emplace(Identifier(route.key.destination, route.key.destination + 4), route);
        }
    }
    std::vector<Identifier> expected;
    for (const auto &[index, route] : first) {
        expected.push_back(index);
        EXPECT_EQ(get(*table, ipRouteEntry, 2, index).number, route.if_index);
        EXPECT_EQ(get(*table, ipRouteEntry, 10, index).number, route.age_s);
        EXPECT_EQ(get(*table, ipRouteEntry, 11, index).octets[0],
                  static_cast<std::uint8_t>(
                      route.key.prefix_length == 0 ? 0 : 0xFF00u >> std::min(8u, route.key.prefix_length)));
    }
    EXPECT_EQ(indexesOf(*table, ipRouteEntry), expected);
    checkRandomly(*table, ipRouteEntry);
    EXPECT_EQ(get(*table, ipRouteEntry, 8, {0, 0, 0, 0}).number, 1u);
    EXPECT_EQ(get(*table, ipRouteEntry, 8, {10, 1, 3, 0}).number, 4u);
    EXPECT_EQ(get(*table, ipRouteEntry, 9, {10, 1, 3, 0}).number, 14u);
    EXPECT_EQ(get(*table, ipRouteEntry, 8, {255, 255, 255, 255}).number, 4u);
}

TEST_F(ForwardingTablesTest, theNumbersAreThoseOfTheWalks)
{
    const SourcePointer scalars = forwardingScalars(hooks);
    const auto number = [&](host::SubId column) {
        return get(*scalars, {1, 3, 6, 1, 2, 1, 4, 24}, column, {0}).number;
    };
    EXPECT_EQ(number(3), indexesOf(*ipCidrRouteTable(hooks), ipCidrRouteEntry).size());
    EXPECT_EQ(number(6), indexesOf(*inetCidrRouteTable(hooks), inetCidrRouteEntry).size());
    EXPECT_EQ(number(8), 0u);
    hooks.limit(100);
    EXPECT_EQ(number(3), indexesOf(*ipCidrRouteTable(hooks), ipCidrRouteEntry).size());
    EXPECT_EQ(number(6), 100u);
    EXPECT_EQ(number(8), routes.size() - 100);
}

} // namespace
} // namespace ipmib::tables
