// SPDX-License-Identifier: BSD-3-Clause
// icmpStatsTable: one row, IP version 2.
#include <scripted/module_test.h>

namespace ipmib::scripted::icmp_stats
{
namespace
{

constexpr std::uint32_t table = 10;
enum Column { ipVersion = 1, inMsgs, inErrors, outMsgs, outErrors };

class IcmpStats : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        for (std::uint32_t number = 0; number < ICMP6_STAT_COUNT; ++number) {
            world().icmpStat.counter[number] = 1000 + number;
        }
    }
};

TEST_F(IcmpStats, GetAnswersEveryColumnAndDoesNotEchoTheIndex)
{
    EXPECT_EQ(get(table).index(ipVersion, 2).want(ipVersion, inMsgs, inErrors, outMsgs, outErrors).send(),
              answered({counter32(inMsgs, 1546), counter32(inErrors, 1261 + 1262 + 1263 + 1264),
                        counter32(outMsgs, 1545), counter32(outErrors, 0)}));
}

TEST_F(IcmpStats, GetNextEchoesTheIndexFirst)
{
    EXPECT_EQ(getNext(table).index(ipVersion, 1).want(ipVersion, inMsgs).send(),
              answered({integer(ipVersion, 2), counter32(inMsgs, 1546)}));
}

TEST_F(IcmpStats, InErrorsIsASumThatWrapsAround)
{
    auto &counter = world().icmpStat.counter;
    counter[261] = 0xFFFFFFFF;
    counter[262] = 1;
    counter[263] = counter[264] = 0;
    EXPECT_EQ(get(table).index(ipVersion, 2).want(inErrors).send(), answered({counter32(inErrors, 0)}));
}

TEST_F(IcmpStats, GetKnowsVersionTwoAlone)
{
    for (std::uint32_t version : {0u, 1u, 3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(get(table).index(ipVersion, version).want(inMsgs).send(), refused(ERR_NO_INSTANCE)) << version;
    }
    EXPECT_EQ(get(table).want(inMsgs).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls{});
}

TEST_F(IcmpStats, GetNextPastTheRowFails)
{
    for (std::uint32_t version : {2u, 3u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(getNext(table).index(ipVersion, version).want(inMsgs).send(), refused(ERR_NEXT_FAILED)) << version;
    }
}

TEST_F(IcmpStats, OnlyAnExplicitVersionTwoAsksForTheService)
{
    world().ipv6Service = {1};
    const Reply firstRow = answered({integer(ipVersion, 2), counter32(outMsgs, 1545)});
    EXPECT_EQ(getNext(table).want(outMsgs).send(), firstRow);
    EXPECT_EQ(getNext(table).index(ipVersion, 0).want(outMsgs).send(), firstRow);
    EXPECT_EQ(getNext(table).index(ipVersion, 1).want(outMsgs).send(), firstRow);
    EXPECT_EQ(getNext(table).index(ipVersion, 3).want(outMsgs).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(serviceCalls(), (Calls{"ICMP6_GetMibStat()", "ICMP6_GetMibStat()", "ICMP6_GetMibStat()"}));
}

TEST_F(IcmpStats, WithoutTheServiceVersionTwoIsNotLookedUp)
{
    world().ipv6Service = {7};
    EXPECT_EQ(get(table).index(ipVersion, 2).want(inMsgs).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getNext(table).index(ipVersion, 2).want(inMsgs).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6_DaemonCheck(1)"}));
}

TEST_F(IcmpStats, AnIndexParameterWithoutAValueIsVersionZero)
{
    EXPECT_EQ(getNext(table).emptyIndex(ipVersion).send(), answered({integer(ipVersion, 2)}));
    EXPECT_EQ(get(table).emptyIndex(ipVersion).send(), refused(ERR_NO_INSTANCE));
    for (const std::string &call : allCalls()) {
        EXPECT_EQ(call.find("MOR_GetParaLen"), std::string::npos) << "lengths do not matter here";
    }
}

TEST_F(IcmpStats, CountersThatCannotBeReadAreZero)
{
    world().failing["ICMP6_GetMibStat"] = 1;
    EXPECT_EQ(get(table).index(ipVersion, 2).want(inMsgs, inErrors).send(),
              answered({counter32(inMsgs, 0), counter32(inErrors, 0)}));
}

// The exported family.

bool operator==(const IcmpStatsRow &one, const IcmpStatsRow &other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

const IcmpStatsRow untouched = {91, 92, 93, 94, 95};
const IcmpStatsRow theRow = {2, 1546, 1261 + 1262 + 1263 + 1264, 1545, 0};

TEST_F(IcmpStats, LookupsFillTheRow)
{
    IcmpStatsRow row = untouched;
    EXPECT_EQ(ip_IcmpStats_GetByIndex(2, &row), 0u);
    EXPECT_TRUE(row == theRow);
    for (std::uint32_t version : {0u, 1u}) {
        row = untouched;
        EXPECT_EQ(ip_IcmpStats_GetNextByIndex(version, &row), 0u);
        EXPECT_TRUE(row == theRow);
    }
    row = untouched;
    EXPECT_EQ(ip_IcmpStats_GetFirstByIndex(&row), 0u);
    EXPECT_TRUE(row == theRow);
}

TEST_F(IcmpStats, LookupsThatFindNothingLeaveTheRowAlone)
{
    IcmpStatsRow row = untouched;
    for (std::uint32_t version : {0u, 1u, 3u}) {
        EXPECT_EQ(ip_IcmpStats_GetByIndex(version, &row), RC_NOT_FOUND);
    }
    for (std::uint32_t version : {2u, 3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(ip_IcmpStats_GetNextByIndex(version, &row), RC_NOT_FOUND);
    }
    EXPECT_TRUE(row == untouched);
    EXPECT_EQ(serviceCalls(), Calls{});
}

TEST_F(IcmpStats, ProcGatesTheOperationAndGetAnswers)
{
    const Reply full = answered({integer(ipVersion, 2), counter32(inMsgs, 1546)});
    EXPECT_EQ(getNext(table).want(inMsgs).sendTo(ip_IcmpStats_Proc), full);
    EXPECT_EQ(getNext(table).want(inMsgs).sendTo(ip_IcmpStats_Get), full);
    EXPECT_EQ(Request(table, OP_SET).sendTo(ip_IcmpStats_Proc), refused(ERR_READ_ONLY));
    EXPECT_EQ(Request(table, 5).sendTo(ip_IcmpStats_Proc), answered());
    EXPECT_EQ(Request(table, 4).sendTo(ip_IcmpStats_Proc), refused(ERR_BAD_PARAM));
}

} // namespace
} // namespace ipmib::scripted::icmp_stats
