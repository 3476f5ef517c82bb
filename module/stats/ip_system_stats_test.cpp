// SPDX-License-Identifier: BSD-3-Clause
// ipSystemStatsTable: one row, IP version 2.
#include "numbered_stat.h"

#include <scripted/module_test.h>

namespace ipmib::scripted::ip_system_stats
{
namespace
{

constexpr std::uint32_t table = 3;
constexpr std::uint32_t ipVersion = 1;
constexpr std::uint32_t inReceives = 0x02;

const Reply firstRow = answered({integer(ipVersion, 2), counter32(inReceives, low(1))});

class IpSystemStats : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().systemStat = numberedIp6Stat();
    }
};

TEST_F(IpSystemStats, GetAnswersEveryColumnAndDoesNotEchoTheIndex)
{
    Request request = get(table).index(ipVersion, 2);
    for (std::uint32_t column = 0x01; column <= 0x19; ++column) {
        request.want(column);
    }
    EXPECT_EQ(request.send(), answered({
                                  counter32(0x02, low(1)),
                                  counter64(0x03, wide(1)),
                                  counter32(0x04, low(5) + low(7) + low(8) + low(9)),
                                  counter32(0x05, low(16)),
                                  counter32(0x06, low(17)),
                                  counter32(0x07, low(14)),
                                  counter32(0x08, low(2)),
                                  counter64(0x09, wide(2)),
                                  counter32(0x0A, low(10)),
                                  counter32(0x0B, low(11)),
                                  counter32(0x0C, low(12) + low(13)),
                                  counter32(0x0D, low(26)),
                                  counter32(0x0E, low(15)),
                                  counter32(0x0F, low(31)),
                                  counter32(0x10, low(28)),
                                  counter32(0x11, low(3)),
                                  counter64(0x12, wide(3)),
                                  counter32(0x13, low(27)),
                                  counter32(0x14, low(18) + low(21)),
                                  counter32(0x15, low(21)),
                                  counter32(0x16, low(18)),
                                  counter32(0x17, low(22)),
                                  counter32(0x18, low(4)),
                                  counter64(0x19, wide(4)),
                              }));
}

TEST_F(IpSystemStats, SumsWrapAround)
{
    world().systemStat->header_errors_1 = 0xFFFFFFFF;
    world().systemStat->header_errors_2 = world().systemStat->header_errors_3 = 0;
    world().systemStat->header_errors_4 = 3;
    world().systemStat->reasm_fails_1 = world().systemStat->reasm_fails_2 = 0x80000001;
    world().systemStat->frag_fails = world().systemStat->frag_oks = 0xFFFFFFFF;
    EXPECT_EQ(get(table).index(ipVersion, 2).want(0x04, 0x0C, 0x14).send(),
              answered({counter32(0x04, 2), counter32(0x0C, 2), counter32(0x14, 0xFFFFFFFE)}));
}

TEST_F(IpSystemStats, GetKnowsVersionTwoAlone)
{
    for (std::uint32_t version : {0u, 1u, 3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(get(table).index(ipVersion, version).want(inReceives).send(), refused(ERR_NO_INSTANCE)) << version;
    }
    EXPECT_EQ(get(table).want(inReceives).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls{}) << "there is nothing to ask for";
}

TEST_F(IpSystemStats, GetOfVersionTwoChecksTheServiceForTheWalkAndForTheLookup)
{
    get(table).index(ipVersion, 2).want(inReceives).send();
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6_DaemonCheck(1)", "IP6_GetMibStat(0x8000)"}));
}

TEST_F(IpSystemStats, GetFailsWhereverTheServiceGoesDown)
{
    world().ipv6Service = {1};
    EXPECT_EQ(get(table).index(ipVersion, 2).want(inReceives).send(), refused(ERR_NO_INSTANCE));
    world().ipv6Service = {0, 1};
    EXPECT_EQ(get(table).index(ipVersion, 2).want(inReceives).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6_DaemonCheck(1)", "IP6_DaemonCheck(1)"}));
}

TEST_F(IpSystemStats, VersionsBelowTwoAreFollowedByTheRow)
{
    EXPECT_EQ(getNext(table).want(inReceives).send(), firstRow);
    EXPECT_EQ(getNext(table).index(ipVersion, 0).want(inReceives).send(), firstRow);
    EXPECT_EQ(getNext(table).index(ipVersion, 1).want(inReceives).send(), firstRow);
    EXPECT_EQ(getNext(table).emptyIndex(ipVersion).want(inReceives).send(), firstRow);
}

TEST_F(IpSystemStats, TheLookupOfGetNextChecksTheServiceOnce)
{
    getNext(table).index(ipVersion, 1).send();
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6_GetMibStat(0x8000)"}));
}

TEST_F(IpSystemStats, GetNextPastTheRowFails)
{
    for (std::uint32_t version : {2u, 3u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(getNext(table).index(ipVersion, version).want(inReceives).send(), refused(ERR_NEXT_FAILED));
    }
    EXPECT_EQ(serviceCalls(), Calls{"IP6_DaemonCheck(1)"}) << "only an explicit version 2 asks for the service";
}

TEST_F(IpSystemStats, GetNextFromVersionTwoWithoutTheServiceIsTheEnd)
{
    world().ipv6Service = {1};
    EXPECT_EQ(getNext(table).index(ipVersion, 2).want(inReceives).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getNext(table).index(ipVersion, 3).want(inReceives).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpSystemStats, GetNextToTheRowWithoutTheServiceFailsByTheChecksOwnCode)
{
    world().ipv6Service = {1};
    EXPECT_EQ(getNext(table).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(getNext(table).index(ipVersion, 1).send(), refused(ERR_NEXT_FAILED));
    world().ipv6Service = {RC_NO_MORE};
    EXPECT_EQ(getNext(table).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getNext(table).index(ipVersion, 0).send(), refused(ERR_END_OF_TABLE));
}

TEST_F(IpSystemStats, CountersThatCannotBeReadAreNoRow)
{
    world().failing["IP6_GetMibStat"] = RC_NO_MORE; // its own code does not matter
    EXPECT_EQ(get(table).index(ipVersion, 2).want(inReceives).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getNext(table).want(inReceives).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpSystemStats, AForeignParameterEndsTheWalkAtItsPlace)
{
    for (std::uint32_t id : {ip_ParamId(table, 0), ip_ParamId(table, 0x1A), ip_ParamId(4, 3)}) {
        EXPECT_EQ(getNext(table).want(inReceives).wantId(id).send(), refused(ERR_BAD_PARAM, 1, firstRow.values));
    }
}

} // namespace
} // namespace ipmib::scripted::ip_system_stats
