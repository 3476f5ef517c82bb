// SPDX-License-Identifier: BSD-3-Clause
// ipIfStatsTable: the IPv4 rows of the selected interfaces, then their IPv6 rows.
#include "numbered_stat.h"

#include <scripted/module_test.h>

namespace ipmib::scripted::ip_if_stats
{
namespace
{

constexpr std::uint32_t table = 4;
enum Column { ipVersion = 1, ifIndex, inReceives };

class IpIfStats : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().interfaces = {3, 5};
        for (std::uint32_t each : world().interfaces) {
            world().ipv4Stat[each] = numberedIpv4Stat();
            world().ipv6Stat[each] = numberedIp6Stat();
        }
    }
};

Request getRow(std::uint32_t version, std::uint32_t interface)
{
    return get(table).index(ipVersion, version).index(ifIndex, interface);
}
Request nextAfter(std::uint32_t version, std::uint32_t interface)
{
    return getNext(table).index(ipVersion, version).index(ifIndex, interface);
}
Reply row(std::uint32_t version, std::uint32_t interface)
{
    return answered({integer(ipVersion, version), integer(ifIndex, interface)});
}
Request allColumns(Request request)
{
    for (std::uint32_t column = 0x01; column <= 0x20; ++column) {
        request.want(column);
    }
    return request;
}

TEST_F(IpIfStats, AnIpv6RowHasAllCounters)
{
    EXPECT_EQ(allColumns(getRow(2, 3)).send(),
              answered({
                  counter32(0x03, low(1)),   counter32(0x04, low(5) + low(7) + low(8) + low(9)),
                  counter32(0x05, low(16)),  counter32(0x06, low(17)),
                  counter32(0x07, low(14)),  counter32(0x08, low(6)),
                  counter32(0x09, low(2)),   counter32(0x0A, low(10)),
                  counter32(0x0B, low(11)),  counter32(0x0C, low(12) + low(13)),
                  counter32(0x0D, low(26)),  counter32(0x0E, low(15)),
                  counter32(0x0F, low(31)),  counter32(0x10, low(3)),
                  counter32(0x11, low(27)),  counter32(0x12, low(18) + low(21)),
                  counter32(0x13, low(21)),  counter32(0x14, low(18)),
                  counter32(0x15, low(22)),  counter32(0x16, low(4)),
                  counter32(0x17, low(24)),  counter32(0x18, low(25)),
                  counter64(0x19, wide(1)),  counter32(0x1A, low(32)),
                  counter64(0x1B, wide(32)), counter64(0x1C, wide(31)),
                  counter64(0x1D, wide(3)),  counter32(0x1E, low(33)),
                  counter64(0x1F, wide(33)), counter64(0x20, wide(4)),
              }));
}

TEST_F(IpIfStats, AnIpv4RowHasZeroWhereIpv4HasNoCounter)
{
    EXPECT_EQ(allColumns(getRow(1, 3)).send(),
              answered({
                  counter32(0x03, low(1)),  counter32(0x04, 0),       counter32(0x05, 0),       counter32(0x06, 0),
                  counter32(0x07, 0),       counter32(0x08, 0),       counter32(0x09, 0),       counter32(0x0A, 0),
                  counter32(0x0B, 0),       counter32(0x0C, 0),       counter32(0x0D, low(12)), counter32(0x0E, 0),
                  counter32(0x0F, low(5)),  counter32(0x10, low(9)),  counter32(0x11, low(13)), counter32(0x12, 0),
                  counter32(0x13, 0),       counter32(0x14, 0),       counter32(0x15, 0),       counter32(0x16, low(2)),
                  counter32(0x17, low(6)),  counter32(0x18, low(7)),  counter64(0x19, wide(1)), counter32(0x1A, low(3)),
                  counter64(0x1B, wide(3)), counter64(0x1C, wide(5)), counter64(0x1D, wide(9)), counter32(0x1E, low(4)),
                  counter64(0x1F, wide(4)), counter64(0x20, wide(2)),
              }));
}

TEST_F(IpIfStats, SumsWrapAround)
{
    world().ipv6Stat[3].frag_fails = world().ipv6Stat[3].frag_oks = 0x80000002;
    EXPECT_EQ(getRow(2, 3).want(0x12).send(), answered({counter32(0x12, 4)}));
}

TEST_F(IpIfStats, AWalkVisitsTheIpv4RowsThenTheIpv6Rows)
{
    EXPECT_EQ(getNext(table).send(), row(1, 3));
    EXPECT_EQ(nextAfter(1, 3).send(), row(1, 5));
    EXPECT_EQ(nextAfter(1, 5).send(), row(2, 3));
    EXPECT_EQ(nextAfter(2, 3).send(), row(2, 5));
    EXPECT_EQ(nextAfter(2, 5).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpIfStats, TheEndOfTheWalkIsToldByTheFailureCodeForInterfaceZero)
{
    EXPECT_EQ(nextAfter(2, 5).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(foldedCalls(),
              (Calls{"IP6_DaemonCheck(1)", standardSelection, "IF_IteratorInitialize()",
                     "IF_GetNextIfIndexByIfSelect(5)", "IF_IteratorFinalize()", "IP6_GetIfStat(0, 10)"}));
    world().failing["IP6_GetIfStat"] = RC_NO_MORE;
    EXPECT_EQ(nextAfter(2, 5).send(), refused(ERR_END_OF_TABLE));
}

TEST_F(IpIfStats, StatisticsForInterfaceZeroMakeARow)
{
    world().ipv6Stat[0] = numberedIp6Stat();
    EXPECT_EQ(nextAfter(2, 5).send(), row(2, 0));
    world().ipv4Stat[0] = numberedIpv4Stat();
    EXPECT_EQ(nextAfter(1, 5).send(), row(1, 0));
}

TEST_F(IpIfStats, TheStandardSelectionNamesThirtySixTypesInOrder)
{
    getNext(table).send();
    const Calls calls = serviceCalls();
    ASSERT_GE(calls.size(), 38u);
    EXPECT_EQ(Calls(calls.begin(), calls.begin() + 38), standardSelectionCalls());
}

TEST_F(IpIfStats, GetNextWithoutIndexReadsTheFirstInterfaceOnly)
{
    EXPECT_EQ(getNext(table).want(inReceives).send(),
              answered({integer(ipVersion, 1), integer(ifIndex, 3), counter32(inReceives, low(1))}));
    EXPECT_EQ(foldedCalls(), (Calls{standardSelection, "IF_IteratorInitialize()", "IF_GetFirstIfIndexByIfSelect()",
                                    "IF_IteratorFinalize()", "IP_GetMibIfStat(3)"}));
}

TEST_F(IpIfStats, GetNextWithoutIndexFailsByTheFirstInterfacesCode)
{
    world().failing["IP_GetMibIfStat"] = 1;
    EXPECT_EQ(getNext(table).send(), refused(ERR_NEXT_FAILED));
    world().failing["IP_GetMibIfStat"] = RC_NO_MORE;
    EXPECT_EQ(getNext(table).send(), refused(ERR_END_OF_TABLE));
}

TEST_F(IpIfStats, WithoutInterfacesInterfaceZeroIsAskedFor)
{
    world().interfaces.clear();
    EXPECT_EQ(getNext(table).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(foldedCalls().back(), "IP_GetMibIfStat(0)");
}

TEST_F(IpIfStats, TheIpv4BlockEndsAtTheFirstInterfaceWithoutStatistics)
{
    world().interfaces = {3, 5, 7};
    world().ipv4Stat.erase(5);
    world().ipv4Stat[7] = numberedIpv4Stat();
    EXPECT_EQ(nextAfter(1, 3).send(), row(2, 3));
}

TEST_F(IpIfStats, TheCrossingToIpv6ChecksTheIpv4ServiceAlone)
{
    EXPECT_EQ(nextAfter(1, 5).send(), row(2, 3));
    EXPECT_EQ(foldedCalls(), (Calls{"IP_DaemonCheck(1)", standardSelection, "IF_IteratorInitialize()",
                                    "IF_GetNextIfIndexByIfSelect(5)", "IF_IteratorFinalize()", "IP_GetMibIfStat(0)",
                                    standardSelection, "IF_IteratorInitialize()", "IF_GetFirstIfIndexByIfSelect()",
                                    "IF_IteratorFinalize()", "IP6_GetIfStat(3, 10)"}));
}

TEST_F(IpIfStats, TheCrossingFailsByTheIpv6Code)
{
    world().failing["IP6_GetIfStat"] = 1;
    EXPECT_EQ(nextAfter(1, 5).send(), refused(ERR_NEXT_FAILED));
    world().failing["IP6_GetIfStat"] = RC_NO_MORE;
    EXPECT_EQ(nextAfter(1, 5).send(), refused(ERR_END_OF_TABLE));
}

TEST_F(IpIfStats, TheIpv6BlockDoesNotSkipInterfaces)
{
    world().interfaces = {3, 5, 7};
    world().ipv6Stat.erase(5);
    world().ipv6Stat[7] = numberedIp6Stat();
    EXPECT_EQ(nextAfter(2, 3).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpIfStats, AVersionAloneStartsItsBlock)
{
    EXPECT_EQ(getNext(table).index(ipVersion, 1).send(), row(1, 3));
    EXPECT_EQ(getNext(table).index(ipVersion, 2).send(), row(2, 3));
}

TEST_F(IpIfStats, NothingFollowsOtherVersionsButTheInterfacesAreWalked)
{
    EXPECT_EQ(getNext(table).index(ifIndex, 3).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(foldedCalls(), (Calls{standardSelection, "IF_IteratorInitialize()", "IF_GetNextIfIndexByIfSelect(3)",
                                    "IF_IteratorFinalize()"}));
    for (std::uint32_t version : {0u, 3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(nextAfter(version, 3).send(), refused(ERR_NEXT_FAILED)) << version;
    }
}

TEST_F(IpIfStats, EachVersionChecksItsOwnService)
{
    world().ipv4Service = {1};
    EXPECT_EQ(getRow(1, 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(nextAfter(1, 3).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getRow(2, 3).send(), answered());
    world().ipv4Service = {0};
    world().ipv6Service = {1};
    EXPECT_EQ(getRow(2, 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(nextAfter(2, 3).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getRow(1, 3).send(), answered());
    EXPECT_EQ(getNext(table).send(), row(1, 3)) << "no version, no check";
}

TEST_F(IpIfStats, GetNeedsBothIndexPartsBeforeItAsksForTheInterface)
{
    EXPECT_EQ(get(table).index(ifIndex, 3).want(inReceives).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).want(inReceives).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls{});
    EXPECT_EQ(get(table).index(ipVersion, 2).want(inReceives).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls{"IP6_DaemonCheck(1)"});
}

TEST_F(IpIfStats, GetAsksForTheInterfaceBeforeItLooksAtTheVersion)
{
    for (std::uint32_t version : {0u, 3u, 0xFFFFFFFFu}) {
        forgetCalls();
        EXPECT_EQ(getRow(version, 3).want(inReceives).send(), refused(ERR_NO_INSTANCE)) << version;
        EXPECT_EQ(serviceCalls(), Calls{"IF_IsValidIfIndex(3)"});
    }
}

TEST_F(IpIfStats, GetAnswersOnlyInterfacesThatAreSaidToExist)
{
    for (std::uint32_t odd : {0u, 2u, 0xFFFFFFFFu}) {
        world().validity[3] = odd;
        EXPECT_EQ(getRow(1, 3).want(inReceives).send(), refused(ERR_NO_INSTANCE)) << odd;
    }
}

TEST_F(IpIfStats, GetDoesNotConsultTheSelection)
{
    world().validity[9] = 1;
    world().ipv6Stat[9] = numberedIp6Stat();
    EXPECT_EQ(getRow(2, 9).want(inReceives).send(), answered({counter32(inReceives, low(1))}));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IF_IsValidIfIndex(9)", "IP6_GetIfStat(9, 10)"}));
}

TEST_F(IpIfStats, GetOfAnInterfaceWithoutStatisticsFindsNothing)
{
    world().ipv4Stat.clear();
    world().ipv6Stat.clear();
    EXPECT_EQ(getRow(1, 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(2, 3).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(IpIfStats, AWalkGoesOnWithoutAnIterator)
{
    world().outOfIterators = true;
    EXPECT_EQ(getNext(table).send(), row(1, 3));
    EXPECT_EQ(nextAfter(1, 3).send(), row(1, 5));
}

TEST_F(IpIfStats, AForeignParameterEndsTheWalkAtItsPlace)
{
    for (std::uint32_t id : {ip_ParamId(table, 0), ip_ParamId(table, 0x21), ip_ParamId(3, 3), ip_ParamId(5, 3)}) {
        EXPECT_EQ(getRow(2, 3).want(ifIndex).wantId(id).send(), refused(ERR_BAD_PARAM, 3));
    }
}

} // namespace
} // namespace ipmib::scripted::ip_if_stats
