// SPDX-License-Identifier: BSD-3-Clause
// Compares what a source answers with what the list of instances says.
#include "packets.h"

#include <gtest/gtest.h>

namespace ipmib::host::testing
{
namespace
{

// Some variables that often, as those of a collector do, ask for one row in several columns.
std::vector<Identifier> randomPacket(const Instances &instances, Random &random)
{
    std::vector<Identifier> packet;
    for (std::size_t i = random() % 4 + 1; i > 0; --i) {
        packet.push_back(instances.random(random));
    }
    return packet;
}

std::vector<Variable> variablesOf(const std::vector<Identifier> &packet)
{
    std::vector<Variable> variables(packet.size());
    for (std::size_t i = 0; i < packet.size(); ++i) {
        variables[i].asked = packet[i];
    }
    return variables;
}

void expectSuccessor(const Variable &variable, const Identifier *expected, const ExpectValue &expectValue)
{
    if (!expected) {
        EXPECT_EQ(variable.status, Status::endOfRegion) << "answered " << text(variable.name.view());
        return;
    }
    ASSERT_EQ(variable.status, Status::ok) << "expected " << text(*expected);
    ASSERT_EQ(text(variable.name.view()), text(*expected));
    expectValue(variable.name.view(), variable.value);
}

} // namespace

namespace
{

// What a source says of its successor without looking must hold.
void checkLowest(Source &source, const Instances &instances, OidView asked)
{
    const Identifier *expected = instances.after(asked, {});
    Oid lowest;
    const bool canFollow = source.lowestBehind(asked, lowest);
    if (expected != nullptr) {
        EXPECT_TRUE(canFollow) << "after " << text(asked);
        EXPECT_TRUE(std::is_lteq(compare(lowest.view(), *expected)))
            << "after " << text(asked) << " follows " << text(*expected) << ", in front of " << text(lowest.view());
    }
}

} // namespace

void checkGetNext(Source &source, const Instances &instances, Random &random, const ExpectValue &expectValue)
{
    const auto packet = randomPacket(instances, random);
    auto variables = variablesOf(packet);
    const Identifier region = instances.randomRegion(random);
    source.getNext(variables, region);
    for (const Variable &variable : variables) {
        SCOPED_TRACE("after " + text(variable.asked) + " within " + text(region));
        // Before the region, its root may be an instance itself.
        const bool isBefore = std::is_lt(compare(variable.asked, region)) && instances.has(region);
        expectSuccessor(variable, isBefore ? &region : instances.after(variable.asked, region), expectValue);
        checkLowest(source, instances, variable.asked);
    }
}

void checkWalk(Source &source, const Instances &instances, OidView region, const ExpectValue &expectValue)
{
    Variable variable;
    Oid asked(region);
    for (;;) {
        SCOPED_TRACE("after " + text(asked.view()) + " within " + text(region));
        variable.asked = asked.view();
        source.getNext({&variable, 1}, region);
        expectSuccessor(variable, instances.after(asked.view(), region), expectValue);
        if (variable.status != Status::ok || std::is_lteq(compare(variable.name.view(), asked.view()))) {
            return;
        }
        asked = variable.name;
    }
}

void checkGet(Source &source, const Instances &instances, Random &random, const ExpectValue &expectValue,
              const IsLenient &isLenient)
{
    const auto packet = randomPacket(instances, random);
    auto variables = variablesOf(packet);
    source.get(variables);
    for (const Variable &variable : variables) {
        SCOPED_TRACE("get " + text(variable.asked));
        if (instances.has(variable.asked)) {
            ASSERT_EQ(variable.status, Status::ok);
            expectValue(variable.asked, variable.value);
        } else if (!isLenient(variable.asked)) {
            EXPECT_EQ(variable.status,
                      instances.hasObjectOf(variable.asked) ? Status::noSuchInstance : Status::noSuchObject);
        }
    }
}

} // namespace ipmib::host::testing
