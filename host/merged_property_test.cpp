// SPDX-License-Identifier: BSD-3-Clause
// For random sources of one table, rows in C++ and a module's, and random identifiers: what follows is what the sorted
// union of their instances says, and a get finds exactly them, with the value of the first source that has it.
#include "merged_source.h"
#include "rest_of_table.h"

#include "resolver.h"
#include "testing/packets.h"
#include "testing/sorted_rows.h"
#include "testing/sorted_table.h"
#include "testing/test_module.h"
#include "testing/test_tree.h"

#include <gtest/gtest.h>

#include <map>

namespace ipmib::host::testing
{
namespace
{

const Identifier entry{1, 2, 1};
constexpr SubId firstOwnColumn = 3; // the module's are 2 and 3

// What a source answers with, so that its values can be told from those of the others.
template <unsigned Source>
std::optional<Value> valueFrom(const SortedRow &row)
{
    return Value{ValueType::octets, Source, {reinterpret_cast<const std::uint8_t *>(row.instance.data()), 4}, {}};
}

SubId randomAt(Random &random, const SubIdRange &range)
{
    const SubId notable[] = {range.low,
                             range.low + std::min<SubId>(1, range.high - range.low),
                             range.low + std::min<SubId>(2, range.high - range.low),
                             range.low + std::min<SubId>(4, range.high - range.low),
                             range.high - std::min<SubId>(1, range.high - range.low),
                             range.high};
    return pick(random, notable);
}

Identifier randomInstance(Random &random, IndexShape shape)
{
    Identifier instance;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        instance.push_back(randomAt(random, shape[i]));
        if (!shape[i].isLength) {
            continue;
        }
        for (SubId octets = instance.back(); octets > 0; --octets) {
            instance.push_back(randomAt(random, anyOctet));
        }
        i += shape[i].high;
    }
    return instance;
}

// The sources of one world, the first one first, and all that they have.
struct World {
    std::vector<std::unique_ptr<Source>> sources;
    std::vector<std::unique_ptr<Source>> behind; // what sources are made of
    std::vector<Identifier> objects;
    std::map<Identifier, unsigned> instances; // whose value counts

    void add(const Identifier &object, const Identifier &instance, unsigned source)
    {
        Identifier name = object;
        name.insert(name.end(), instance.begin(), instance.end());
        instances.emplace(name, source);
    }

    template <unsigned Number, std::size_t N, const SubIdRange (&shape)[N]>
    void addRows(Random &random)
    {
        std::vector<RowColumn<SortedRow>> columns;
        for (SubId column = firstOwnColumn; column < firstOwnColumn + 4; ++column) {
            if (random() % 2 == 0) {
                columns.push_back({column, valueFrom<Number>, random() % 2 != 0 ? 1u : 0u});
            }
        }
        std::map<Identifier, bool> rows;
        for (std::size_t count = random() % 12; count > 0; --count) {
            rows.emplace(randomInstance(random, shape), random() % 4 != 0);
        }
        std::vector<SortedRow> listed;
        for (const auto &[instance, isWhole] : rows) {
            listed.push_back({instance, isWhole});
        }
        for (const auto &column : columns) {
            Identifier object = entry;
            object.push_back(column.number);
            objects.push_back(object);
            for (const SortedRow &row : listed) {
                if (row.isWhole || column.needs == 0) {
                    add(object, row.instance, Number);
                }
            }
        }
        sources.push_back(
            std::make_unique<RowSource<SortedRows<N, shape>>>(entry, SortedRows<N, shape>(listed, columns)));
    }
};

constexpr unsigned ofModule = 100;

void addModule(World &world, Random &random, const TestTree &tree, SortedTable &table)
{
    table.clear();
    for (std::size_t rows = random() % 12; rows > 0; --rows) {
        table.add({{randomAt(random, anyIfIndex)}});
    }
    const bool isOneRowOnly = random() % 2 == 0;
    const SubId ofRows = randomAt(random, anyIfIndex);
    for (const Identifier &object : table.objects()) {
        world.objects.push_back(object);
    }
    for (const Identifier &instance : table.instances()) {
        if (!isOneRowOnly || instance.back() == ofRows) {
            world.instances.emplace(instance, ofModule);
        }
    }
    auto resolver = std::make_unique<Resolver>(const_cast<TestTree &>(tree).root(), TestModule::callback, nullptr);
    if (!isOneRowOnly) {
        world.sources.push_back(std::move(resolver));
        return;
    }
    world.sources.push_back(std::make_unique<RestOfTable>(*resolver, entry, ofRows, true));
    world.behind.push_back(std::move(resolver));
}

TEST(MergedProperty, agreesWithTheSortedUnionOfItsSources)
{
    TestTree tree;
    SortedTable ahead(tree, 1, std::vector{integer(1, INT32_MAX)}, {});
    SortedTable table(tree, 2, std::vector{integer(1, INT32_MAX)}, {});
    SortedTable behind(tree, 3, std::vector{integer(1, INT32_MAX)}, {});
    ahead.add({{1}});
    behind.add({{1}});
    TestModule module([&](MorRequest *request, MorReply *reply) {
        const std::uint32_t id = MOR_GetTableId(request);
        return (id == 1 ? ahead : id == 2 ? table : behind).answer(request, reply);
    });

    Random random(14);
    for (int number = 0; number < 600 && !HasFailure(); ++number) {
        World world;
        const bool withModule = random() % 2 == 0;
        const bool isModuleFirst = random() % 2 == 0;
        if (withModule && isModuleFirst) {
            addModule(world, random, tree, table);
        }
        world.addRows<1, std::size(numberShape), numberShape>(random);
        if (random() % 2 == 0) {
            world.addRows<2, std::size(widestShape), widestShape>(random);
        }
        if (random() % 2 == 0) {
            world.addRows<3, std::size(addressShape), addressShape>(random);
        }
        if (random() % 2 == 0) {
            world.addRows<4, std::size(octetsShape), octetsShape>(random);
        }
        if (random() % 2 == 0) {
            world.addRows<5, std::size(betweenShape), betweenShape>(random);
        }
        if (withModule && !isModuleFirst) {
            addModule(world, random, tree, table);
        }
        if (world.objects.empty()) {
            continue;
        }
        std::vector<Identifier> names;
        std::vector<Source *> sources;
        for (const auto &[name, source] : world.instances) {
            names.push_back(name);
        }
        for (const auto &source : world.sources) {
            sources.push_back(source.get());
        }
        const Instances instances(world.objects, names);
        const ExpectValue expectValue = [&world](OidView name, const Value &value) {
            const Identifier instance(name.begin(), name.end());
            const unsigned source = world.instances.at(instance);
            if (source == ofModule) {
                EXPECT_EQ(value.type, ValueType::unsigned32);
                return;
            }
            EXPECT_EQ(value.number, source);
            ASSERT_EQ(value.octets.size(), 4u);
            EXPECT_EQ(reinterpret_cast<const SubId *>(value.octets.data())[0], instance[entry.size() + 1]);
        };
        MergedSource merged(entry, sources);
        checkWalk(merged, instances, entry, expectValue);
        for (int packet = 0; packet < 40 && !HasFailure(); ++packet) {
            SCOPED_TRACE("world " + std::to_string(number) + ", packet " + std::to_string(packet));
            if (random() % 3 == 0) {
                merged.beginPacket(); // else what was learned before goes on to count
            }
            checkGetNext(merged, instances, random, expectValue);
            checkGet(merged, instances, random, expectValue, [](OidView) { return false; });
        }
    }
}

constexpr SubIdRange pairShape[] = {{1, 4}, {0, UINT32_MAX}};
constexpr SubIdRange versionShape[] = {{0, 3}};

TEST(RestOfTableProperty, hasTheRowsOfOneNumber)
{
    Random random(15);
    for (int number = 0; number < 600 && !HasFailure(); ++number) {
        World world;
        const bool isWholeIndex = number % 2 == 0;
        if (isWholeIndex) {
            world.addRows<1, std::size(versionShape), versionShape>(random);
        } else {
            world.addRows<1, std::size(pairShape), pairShape>(random);
        }
        if (world.objects.empty()) {
            continue;
        }
        const SubId ofRows = 1 + random() % 4;
        std::vector<Identifier> names;
        for (const auto &[name, source] : world.instances) {
            if (name[entry.size() + 1] == ofRows) {
                names.push_back(name);
            }
        }
        const Instances instances(world.objects, names);
        const ExpectValue expectValue = [](OidView, const Value &value) { EXPECT_EQ(value.number, 1u); };
        RestOfTable rest(*world.sources.front(), entry, ofRows, isWholeIndex);
        checkWalk(rest, instances, entry, expectValue);
        for (int packet = 0; packet < 40 && !HasFailure(); ++packet) {
            SCOPED_TRACE("world " + std::to_string(number) + ", packet " + std::to_string(packet));
            checkGetNext(rest, instances, random, expectValue);
            checkGet(rest, instances, random, expectValue, [](OidView) { return false; });
        }
    }
}

} // namespace
} // namespace ipmib::host::testing
