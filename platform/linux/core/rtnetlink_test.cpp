// SPDX-License-Identifier: BSD-3-Clause
// Requests that succeed, that the kernel refuses, and dumps that are not read to their end.
#include "core/rtnetlink.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace
{

using namespace ipmib::platform;

RtnetlinkRequest linkByIndex(int ifIndex)
{
    RtnetlinkRequest request(RTM_GETLINK, 0);
    request.family<ifinfomsg>().ifi_index = ifIndex;
    return request;
}

RtnetlinkRequest allLinks()
{
    RtnetlinkRequest request(RTM_GETLINK, NLM_F_DUMP);
    request.family<ifinfomsg>().ifi_family = AF_UNSPEC;
    return request;
}

int indexOf(const nlmsghdr &message)
{
    return static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(&message))->ifi_index;
}

class RtnetlinkSocket : public testing::Test
{
  protected:
    void SetUp() override { ASSERT_TRUE(socket.open()) << socket.error(); }

    Rtnetlink socket;
};

TEST_F(RtnetlinkSocket, anAnswerIsHandedOn)
{
    int found = 0;
    RtnetlinkRequest request = linkByIndex(1);
    EXPECT_EQ(socket.ask(request, [&](const nlmsghdr &message) { found = indexOf(message); }), 0);
    EXPECT_EQ(found, 1);
}

TEST_F(RtnetlinkSocket, aRefusalHasItsNumberAndTheKernelsWords)
{
    const auto unexpected = [](const nlmsghdr &) { ADD_FAILURE() << "an answer"; };
    RtnetlinkRequest absent = linkByIndex(0x7FFFFFFF);
    EXPECT_EQ(socket.ask(absent, unexpected), ENODEV);

    RtnetlinkRequest wrong(RTM_GETLINK, NLM_F_DUMP);
    wrong.family<ifinfomsg>().ifi_flags = 1; // strict checking refuses what a dump does not look at
    EXPECT_EQ(socket.ask(wrong, unexpected), EINVAL);
    EXPECT_NE(socket.error().find("Invalid values in header"), std::string::npos) << socket.error();
}

TEST_F(RtnetlinkSocket, aDumpIsAskedForAtOnce)
{
    unsigned rows = 0;
    RtnetlinkRequest request = allLinks();
    EXPECT_EQ(socket.ask(request, [&](const nlmsghdr &) { ++rows; }), 0);
    EXPECT_GE(rows, 1u);
}

TEST_F(RtnetlinkSocket, leftOversOfADumpAreNoAnswers)
{
    RtnetlinkRequest dump = allLinks();
    ASSERT_TRUE(socket.send(dump)); // and not read: rows and their end wait in the socket
    int found = 0;
    RtnetlinkRequest request = linkByIndex(1);
    EXPECT_EQ(socket.ask(request, [&](const nlmsghdr &message) { found = indexOf(message); }), 0);
    EXPECT_EQ(found, 1);
}

TEST_F(RtnetlinkSocket, readsPieceByPieceToTheEnd)
{
    RtnetlinkRequest dump = allLinks();
    ASSERT_TRUE(socket.send(dump));
    unsigned rows = 0;
    Rtnetlink::Read read;
    do {
        read = socket.read([&](const nlmsghdr &) { ++rows; });
    } while (read == Rtnetlink::Read::rows);
    EXPECT_EQ(read, Rtnetlink::Read::done);
    EXPECT_GE(rows, 1u);
    EXPECT_EQ(socket.read([](const nlmsghdr &) {}), Rtnetlink::Read::nothing);
}

} // namespace
