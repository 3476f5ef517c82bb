// SPDX-License-Identifier: BSD-3-Clause
// The way to the owner of a table, with an agent that answers as a test wants.

#include "ownership.h"

#include <gtest/gtest.h>

#include <set>

namespace ipmib::agent
{

namespace
{

using host::Oid;
using Answer = Claim::Answer;

const host::ServedTable table = {
    "aTable", Oid{1, 3, 4}, Oid{1, 3, 4, 1}, Oid{1, 3, 4, 1}, {Oid{1, 3, 4, 1, 3}, Oid{1, 3, 4, 1, 5}}};
// Of this one ours is known to have all rows that agents have.
const host::ServedTable superior = {"aTable", table.identifier, table.root, table.inner, table.objects, nullptr, true};

// An agent with registrations of this text: "1.3.4 127".
struct Agent {
    std::set<std::string> registered;
    std::set<std::string> denied = {};

    Answer answer(const Claim::Attempt &attempt)
    {
        const std::string place = host::textOf(attempt.root) + " " + std::to_string(attempt.priority);
        if (!attempt.registering) {
            EXPECT_EQ(registered.erase(place), 1u) << place;
            return Answer::granted;
        }
        if (denied.contains(place)) {
            return Answer::refused;
        }
        return registered.insert(place).second ? Answer::granted : Answer::duplicate;
    }

    Claim decide(const host::ServedTable &wanted, Serve wish, Claim::WhenOff whenOff = Claim::WhenOff::leaveAlone)
    {
        Claim claim(wanted, wish, whenOff);
        for (int step = 0; step < 20; ++step) {
            const auto attempt = claim.next();
            if (!attempt) {
                break;
            }
            claim.take(answer(*attempt), "reason");
        }
        EXPECT_NE(claim.owner(), Owner::undecided);
        return claim;
    }
};

using Places = std::set<std::string>;

TEST(Claim, WhatIsOffIsTheAgentsWhereItHasIt)
{
    const auto look = [](Agent agent) {
        const Places before = agent.registered;
        const Claim claim = agent.decide(table, Serve::off, Claim::WhenOff::look);
        EXPECT_EQ(agent.registered, before);
        EXPECT_FALSE(claim.isFault());
        return claim.owner();
    };
    EXPECT_EQ(look({{}}), Owner::off);
    EXPECT_EQ(look({{"1.3.4 127"}}), Owner::agents);
    EXPECT_EQ(look({{"1.3.4.1 127"}}), Owner::agents);
    EXPECT_EQ(look({{}, {"1.3.4 127"}}), Owner::off) << "nobody may look there";
}

TEST(Claim, WhatNobodyHasIsOurs)
{
    for (const Serve wish : {Serve::automatic, Serve::take}) {
        Agent agent{{}};
        const Claim claim = agent.decide(table, wish);
        EXPECT_EQ(textOf(claim), "ours");
        EXPECT_TRUE(claim.isOurs());
        EXPECT_EQ(agent.registered, Places{"1.3.4 93"});
    }
}

TEST(Claim, WhatTheAgentHasStaysItsOwn)
{
    for (const char *place : {"1.3.4 127", "1.3.4.1 127"}) {
        Agent agent{{place}};
        EXPECT_EQ(textOf(agent.decide(table, Serve::automatic)), "the master's");
        EXPECT_EQ(agent.registered, Places{place});
    }
}

TEST(Claim, WhatIsTakenIsTakenWhereTheAgentHasIt)
{
    Agent atTheTable{{"1.3.4 127"}};
    EXPECT_EQ(textOf(atTheTable.decide(table, Serve::take)), "ours, in place of the master's");
    EXPECT_EQ(atTheTable.registered, (Places{"1.3.4 127", "1.3.4 93"}));
    Agent atBoth{{"1.3.4 127", "1.3.4.1 127"}};
    EXPECT_EQ(atBoth.decide(table, Serve::take).owner(), Owner::oursInstead);
    EXPECT_EQ(atBoth.registered, (Places{"1.3.4 127", "1.3.4 93", "1.3.4.1 127", "1.3.4.1 93"}));
}

TEST(Claim, AnAgentThatRegistersItsColumnsOneByOneHasTheTable)
{
    Agent agent{{"1.3.4.1.3 127", "1.3.4.1.5 127"}};
    EXPECT_EQ(textOf(agent.decide(table, Serve::automatic)), "the master's");
    EXPECT_EQ(agent.registered, (Places{"1.3.4.1.3 127", "1.3.4.1.5 127"}));
    EXPECT_EQ(agent.decide(table, Serve::take).owner(), Owner::oursInstead);
    EXPECT_EQ(agent.registered, (Places{"1.3.4.1.3 127", "1.3.4.1.5 127", "1.3.4.1.3 93", "1.3.4.1.5 93"}));
}

TEST(Claim, ATableOfWhichOursHasAllRowsTakesTheAgentsPlace)
{
    Agent agent{{"1.3.4 127"}};
    EXPECT_EQ(agent.decide(superior, Serve::automatic).owner(), Owner::oursInstead);
    EXPECT_EQ(agent.registered, (Places{"1.3.4 127", "1.3.4 93"}));
    Agent without{{}};
    EXPECT_EQ(without.decide(superior, Serve::automatic).owner(), Owner::ours);
    EXPECT_EQ(without.registered, Places{"1.3.4 93"});
    Agent beside{{"1.3.4 127", "1.3.4 93"}};
    EXPECT_FALSE(beside.decide(superior, Serve::automatic).isFault());
    EXPECT_EQ(textOf(beside.decide(superior, Serve::automatic)), "another sub-agent's");
}

TEST(Claim, AnotherOfOurKindIsLeftAloneAndIsAFaultWhenItWasToBeTaken)
{
    Agent agent{{"1.3.4 93"}};
    EXPECT_EQ(textOf(agent.decide(table, Serve::automatic)), "another sub-agent's");
    EXPECT_FALSE(agent.decide(table, Serve::automatic).isFault());
    const Claim taken = agent.decide(table, Serve::take);
    EXPECT_EQ(textOf(taken), "refused, another sub-agent has it: reason");
    EXPECT_TRUE(taken.isFault());
    EXPECT_EQ(agent.registered, Places{"1.3.4 93"});
}

TEST(Claim, WhatWasGrantedIsGivenBackWhenTheRestIsNot)
{
    Agent agent{{"1.3.4 127", "1.3.4.1 127", "1.3.4.1 93"}};
    EXPECT_EQ(agent.decide(superior, Serve::automatic).owner(), Owner::others);
    EXPECT_EQ(agent.registered, (Places{"1.3.4 127", "1.3.4.1 127", "1.3.4.1 93"}));
}

TEST(Claim, AnAgentThatDeniesIsAFault)
{
    for (const char *place : {"1.3.4 127", "1.3.4 93"}) {
        Agent agent{{}, {place}};
        const Claim claim = agent.decide(table, Serve::automatic);
        EXPECT_EQ(textOf(claim), "refused: reason");
        EXPECT_TRUE(claim.isFault());
        EXPECT_EQ(agent.registered, Places{});
    }
}

host::ServedTable scalarOfGroup(host::SubId number)
{
    const Oid identifier{1, 3, 6, number};
    host::ServedTable scalar = {"aGroup", identifier, identifier, Oid{1, 3, 6, number, 0}, {identifier}};
    scalar.isOfGroup = true;
    return scalar;
}

TEST(Claim, ScalarsOfAGroupStayTheAgentsUnlessTheyAreTaken)
{
    const host::ServedTable scalar = scalarOfGroup(1);
    Agent agent{{"1.3.6 127"}};
    EXPECT_EQ(agent.decide(scalar, Serve::automatic).owner(), Owner::agents);
    EXPECT_EQ(agent.registered, Places{"1.3.6 127"});
    EXPECT_EQ(agent.decide(scalar, Serve::take).owner(), Owner::oursInstead);
    EXPECT_EQ(agent.registered, (Places{"1.3.6 127", "1.3.6 93"}));
    Agent without{{}};
    EXPECT_EQ(without.decide(scalar, Serve::automatic).owner(), Owner::ours);
    EXPECT_EQ(without.registered, Places{"1.3.6.1 93"});
}

TEST(Claim, ScalarsOfAGroupThatIsOneForTheAgentGoWithTheFirst)
{
    const host::ServedTable scalars[] = {scalarOfGroup(1), scalarOfGroup(2)};
    for (const Serve wish : {Serve::automatic, Serve::take}) {
        Agent agent{{"1.3.6 127"}};
        const Claim first = agent.decide(scalars[0], wish);
        const Places then = agent.registered;
        Claim second(scalars[1], wish);
        second.goWith({&first, 1});
        EXPECT_FALSE(second.next());
        EXPECT_EQ(second.owner(), first.owner());
        EXPECT_EQ(agent.registered, then);
    }
    Agent nobody{{}};
    const Claim first = nobody.decide(scalars[0], Serve::take);
    Claim second(scalars[1], Serve::take);
    second.goWith({&first, 1});
    EXPECT_TRUE(second.next()) << "it has a place of its own";
}

TEST(Claim, WithinTheAgentsProcessEachScalarHasAPlaceOfItsOwn)
{
    const host::ServedTable scalar = scalarOfGroup(1);
    Agent agent{{"1.3.6 127"}};
    Claim claim(scalar, Serve::take, Claim::WhenOff::leaveAlone, Claim::Groups::oneByOne);
    while (const auto attempt = claim.next()) {
        claim.take(agent.answer(*attempt));
    }
    EXPECT_EQ(claim.owner(), Owner::oursInstead);
    EXPECT_EQ(agent.registered, (Places{"1.3.6 127", "1.3.6.1 93"}));
}

TEST(Claim, OffAsksForNothing)
{
    const Claim claim(table, Serve::off);
    EXPECT_FALSE(claim.next());
    EXPECT_EQ(textOf(claim), "off");
    EXPECT_FALSE(claim.isFault());
}

} // namespace

} // namespace ipmib::agent
