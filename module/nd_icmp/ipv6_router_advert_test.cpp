// SPDX-License-Identifier: BSD-3-Clause
// ipv6RouterAdvertTable: the router advertisement settings of the selected interfaces.
#include <scripted/module_test.h>

namespace ipmib::scripted::ipv6_router_advert
{
namespace
{

constexpr std::uint32_t table = 9;
enum Column {
    ifIndex = 1,
    sendAdverts,
    maxInterval,
    minInterval,
    managedFlag,
    otherConfigFlag,
    linkMtu,
    reachableTime,
    retransmitTime,
    curHopLimit,
    defaultLifetime,
    rowStatus
};

NdIfConfigInfo configuration(std::uint32_t flags)
{
    NdIfConfigInfo info;
    std::memset(&info, 0xD5, sizeof info); // words that nobody reads are not zero
    info.retransmit_ms = 1001;
    info.reachable_ms = 30001;
    info.max_interval_s = 600;
    info.min_interval_s = 200;
    info.default_lifetime_s = 1700;
    info.flags = flags;
    return info;
}

class Ipv6RouterAdvert : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().interfaces = {3, 5, 7};
        world().ndConfig = {{3, configuration(0)}, {7, configuration(0)}};
        world().mtu = {{3, 1500}, {7, 1280}};
        world().hopLimit = 61;
    }
};

Request getRow(std::uint32_t interface)
{
    return get(table).index(ifIndex, interface);
}
Request nextAfter(std::uint32_t interface)
{
    return getNext(table).index(ifIndex, interface);
}

// One column of interface 3 with these flags set.
Reply withFlags(std::uint32_t flags, std::uint32_t column)
{
    world().ndConfig[3] = configuration(flags);
    return getRow(3).want(column).send();
}

TEST_F(Ipv6RouterAdvert, GetAnswersEveryColumnAndDoesNotEchoTheIndex)
{
    world().ndConfig[3] = configuration(ND_FLAG_SEND_ADVERTS | ND_FLAG_MANAGED | ND_FLAG_OTHER_CONFIG |
                                        ND_FLAG_REACHABLE_VALID | ND_FLAG_RETRANSMIT_VALID | ND_FLAG_LIFETIME_VALID);
    Request request = getRow(3);
    for (std::uint32_t column = ifIndex; column <= rowStatus; ++column) {
        request.want(column);
    }
    EXPECT_EQ(request.send(),
              answered({integer(sendAdverts, 1), unsigned32(maxInterval, 600), unsigned32(minInterval, 200),
                        integer(managedFlag, 1), integer(otherConfigFlag, 1), unsigned32(linkMtu, 1500),
                        unsigned32(reachableTime, 30001), unsigned32(retransmitTime, 1001), unsigned32(curHopLimit, 61),
                        unsigned32(defaultLifetime, 1700), integer(rowStatus, 1)}));
}

TEST_F(Ipv6RouterAdvert, EachFlagHasItsOwnBit)
{
    EXPECT_EQ(withFlags(0x040, sendAdverts), answered({integer(sendAdverts, 1)}));
    EXPECT_EQ(withFlags(~0x040u, sendAdverts), answered({integer(sendAdverts, 2)}));
    EXPECT_EQ(withFlags(0x002, managedFlag), answered({integer(managedFlag, 1)}));
    EXPECT_EQ(withFlags(~0x002u, managedFlag), answered({integer(managedFlag, 2)}));
    EXPECT_EQ(withFlags(0x004, otherConfigFlag), answered({integer(otherConfigFlag, 1)}));
    EXPECT_EQ(withFlags(~0x004u, otherConfigFlag), answered({integer(otherConfigFlag, 2)}));
}

TEST_F(Ipv6RouterAdvert, TimesAreZeroUnlessTheyAreAdvertised)
{
    EXPECT_EQ(withFlags(0x020, reachableTime), answered({unsigned32(reachableTime, 30001)}));
    EXPECT_EQ(withFlags(~0x020u, reachableTime), answered({unsigned32(reachableTime, 0)}));
    EXPECT_EQ(withFlags(0x010, retransmitTime), answered({unsigned32(retransmitTime, 1001)}));
    EXPECT_EQ(withFlags(~0x010u, retransmitTime), answered({unsigned32(retransmitTime, 0)}));
}

TEST_F(Ipv6RouterAdvert, WithoutALifetimeItIsThreeTimesTheLongestInterval)
{
    EXPECT_EQ(withFlags(0x200, defaultLifetime), answered({unsigned32(defaultLifetime, 1700)}));
    EXPECT_EQ(withFlags(~0x200u, defaultLifetime), answered({unsigned32(defaultLifetime, 1800)}));
    world().ndConfig[3].max_interval_s = 0x60000000;
    EXPECT_EQ(getRow(3).want(defaultLifetime).send(), answered({unsigned32(defaultLifetime, 0x20000000)}));
}

TEST_F(Ipv6RouterAdvert, WithoutAnMtuOptionTheMtuIsZeroAndNotAskedFor)
{
    EXPECT_EQ(withFlags(0x100, linkMtu), answered({unsigned32(linkMtu, 0)}));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "ND_GetIfConfigInfo(3)", "ND_GetHopLimit()"}));
    EXPECT_EQ(withFlags(~0x100u, linkMtu), answered({unsigned32(linkMtu, 1500)}));
}

TEST_F(Ipv6RouterAdvert, AnMtuThatCannotBeReadIsZero)
{
    world().failing["IP6_GetIfMTU"] = RC_NO_MORE;
    EXPECT_EQ(withFlags(0, linkMtu), answered({unsigned32(linkMtu, 0)}));
    EXPECT_EQ(nextAfter(0).send(), answered({integer(ifIndex, 3)}));
}

TEST_F(Ipv6RouterAdvert, WithoutAHopLimitOptionItIsZeroAndNotAskedFor)
{
    EXPECT_EQ(withFlags(0x400, curHopLimit), answered({unsigned32(curHopLimit, 0)}));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "ND_GetIfConfigInfo(3)", "IP6_GetIfMTU(3)"}));
    EXPECT_EQ(withFlags(~0x400u, curHopLimit), answered({unsigned32(curHopLimit, 61)}));
}

TEST_F(Ipv6RouterAdvert, ARowReadsTheConfigurationThenTheMtuThenTheHopLimit)
{
    getRow(3).want(rowStatus).send();
    EXPECT_EQ(serviceCalls(),
              (Calls{"IP6_DaemonCheck(1)", "ND_GetIfConfigInfo(3)", "IP6_GetIfMTU(3)", "ND_GetHopLimit()"}));
}

TEST_F(Ipv6RouterAdvert, GetAnswersAnyInterfaceThatHasAConfiguration)
{
    world().ndConfig[9] = configuration(0);
    EXPECT_EQ(getRow(9).want(rowStatus).send(), answered({integer(rowStatus, 1)}));
    EXPECT_EQ(getRow(5).want(rowStatus).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(Ipv6RouterAdvert, GetWithoutIndexAsksForInterfaceZero)
{
    EXPECT_EQ(get(table).want(rowStatus).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "ND_GetIfConfigInfo(0)"}));
    world().ndConfig[0] = configuration(0);
    EXPECT_EQ(get(table).want(rowStatus).send(), answered({integer(rowStatus, 1)}));
}

TEST_F(Ipv6RouterAdvert, GetNextStartsAtTheFirstInterface)
{
    const Reply first = answered({integer(ifIndex, 3), unsigned32(maxInterval, 600)});
    EXPECT_EQ(getNext(table).want(maxInterval).send(), first);
    EXPECT_EQ(nextAfter(0).want(maxInterval).send(), first);
    EXPECT_EQ(getNext(table).emptyIndex(ifIndex).want(maxInterval).send(), first);
}

TEST_F(Ipv6RouterAdvert, GetNextSkipsInterfacesWithoutConfiguration)
{
    EXPECT_EQ(nextAfter(3).send(), answered({integer(ifIndex, 7)}));
    EXPECT_EQ(foldedCalls(),
              (Calls{"IP6_DaemonCheck(1)", standardSelection, "IF_IteratorInitialize()",
                     "IF_GetNextIfIndexByIfSelect(3)", "ND_GetIfConfigInfo(5)", "IF_GetNextIfIndexByIfSelect(5)",
                     "ND_GetIfConfigInfo(7)", "IP6_GetIfMTU(7)", "ND_GetHopLimit()", "IF_IteratorFinalize()"}));
}

TEST_F(Ipv6RouterAdvert, GetNextPastTheLastInterfaceFails)
{
    EXPECT_EQ(nextAfter(7).want(rowStatus).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(nextAfter(0xFFFFFFFF).want(rowStatus).send(), refused(ERR_NEXT_FAILED));
    world().failing["ND_GetIfConfigInfo"] = RC_NO_MORE; // its own code does not matter
    EXPECT_EQ(getNext(table).want(rowStatus).send(), refused(ERR_NEXT_FAILED));
    world().interfaces.clear();
    EXPECT_EQ(getNext(table).want(rowStatus).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(Ipv6RouterAdvert, AWalkGoesOnWithoutAnIterator)
{
    world().outOfIterators = true;
    EXPECT_EQ(getNext(table).send(), answered({integer(ifIndex, 3)}));
}

TEST_F(Ipv6RouterAdvert, WithoutTheServiceTheRequestIsNotLookedAt)
{
    world().ipv6Service = {1};
    EXPECT_EQ(getNext(table).want(rowStatus).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getRow(3).want(rowStatus).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls(2, "IP6_DaemonCheck(1)"));
    for (const std::string &call : allCalls()) {
        EXPECT_EQ(call.find("MOR_GetPara"), std::string::npos) << call;
    }
}

TEST_F(Ipv6RouterAdvert, AForeignParameterEndsTheWalkAtItsPlace)
{
    for (std::uint32_t id : {ip_ParamId(table, 0), ip_ParamId(table, 13), ip_ParamId(10, 2)}) {
        EXPECT_EQ(getRow(3).want(rowStatus).wantId(id).send(), refused(ERR_BAD_PARAM, 2, {integer(rowStatus, 1)}));
    }
}

// The exported family.

TEST_F(Ipv6RouterAdvert, LookupsFillTheRow)
{
    Ipv6RouterAdvertRow row = {};
    EXPECT_EQ(ip_Ipv6RouterAdvert_GetNextByIndex(3, &row), 0u);
    EXPECT_EQ(row.if_index, 7u);
    EXPECT_EQ(row.link_mtu, 1280u);
    EXPECT_EQ(ip_Ipv6RouterAdvert_GetNextByIndex(0, &row), 0u);
    EXPECT_EQ(row.if_index, 3u);
    EXPECT_EQ(ip_Ipv6RouterAdvert_GetByIndex(7, &row), 0u);
    EXPECT_EQ(row.if_index, 7u);
}

TEST_F(Ipv6RouterAdvert, LookupsThatFindNothingLeaveTheRowAlone)
{
    Ipv6RouterAdvertRow row = {};
    row.max_interval = 77;
    EXPECT_EQ(ip_Ipv6RouterAdvert_GetByIndex(5, &row), RC_NOT_FOUND);
    EXPECT_EQ(ip_Ipv6RouterAdvert_GetNextByIndex(7, &row), RC_NOT_FOUND);
    EXPECT_EQ(row.max_interval, 77u);
}

TEST_F(Ipv6RouterAdvert, ProcChecksTheServiceAndGetDoesNot)
{
    world().ipv6Service = {1};
    EXPECT_EQ(getNext(table).sendTo(ip_Ipv6RouterAdvert_Proc), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getNext(table).sendTo(ip_Ipv6RouterAdvert_Get), answered({integer(ifIndex, 3)}));
    EXPECT_EQ(Request(table, OP_SET).sendTo(ip_Ipv6RouterAdvert_Proc), refused(ERR_READ_ONLY));
    EXPECT_EQ(Request(table, 8).sendTo(ip_Ipv6RouterAdvert_Proc), answered());
    EXPECT_EQ(Request(table, 10).sendTo(ip_Ipv6RouterAdvert_Proc), refused(ERR_BAD_PARAM));
}

} // namespace
} // namespace ipmib::scripted::ipv6_router_advert
