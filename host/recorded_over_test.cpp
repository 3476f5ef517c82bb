// SPDX-License-Identifier: BSD-3-Clause
// For random instances of a table, random recorded objects and random subtrees that are lacking: what follows is what
// the sorted union says, and a get finds exactly that.
#include "recorded_over.h"
#include "testing/identifiers.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace ipmib::host::testing
{
namespace
{

const Identifier recordedEntry{1, 2, 1};
constexpr std::uint64_t ofTable = 1;
constexpr std::uint64_t ofRecord = 2;

using Names = std::set<Identifier>;

class Table final : public Source
{
  public:
    Names names;

    std::vector<Oid> objects() const override { return {}; }
    void get(std::span<Variable> variables) override
    {
        for (Variable &variable : variables) {
            const Identifier name(variable.asked.begin(), variable.asked.end());
            variable.status = names.contains(name) ? Status::ok : Status::noSuchInstance;
            variable.value = {ValueType::integer32, ofTable, {}, {}};
        }
    }
    void getNext(std::span<Variable> variables, OidView region) override
    {
        for (Variable &variable : variables) {
            const bool isInFront = compare(variable.asked, region) < 0;
            const OidView from = isInFront ? region : variable.asked;
            const Identifier place(from.begin(), from.end());
            const auto next = isInFront ? names.lower_bound(place) : names.upper_bound(place);
            variable.status = Status::endOfRegion;
            if (next != names.end() && isWithin(*next, region)) {
                variable.status = Status::ok;
                variable.name.assign(*next);
                variable.value = {ValueType::integer32, ofTable, {}, {}};
            }
        }
    }
};

Names recordedNames;
std::vector<Identifier> lackingRoots;

int describe(Names::const_iterator found, IpmibRecordedObject *object)
{
    if (found == recordedNames.end()) {
        return -1;
    }
    *object = {found->data(), found->size(), IPMIB_RECORDED_COUNTER64, ofRecord, nullptr, 0, nullptr, 0};
    return 0;
}

std::size_t lacks(const std::uint32_t *name, std::size_t length)
{
    for (const Identifier &root : lackingRoots) {
        if (isWithin({name, length}, root)) {
            return root.size();
        }
    }
    return 0;
}

const IpmibRecordedHooks hooks = {
    sizeof(IpmibRecordedHooks), [] { return recordedNames.empty() && lackingRoots.empty() ? 0u : 1u; },
    [](const std::uint32_t *name, std::size_t length, IpmibRecordedObject *object) {
        return describe(recordedNames.find(Identifier(name, name + length)), object);
    },
    [](const std::uint32_t *name, std::size_t length, IpmibRecordedObject *object) {
        return describe(recordedNames.upper_bound(Identifier(name, name + length)), object);
    },
    lacks};

// Of columns 2 to 4, with an index of two parts.
Names randomNames(Random &random, std::size_t count)
{
    const SubId parts[] = {0, 1, 2, 5, UINT32_MAX};
    Names names;
    while (count-- > 0) {
        Identifier name = recordedEntry;
        name.push_back(2 + static_cast<SubId>(random() % 3));
        name.push_back(pick(random, parts));
        name.push_back(pick(random, parts));
        names.insert(name);
    }
    return names;
}

Identifier beginning(Random &random, const Identifier &name)
{
    Identifier part = name;
    part.resize(recordedEntry.size() + 1 + random() % (name.size() - recordedEntry.size()));
    return part;
}

class World
{
  public:
    explicit World(Random &random)
    {
        table_.names = randomNames(random, random() % 30);
        recordedNames = randomNames(random, random() % 10);
        lackingRoots.clear();
        for (const Identifier &name : randomNames(random, random() % 4)) {
            lackingRoots.push_back(beginning(random, name));
        }
        for (const Identifier &name : table_.names) {
            if (lacks(name.data(), name.size()) == 0) {
                all_[name] = ofTable;
            }
        }
        for (const Identifier &name : recordedNames) {
            all_[name] = ofRecord;
        }
    }

    void check(Random &random)
    {
        RecordedOver source(&table_, hooks);
        Variable variables[3];
        Identifier asked[3];
        for (std::size_t i = 0; i < 3; ++i) {
            asked[i] = *randomNames(random, 1).begin();
            asked[i] = random() % 2 == 0 ? asked[i] : beginning(random, asked[i]);
            variables[i].asked = asked[i];
        }
        const Identifier region = random() % 3 == 0 ? beginning(random, asked[0]) : recordedEntry;
        source.getNext(variables, region);
        for (std::size_t i = 0; i < 3; ++i) {
            const bool isInFront = compare(asked[i], region) < 0;
            const auto next = isInFront ? all_.lower_bound(region) : all_.upper_bound(asked[i]);
            const bool isThere = next != all_.end() && isWithin(next->first, region);
            ASSERT_EQ(variables[i].status, isThere ? Status::ok : Status::endOfRegion) << text(asked[i]);
            if (isThere) {
                EXPECT_EQ(text(variables[i].name.view()), text(next->first)) << text(asked[i]);
                EXPECT_EQ(variables[i].value.number, next->second);
            }
        }
        source.get(variables);
        for (std::size_t i = 0; i < 3; ++i) {
            const auto found = all_.find(asked[i]);
            ASSERT_EQ(variables[i].status, found == all_.end() ? Status::noSuchInstance : Status::ok);
            EXPECT_TRUE(found == all_.end() || variables[i].value.number == found->second);
        }
    }

  private:
    Table table_;
    std::map<Identifier, std::uint64_t> all_; // with whose value it has
};

} // namespace

TEST(RecordedOver, IsTheSortedUnionWithoutWhatIsLacking)
{
    Random random(20);
    for (int world = 0; world < 500; ++world) {
        World(random).check(random);
        World same(random);
        for (int i = 0; i < 20 && !::testing::Test::HasFatalFailure(); ++i) {
            same.check(random);
        }
    }
}

TEST(RecordedOver, WithoutASourceHasTheRecordedObjectsAlone)
{
    recordedNames = {{1, 3, 5}, {1, 3, 7, 1}};
    lackingRoots.clear();
    RecordedOver source(nullptr, hooks);
    const Identifier region{1, 3};
    Variable variable;
    variable.asked = region;
    std::string found;
    for (source.getNext({&variable, 1}, region); variable.status == Status::ok;
         source.getNext({&variable, 1}, region)) {
        found += text(variable.name.view()) + " ";
        const Oid last = variable.name;
        variable.asked = *std::find_if(recordedNames.begin(), recordedNames.end(),
                                       [&](const Identifier &name) { return std::is_eq(compare(name, last.view())); });
    }
    EXPECT_EQ(found, "1.3.5 1.3.7.1 ");
}

} // namespace ipmib::host::testing
