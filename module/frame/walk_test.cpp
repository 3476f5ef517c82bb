// SPDX-License-Identifier: BSD-3-Clause
// The walk over a request's parameters that the tables share, shown on the smallest of them.
#include <scripted/module_test.h>

namespace ipmib::scripted::walk
{
namespace
{

constexpr std::uint32_t table = 10;
const Value ipv6Row = integer(1, 2);

class Walk : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().icmpStat.counter[ICMP6_STAT_IN_MSGS] = 70;
        world().icmpStat.counter[ICMP6_STAT_OUT_MSGS] = 90;
    }
};

TEST_F(Walk, GetNextWithoutAnyParameterAnswersTheFirstRowsIndex)
{
    EXPECT_EQ(getNext(table).send(), answered({ipv6Row}));
}

TEST_F(Walk, GetOfIndexColumnsAnswersNothing)
{
    EXPECT_EQ(get(table).index(1, 2).want(1).send(), answered());
}

TEST_F(Walk, ValuesStandInTheOrderInWhichTheyAreAskedFor)
{
    EXPECT_EQ(get(table).index(1, 2).want(4, 2).send(), answered({counter32(4, 90), counter32(2, 70)}));
}

TEST_F(Walk, AColumnAskedForTwiceIsAnsweredTwice)
{
    EXPECT_EQ(get(table).index(1, 2).want(2, 4, 2).send(),
              answered({counter32(2, 70), counter32(4, 90), counter32(2, 70)}));
}

TEST_F(Walk, AllColumnsOfARequestComeFromOneReading)
{
    getNext(table).want(2, 3, 4, 5, 2).send();
    EXPECT_EQ(serviceCalls(), Calls{"ICMP6_GetMibStat()"});
}

TEST_F(Walk, AForeignParameterEndsTheWalkAtItsPlace)
{
    EXPECT_EQ(getNext(table).want(2, 4).wantId(ip_ParamId(11, 3)).want(2).send(),
              refused(ERR_BAD_PARAM, 2, {ipv6Row, counter32(2, 70), counter32(4, 90)}));
}

TEST_F(Walk, IndexParametersCountForThePlaceOfAForeignOne)
{
    EXPECT_EQ(get(table).index(1, 2).want(1).wantId(ip_ParamId(9, 2)).send(), refused(ERR_BAD_PARAM, 2));
}

TEST_F(Walk, ForeignIdsAreThoseBesideTheTablesColumns)
{
    const std::uint32_t module = 0x10000;
    for (std::uint32_t id :
         {0u, ip_ParamId(table, 0), ip_ParamId(table, 6), ip_ParamId(table, 255), ip_ParamId(9, 2), ip_ParamId(11, 2),
          ip_ParamId(table, 2) - module, ip_ParamId(table, 2) + module, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        EXPECT_EQ(getNext(table).wantId(id).send(), refused(ERR_BAD_PARAM, 0, {ipv6Row})) << std::hex << id;
    }
}

TEST_F(Walk, ReadsTheIndexThenTheRowThenTheParametersOneByOne)
{
    get(table).index(1, 2).want(2).wantId(7).send();
    EXPECT_EQ(allCalls(), (Calls{
                              "MOR_GetTableId()",
                              "MOR_GetMsgOpType()",
                              "MOR_GetParaFromMsgByMOR(0x3720a01)",
                              "MOR_GetData32(0x3720a01)",
                              "IP6_DaemonCheck(1)",
                              "ICMP6_GetMibStat()",
                              "MOR_GetFirstParaFromMsg()",
                              "MOR_GetNextParaFromMsg()",
                              "MOR_AppendPara2Msg(0x3720a02)",
                              "MOR_GetNextParaFromMsg()",
                              "MOR_SetMsgError(0x61010052, 2)",
                          }));
}

TEST_F(Walk, KeepsNothingBetweenRequests)
{
    const Request request = getNext(table).want(2);
    EXPECT_EQ(request.send(), answered({ipv6Row, counter32(2, 70)}));
    world().icmpStat.counter[ICMP6_STAT_IN_MSGS] = 71;
    EXPECT_EQ(request.send(), answered({ipv6Row, counter32(2, 71)}));
}

} // namespace
} // namespace ipmib::scripted::walk
