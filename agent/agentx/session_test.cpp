// SPDX-License-Identifier: BSD-3-Clause
// What a session does with a master's messages, by the session that they are for.

#include "agent/agentx/session_bed.h"

#include "agent/varbind.h"

#include <gtest/gtest.h>

namespace ipmib::agent::agentx
{

namespace
{

constexpr long ours = 7;
constexpr long foreign = 8;

class AgentxSession : public testing::Test
{
  protected:
    // What the session answers to a request for the first instance, where one of this type has variables.
    Message answerTo(MessageType type, long sessionId)
    {
        const Message request = makeMessage(type, sessionId, 99);
        if (type == registerMessage || type == getMessage || type == getNextMessage || type == getBulkMessage) {
            addIdentifier(*request, bed_.instances().front());
        }
        bed_.send(*request);
        bed_.turn();
        return bed_.receive();
    }

    // The number of the session and of the message are those of the request, and there are no variables.
    static void expectNotOpen(const Message &response, long sessionId)
    {
        ASSERT_NE(response, nullptr);
        EXPECT_EQ(response->command, responseMessage);
        EXPECT_EQ(response->errstat, notOpen);
        EXPECT_EQ(response->sessid, sessionId);
        EXPECT_EQ(response->reqid, 99);
        EXPECT_EQ(response->variables, nullptr);
    }

    // The session's next message is about this context, and is granted or refused.
    void settle(MessageType type, const std::string &context, long error = noError)
    {
        const Message message = bed_.receive();
        ASSERT_NE(message, nullptr);
        EXPECT_EQ(message->command, type);
        EXPECT_EQ(message->sessid, ours);
        EXPECT_EQ(contextOf(*message), context);
        becomeResponse(*message, error);
        bed_.send(*message);
        bed_.turn();
    }

    Message answerIn(const std::string &context)
    {
        const Message request = makeMessage(getMessage, ours, 99);
        setContext(*request, context);
        addIdentifier(*request, bed_.instances().front());
        bed_.send(*request);
        bed_.turn();
        return bed_.receive();
    }

    SessionBed bed_;
};

TEST_F(AgentxSession, WhatItServesInAContextIsRegisteredAndAskedThere)
{
    bed_.session().serve({&bed_.servedTable()}, {"blue"});
    for (int time = 0; time < 2; ++time) { // and again in the next session
        bed_.serve(ours);
        settle(registerMessage, "blue");
        const Message response = answerIn("blue");
        ASSERT_NE(response, nullptr);
        EXPECT_EQ(response->errstat, noError);
        EXPECT_EQ(response->variables->type, ASN_UNSIGNED);
        EXPECT_EQ(answerIn("red")->errstat, unsupportedContext);
        EXPECT_EQ(answerIn("")->errstat, noError);
    }
    bed_.session().leave("blue");
    settle(unregisterMessage, "blue");
    EXPECT_EQ(answerIn("blue")->errstat, unsupportedContext);
    bed_.session().serve({&bed_.servedTable()}, {"green"}); // while the session is open
    settle(registerMessage, "green");
    EXPECT_EQ(answerIn("green")->errstat, noError);
}

TEST_F(AgentxSession, AContextThatTheMasterRefusesIsLoggedAndTheRestServed)
{
    bed_.session().serve({&bed_.servedTable()}, {"blue"});
    bed_.session().serve({&bed_.servedTable()}, {"red"});
    bed_.serve(ours);
    testing::internal::CaptureStderr();
    settle(registerMessage, "blue", unsupportedContext);
    settle(registerMessage, "red");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "agentx: context blue: the master refuses 1 of 1 registrations, the first 1.20.1: "
              "unsupportedContext (262)\n");
    EXPECT_EQ(answerIn("red")->errstat, noError);
}

TEST_F(AgentxSession, ServesTheSessionThatTheMasterOpened)
{
    bed_.serve(ours);
    const Message response = answerTo(getMessage, ours);
    ASSERT_NE(response, nullptr);
    EXPECT_EQ(response->errstat, noError);
    ASSERT_NE(response->variables, nullptr);
    EXPECT_EQ(response->variables->type, ASN_UNSIGNED);
}

TEST_F(AgentxSession, RequestsOfAnotherSessionAreNotOpen)
{
    bed_.serve(ours);
    for (const MessageType type : {getMessage, getNextMessage, getBulkMessage, testSetMessage, commitSetMessage,
                                   undoSetMessage, registerMessage}) {
        SCOPED_TRACE(type);
        expectNotOpen(answerTo(type, foreign), foreign);
    }
    EXPECT_EQ(answerTo(cleanupSetMessage, foreign), nullptr); // which has no response
    EXPECT_TRUE(bed_.session().isServing());
}

TEST_F(AgentxSession, OnlyItsOwnCloseEndsIt)
{
    bed_.serve(ours);
    expectNotOpen(answerTo(closeMessage, foreign), foreign);
    EXPECT_TRUE(bed_.session().isServing());
    EXPECT_FALSE(bed_.isClosed());
    EXPECT_EQ(answerTo(closeMessage, ours), nullptr);
    EXPECT_FALSE(bed_.session().isServing());
    EXPECT_TRUE(bed_.isClosed());
}

TEST_F(AgentxSession, NothingIsOpenBeforeTheMasterHasOpenedIt)
{
    bed_.connect();
    const Message open = bed_.receive();
    ASSERT_NE(open, nullptr);
    expectNotOpen(answerTo(getMessage, 0), 0);
    expectNotOpen(answerTo(closeMessage, 0), 0);
    EXPECT_FALSE(bed_.isClosed());
}

TEST_F(AgentxSession, AnAnswerToAnotherSessionIsNoneToAClaim)
{
    bed_.connect();
    const Message open = bed_.receive();
    ASSERT_NE(open, nullptr);
    open->sessid = ours;
    becomeResponse(*open, noError);
    bed_.send(*open);
    bed_.turn();
    const Message claim = bed_.receive();
    ASSERT_NE(claim, nullptr);
    EXPECT_EQ(claim->command, registerMessage);
    for (const long sessionId : {foreign, ours}) {
        claim->sessid = sessionId;
        becomeResponse(*claim, noError);
        bed_.send(*claim);
        bed_.turn();
        const Message next = bed_.receive();
        EXPECT_EQ(next != nullptr, sessionId == ours);
    }
}

} // namespace

} // namespace ipmib::agent::agentx
