// SPDX-License-Identifier: BSD-3-Clause
// icmpMsgStatsTable: one row for each of the 21 served ICMPv6 types.
#include <scripted/module_test.h>

#include <algorithm>

namespace ipmib::scripted::icmp_msg_stats
{
namespace
{

constexpr std::uint32_t table = 11;
enum Column { ipVersion = 1, type, inPkts, outPkts };

const std::vector<std::uint32_t> servedTypes = {1,   2,   3,   4,   128, 129, 130, 131, 132, 133, 134,
                                                135, 136, 137, 138, 139, 140, 143, 144, 145, 200};

class IcmpMsgStats : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        for (std::uint32_t number = 0; number < ICMP6_STAT_COUNT; ++number) {
            world().icmpStat.counter[number] = 5000 + number;
        }
    }
};

Request getRow(std::uint32_t version, std::uint32_t icmpType)
{
    return get(table).index(ipVersion, version).index(type, icmpType);
}
Request nextAfter(std::uint32_t version, std::uint32_t icmpType)
{
    return getNext(table).index(ipVersion, version).index(type, icmpType);
}
Reply row(std::uint32_t icmpType)
{
    return answered({integer(ipVersion, 2), integer(type, icmpType)});
}

TEST_F(IcmpMsgStats, CountersAreThoseOfTheType)
{
    EXPECT_EQ(getRow(2, 135).want(inPkts, outPkts).send(),
              answered({counter32(inPkts, 5000 + 401), counter32(outPkts, 5000 + 138)}));
    EXPECT_EQ(getRow(2, 1).want(outPkts, inPkts).send(),
              answered({counter32(outPkts, 5000 + 4), counter32(inPkts, 5000 + 267)}));
    EXPECT_EQ(getRow(2, 200).want(inPkts, outPkts).send(),
              answered({counter32(inPkts, 5000 + 466), counter32(outPkts, 5000 + 203)}));
}

TEST_F(IcmpMsgStats, AWalkVisitsTheServedTypesInOrder)
{
    std::uint32_t last = 0;
    for (std::uint32_t served : servedTypes) {
        EXPECT_EQ(nextAfter(2, last).send(), row(served));
        last = served;
    }
    EXPECT_EQ(nextAfter(2, last).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IcmpMsgStats, GetNextStartsFromAnyType)
{
    EXPECT_EQ(nextAfter(2, 5).send(), row(128));
    EXPECT_EQ(nextAfter(2, 141).send(), row(143));
    EXPECT_EQ(nextAfter(2, 199).send(), row(200));
    for (std::uint32_t beyond : {200u, 201u, 202u, 255u, 256u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        EXPECT_EQ(nextAfter(2, beyond).send(), refused(ERR_NEXT_FAILED)) << beyond;
    }
}

TEST_F(IcmpMsgStats, VersionsBelowTwoAreFollowedByTheFirstRow)
{
    for (std::uint32_t any : {0u, 1u, 135u, 200u, 201u, 0xFFFFFFFFu}) {
        EXPECT_EQ(nextAfter(0, any).send(), row(1)) << any;
        EXPECT_EQ(nextAfter(1, any).send(), row(1)) << any;
    }
}

TEST_F(IcmpMsgStats, AnIncompleteIndexIsFollowedByTheFirstRow)
{
    EXPECT_EQ(getNext(table).send(), row(1));
    EXPECT_EQ(getNext(table).index(ipVersion, 2).send(), row(1));
    EXPECT_EQ(getNext(table).index(type, 135).send(), row(1));
    EXPECT_EQ(getNext(table).index(type, 135).want(type, inPkts).send(),
              answered({integer(ipVersion, 2), integer(type, 1), counter32(inPkts, 5267)}));
}

TEST_F(IcmpMsgStats, VersionsFromThreeOnAreRefusedSilently)
{
    for (std::uint32_t version : {3u, 4u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(getRow(version, 1).want(inPkts).send(), refusedSilently(ERR_NO_INSTANCE)) << version;
        EXPECT_EQ(nextAfter(version, 1).want(inPkts).send(), refusedSilently(ERR_NO_INSTANCE)) << version;
        EXPECT_EQ(getNext(table).index(ipVersion, version).send(), refusedSilently(ERR_NO_INSTANCE)) << version;
    }
    EXPECT_EQ(serviceCalls(), Calls{});
}

TEST_F(IcmpMsgStats, GetKnowsTheServedTypesOfVersionTwoAlone)
{
    for (std::uint32_t icmpType = 0; icmpType <= 260; ++icmpType) {
        const bool served = std::count(servedTypes.begin(), servedTypes.end(), icmpType) != 0;
        EXPECT_EQ(getRow(2, icmpType).send(), served ? answered() : refused(ERR_NO_INSTANCE)) << icmpType;
        EXPECT_EQ(getRow(1, icmpType).send(), refused(ERR_NO_INSTANCE)) << icmpType;
        EXPECT_EQ(getRow(0, icmpType).send(), refused(ERR_NO_INSTANCE)) << icmpType;
    }
}

TEST_F(IcmpMsgStats, GetWithAnIncompleteIndexFindsNothing)
{
    EXPECT_EQ(get(table).want(inPkts).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(type, 135).want(inPkts).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(ipVersion, 2).want(inPkts).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(IcmpMsgStats, TheServiceIsCheckedForVersionTwoAlone)
{
    world().ipv6Service = {9};
    EXPECT_EQ(getRow(2, 1).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getNext(table).index(ipVersion, 2).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6_DaemonCheck(1)"}));
    EXPECT_EQ(nextAfter(1, 7).send(), row(1));
    EXPECT_EQ(getNext(table).send(), row(1));
}

TEST_F(IcmpMsgStats, TypesThatAreNotServedCostNoReading)
{
    getRow(2, 141).send();
    EXPECT_EQ(serviceCalls(), Calls{"IP6_DaemonCheck(1)"});
    forgetCalls();
    nextAfter(2, 4).send();
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "ICMP6_GetMibStat()"}));
}

TEST_F(IcmpMsgStats, AForeignParameterEndsTheWalkAtItsPlace)
{
    for (std::uint32_t id : {ip_ParamId(10, 5), ip_ParamId(table, 0), ip_ParamId(table, 5), ip_ParamId(12, 3)}) {
        EXPECT_EQ(getRow(2, 135).want(inPkts).wantId(id).want(outPkts).send(),
                  refused(ERR_BAD_PARAM, 3, {counter32(inPkts, 5401)}));
    }
}

TEST_F(IcmpMsgStats, CountersThatCannotBeReadAreZero)
{
    world().failing["ICMP6_GetMibStat"] = 1;
    EXPECT_EQ(getRow(2, 2).want(inPkts, outPkts).send(), answered({counter32(inPkts, 0), counter32(outPkts, 0)}));
}

// The type map and the exported family.

std::uint16_t mapEntry(std::uint32_t icmpType)
{
    const auto served = std::find(servedTypes.begin(), servedTypes.end(), icmpType);
    if (served != servedTypes.end()) {
        return static_cast<std::uint16_t>(served - servedTypes.begin());
    }
    return icmpType < 201 ? 255 : icmpType == 201 ? 21 : 0;
}

TEST_F(IcmpMsgStats, InitBuildsTheTypeMap)
{
    std::fill_n(g_ausIcmp6Type, 201, std::uint16_t{77});
    EXPECT_EQ(ip_IcmpMsgStats_Init(), 0u);
    for (std::uint32_t icmpType = 0; icmpType < 256; ++icmpType) {
        EXPECT_EQ(g_ausIcmp6Type[icmpType], mapEntry(icmpType)) << icmpType;
    }
}

TEST_F(IcmpMsgStats, InitLeavesTheEntriesBehindTheEndMarkAlone)
{
    g_ausIcmp6Type[202] = g_ausIcmp6Type[255] = 77;
    ip_IcmpMsgStats_Init();
    EXPECT_EQ(g_ausIcmp6Type[202], 77);
    EXPECT_EQ(g_ausIcmp6Type[255], 77);
    g_ausIcmp6Type[202] = g_ausIcmp6Type[255] = 0;
}

TEST_F(IcmpMsgStats, SuffixesAreTheNumbersOfServedTypes)
{
    for (std::uint32_t icmpType = 0; icmpType <= 300; ++icmpType) {
        const bool served = icmpType < 201 && mapEntry(icmpType) < 21;
        std::uint16_t suffix = 999;
        EXPECT_EQ(ip_IcmpMsgStats_TypeToSuffix(icmpType, &suffix), served ? 0 : RC_NOT_FOUND) << icmpType;
        EXPECT_EQ(suffix, served ? mapEntry(icmpType) : 999) << icmpType;
    }
    std::uint16_t suffix = 999;
    EXPECT_EQ(ip_IcmpMsgStats_TypeToSuffix(0xFFFFFFFF, &suffix), RC_NOT_FOUND);
    EXPECT_EQ(ip_IcmpMsgStats_TypeToSuffix(1, nullptr), RC_NOT_FOUND);
    EXPECT_EQ(suffix, 999);
}

TEST_F(IcmpMsgStats, RowsExistForServedTypesOfVersionTwo)
{
    EXPECT_EQ(ip_IcmpMsgStats_IsExistIndex(2, 1), 0u);
    EXPECT_EQ(ip_IcmpMsgStats_IsExistIndex(2, 200), 0u);
    EXPECT_EQ(ip_IcmpMsgStats_IsExistIndex(1, 1), RC_NOT_FOUND);
    EXPECT_EQ(ip_IcmpMsgStats_IsExistIndex(3, 1), RC_NOT_FOUND);
    EXPECT_EQ(ip_IcmpMsgStats_IsExistIndex(2, 0), RC_NOT_FOUND);
    EXPECT_EQ(ip_IcmpMsgStats_IsExistIndex(2, 201), RC_NOT_FOUND);
}

bool operator==(const IcmpMsgStatsRow &one, const IcmpMsgStatsRow &other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

const IcmpMsgStatsRow untouched = {91, 92, 93, 94};
const IcmpMsgStatsRow firstRow = {2, 1, 5267, 5004};

TEST_F(IcmpMsgStats, LookupsFillTheRow)
{
    IcmpMsgStatsRow filled = untouched;
    EXPECT_EQ(ip_IcmpMsgStats_GetByIndex(2, 1, &filled), 0u);
    EXPECT_TRUE(filled == firstRow);
    filled = untouched;
    EXPECT_EQ(ip_IcmpMsgStats_GetFirstByIndex(&filled), 0u);
    EXPECT_TRUE(filled == firstRow);
    filled = untouched;
    EXPECT_EQ(ip_IcmpMsgStats_GetNextByIndex(1, 250, &filled), 0u);
    EXPECT_TRUE(filled == firstRow);
    EXPECT_EQ(ip_IcmpMsgStats_GetNextByIndex(2, 1, &filled), 0u);
    EXPECT_TRUE((filled == IcmpMsgStatsRow{2, 2, 5268, 5005}));
}

TEST_F(IcmpMsgStats, LookupsThatFindNothingLeaveTheRowAlone)
{
    IcmpMsgStatsRow kept = untouched;
    EXPECT_EQ(ip_IcmpMsgStats_GetByIndex(2, 141, &kept), RC_NOT_FOUND);
    EXPECT_EQ(ip_IcmpMsgStats_GetByIndex(1, 1, &kept), RC_NOT_FOUND);
    EXPECT_EQ(ip_IcmpMsgStats_GetNextByIndex(3, 0, &kept), RC_NOT_FOUND);
    EXPECT_EQ(ip_IcmpMsgStats_GetNextByIndex(2, 200, &kept), RC_NOT_FOUND);
    EXPECT_EQ(ip_IcmpMsgStats_GetNextByIndex(2, 201, &kept), RC_NOT_FOUND);
    EXPECT_EQ(ip_IcmpMsgStats_GetNextByIndex(2, 0xFFFFFFFF, &kept), RC_NOT_FOUND);
    EXPECT_TRUE(kept == untouched);
    EXPECT_EQ(serviceCalls(), Calls{});
}

TEST_F(IcmpMsgStats, ProcGatesTheOperationAndGetAnswers)
{
    EXPECT_EQ(getNext(table).sendTo(ip_IcmpMsgStats_Proc), row(1));
    EXPECT_EQ(getNext(table).sendTo(ip_IcmpMsgStats_Get), row(1));
    EXPECT_EQ(Request(table, OP_SET).sendTo(ip_IcmpMsgStats_Proc), refused(ERR_READ_ONLY));
    EXPECT_EQ(Request(table, 9).sendTo(ip_IcmpMsgStats_Proc), answered());
    EXPECT_EQ(Request(table, 10).sendTo(ip_IcmpMsgStats_Proc), refused(ERR_BAD_PARAM));
}

} // namespace
} // namespace ipmib::scripted::icmp_msg_stats
