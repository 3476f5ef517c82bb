// SPDX-License-Identifier: BSD-3-Clause
// For random tables over every index shape, and random identifiers: what follows is what the sorted list of all
// instances says, and a get finds exactly them.
#include "resolver.h"

#include "testing/packets.h"
#include "testing/sorted_table.h"
#include "testing/test_module.h"
#include "testing/test_tree.h"
#include "tree_check.h"

#include <gtest/gtest.h>

namespace ipmib::host::testing
{
namespace
{

const TestSyntax ifIndex = integer(1, INT32_MAX);
const TestSyntax ipVersion = labels({0, 1, 2});
const TestSyntax addressType = labels({0, 1, 2, 3, 4, 16});
const TestSyntax address = octets(0, 255);
const TestSyntax ipAddress = {MIB_TYPE_IPADDRESS};

struct Shape {
    const char *name;
    std::vector<TestSyntax> index;
    SortedTable::Manners manners = {};
};

const Shape shapes[] = {
    {"interface", {ifIndex}},
    {"version", {ipVersion}},
    {"version_interface", {ipVersion, ifIndex}},
    {"version_interface_refusing_0", {ipVersion, ifIndex}, {std::nullopt, true}},
    {"version_type", {ipVersion, integer(0, 255)}},
    {"type_address", {addressType, address}, {0}},
    {"interface_type_address", {ifIndex, addressType, address}, {1}},
    {"type_address_interface", {addressType, address, ifIndex}, {0}},
    {"interface_type_address_length", {ifIndex, addressType, address, unsigned32(0, 2040)}, {1}},
    {"ip_address", {ipAddress}},
    {"interface_ip_address", {integer(1, INT32_MAX), ipAddress}},
    {"octets", {octets(0, 255)}},
    {"octets_octets", {octets(1, 4), octets(0, 65535)}},
    {"fixed_octets_number", {octets(2, 2), unsigned32()}},
    {"number_octets_number", {unsigned32(), octets(0, 3), integer(5, 9)}},
};

SortedTable::Part randomOctets(Random &random, std::size_t length)
{
    SortedTable::Part part(length);
    for (SubId &octet : part) {
        octet = random() % 3 ? 0 : pick(random, std::vector<SubId>{0, 1, 2, 254, 255});
    }
    return part;
}

SortedTable::Part randomPart(Random &random, const TestSyntax &syntax, const SortedTable::Part *typeBefore)
{
    switch (syntax.type) {
    case MIB_TYPE_ENUM:
        return {static_cast<SubId>(pick(random, syntax.labels).lValue)};
    case MIB_TYPE_IPADDRESS:
        return randomOctets(random, 4);
    case MIB_TYPE_OCTETS: {
        if (typeBefore) {
            return randomOctets(random, typeBefore->front() == 2 ? 16 : 20);
        }
        const auto shortest = static_cast<std::size_t>(syntax.ranges.front().lLow);
        const auto longest = std::min<std::size_t>(5, static_cast<std::size_t>(syntax.ranges.front().lHigh));
        return randomOctets(random, shortest + random() % (longest - shortest + 1));
    }
    default: {
        const auto low = syntax.ranges.empty() ? 0 : static_cast<SubId>(syntax.ranges.front().lLow);
        const auto high = syntax.ranges.empty() ? UINT32_MAX : static_cast<SubId>(syntax.ranges.front().lHigh);
        const SubId notable[] = {low, low + 1, low + 2, low + 3, std::min(high, low + 254), high - 1, high};
        return {pick(random, notable)};
    }
    }
}

SortedTable::Key randomRow(Random &random, const Shape &shape)
{
    SortedTable::Key row;
    for (std::size_t i = 0; i < shape.index.size(); ++i) {
        const bool isTyped = shape.manners.typePart && i == *shape.manners.typePart + 1;
        row.push_back(randomPart(random, shape.index[i], isTyped ? &row.back() : nullptr));
        if (shape.manners.typePart && i == *shape.manners.typePart) {
            row.back() = {random() % 2 ? 2u : 4u}; // the types whose rows such a module has
        } else if (i == 0 && shape.manners.refusesZero && row.back().front() == 0) {
            row.back() = {1};
        }
    }
    return row;
}

class ResolverProperty : public ::testing::TestWithParam<Shape>
{
};

TEST_P(ResolverProperty, agreesWithTheSortedListOfInstances)
{
    const Shape &shape = GetParam();
    TestTree tree;
    // Tables in front and behind, so that walks begin and go on elsewhere.
    std::deque<SortedTable> tables;
    tables.emplace_back(tree, 1, std::vector{ifIndex}, SortedTable::Manners{});
    tables.emplace_back(tree, 2, shape.index, shape.manners);
    tables.emplace_back(tree, 3, std::vector{ipVersion}, SortedTable::Manners{});
    ASSERT_EQ(checkTree(&tree.root()), "");

    TestModule module([&tables](MorRequest *request, MorReply *reply) {
        return tables[MOR_GetTableId(request) - 1].answer(request, reply);
    });
    const ExpectValue expectValue = [&shape](OidView name, const Value &value) {
        const SubId table = name[1];
        const Identifier instance(name.begin() + 4, name.end());
        EXPECT_EQ(value.type, ValueType::unsigned32);
        EXPECT_EQ(value.number, SortedTable::valueOf(ip_ParamId(table, name[3]), instance));
    };

    Random random(20);
    for (int world = 0; world < 40 && !HasFailure(); ++world) {
        std::vector<Identifier> objects;
        std::vector<Identifier> all;
        for (std::size_t i = 0; i < tables.size(); ++i) {
            SortedTable &table = tables[i];
            table.clear();
            for (std::size_t rows = random() % 4 * (random() % 5); rows > 0; --rows) {
                table.add(i == 0   ? SortedTable::Key{{pick(random, std::vector<SubId>{1, 2, 3})}}
                          : i == 1 ? randomRow(random, shape)
                                   : SortedTable::Key{{2}});
            }
            for (const Identifier &object : table.objects()) {
                objects.push_back(object);
            }
            for (const Identifier &instance : table.instances()) {
                all.push_back(instance);
            }
        }
        const Instances instances(objects, all);
        Resolver resolver(tree.root(), TestModule::callback, nullptr);
        checkWalk(resolver, instances, Identifier{1}, expectValue);
        for (int packet = 0; packet < 150 && !HasFailure(); ++packet) {
            SCOPED_TRACE("world " + std::to_string(world) + ", packet " + std::to_string(packet));
            checkGetNext(resolver, instances, random, expectValue);
            checkGet(resolver, instances, random, expectValue, [](OidView) { return false; });
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, ResolverProperty, ::testing::ValuesIn(shapes),
                         [](const auto &shape) { return std::string(shape.param.name); });

} // namespace
} // namespace ipmib::host::testing
