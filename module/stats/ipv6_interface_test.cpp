// SPDX-License-Identifier: BSD-3-Clause
// ipv6InterfaceTable: the interfaces that have an IPv6 identifier.
#include <scripted/module_test.h>

namespace ipmib::scripted::ipv6_interface
{
namespace
{

constexpr std::uint32_t table = 2;
enum Column { ifIndex = 1, reasmMaxSize, identifier, enableStatus, reachableTime, retransmitTime, forwarding };

class Ipv6Interface : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().interfaces = {3, 5, 7};
        world().identifiers = {{3, {1, 2, 3, 4, 5, 6, 7, 8}}, {7, {0, 0, 0, 0, 0, 0, 0, 9}}};
        world().mainLinkLocal = {3};
        NdIfConfigInfo config = {};
        config.retransmit_ms = 1100;
        config.reachable_ms = 31000;
        world().ndConfig[3] = config;
    }
};

TEST_F(Ipv6Interface, GetAnswersEveryColumnAndDoesNotEchoTheIndex)
{
    EXPECT_EQ(get(table)
                  .index(ifIndex, 3)
                  .want(ifIndex, reasmMaxSize, identifier, enableStatus, reachableTime, retransmitTime, forwarding)
                  .send(),
              answered({unsigned32(reasmMaxSize, 65535), octets(identifier, {1, 2, 3, 4, 5, 6, 7, 8}),
                        integer(enableStatus, 1), unsigned32(reachableTime, 31000), unsigned32(retransmitTime, 1100),
                        integer(forwarding, 1)}));
}

TEST_F(Ipv6Interface, WithoutNeighbourDiscoverySettingsTheTimersAreTheDefaults)
{
    EXPECT_EQ(get(table).index(ifIndex, 7).want(reachableTime, retransmitTime).send(),
              answered({unsigned32(reachableTime, 30000), unsigned32(retransmitTime, 1000)}));
}

TEST_F(Ipv6Interface, WithoutALinkLocalAddressTheInterfaceIsDown)
{
    EXPECT_EQ(get(table).index(ifIndex, 7).want(enableStatus).send(), answered({integer(enableStatus, 2)}));
}

TEST_F(Ipv6Interface, TheIdentifierIsAlwaysEightBytes)
{
    world().identifiers[7] = {};
    EXPECT_EQ(get(table).index(ifIndex, 7).want(identifier).send(),
              answered({octets(identifier, {0, 0, 0, 0, 0, 0, 0, 0})}));
}

TEST_F(Ipv6Interface, GetAsksForTheInterfaceItselfAndNotTheSelection)
{
    get(table).index(ifIndex, 3).want(identifier).send();
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IF_IsValidIfIndex(3)", "IP6Mib_GetIFID(3)",
                                     "IP6ADDR_DRVK_GetMainLLA(3)", "ND_GetIfConfigInfo(3)"}));
}

TEST_F(Ipv6Interface, GetAnswersAnExistingInterfaceThatIsNotSelected)
{
    world().identifiers[9] = {1};
    world().validity[9] = 1;
    EXPECT_EQ(get(table).index(ifIndex, 9).want(reasmMaxSize).send(), answered({unsigned32(reasmMaxSize, 65535)}));
}

TEST_F(Ipv6Interface, GetFailsOnlyWhereTheInterfaceIsSaidNotToExist)
{
    world().validity[3] = 2;
    EXPECT_EQ(get(table).index(ifIndex, 3).want(forwarding).send(), answered({integer(forwarding, 1)}));
    world().validity[3] = 0;
    EXPECT_EQ(get(table).index(ifIndex, 3).want(forwarding).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(Ipv6Interface, GetOfAnInterfaceWithoutIdentifierFindsNothing)
{
    EXPECT_EQ(get(table).index(ifIndex, 5).want(forwarding).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IF_IsValidIfIndex(5)", "IP6Mib_GetIFID(5)"}));
}

TEST_F(Ipv6Interface, GetOfInterfaceZeroFindsNothing)
{
    EXPECT_EQ(get(table).index(ifIndex, 0).want(forwarding).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).want(forwarding).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(Ipv6Interface, GetNextStartsAtTheFirstInterface)
{
    const Reply first = answered({integer(ifIndex, 3), integer(forwarding, 1)});
    EXPECT_EQ(getNext(table).want(forwarding).send(), first);
    EXPECT_EQ(getNext(table).index(ifIndex, 0).want(forwarding).send(), first);
    EXPECT_EQ(getNext(table).emptyIndex(ifIndex).want(forwarding).send(), first);
}

TEST_F(Ipv6Interface, GetNextSkipsInterfacesWithoutIdentifier)
{
    EXPECT_EQ(getNext(table).index(ifIndex, 3).send(), answered({integer(ifIndex, 7)}));
    EXPECT_EQ(foldedCalls(), (Calls{"IP6_DaemonCheck(1)", standardSelection, "IF_IteratorInitialize()",
                                    "IF_GetNextIfIndexByIfSelect(3)", "IP6Mib_GetIFID(5)",
                                    "IF_GetNextIfIndexByIfSelect(5)", "IP6Mib_GetIFID(7)", "IP6ADDR_DRVK_GetMainLLA(7)",
                                    "ND_GetIfConfigInfo(7)", "IF_IteratorFinalize()"}));
}

TEST_F(Ipv6Interface, GetNextFromNothingAsksForTheFirstInterface)
{
    world().interfaces = {5};
    EXPECT_EQ(getNext(table).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(foldedCalls(), (Calls{"IP6_DaemonCheck(1)", standardSelection, "IF_IteratorInitialize()",
                                    "IF_GetFirstIfIndexByIfSelect()", "IP6Mib_GetIFID(5)",
                                    "IF_GetNextIfIndexByIfSelect(5)", "IF_IteratorFinalize()"}));
}

TEST_F(Ipv6Interface, GetNextPastTheLastInterfaceFails)
{
    for (std::uint32_t last : {7u, 8u, 0xFFFFFFFFu}) {
        EXPECT_EQ(getNext(table).index(ifIndex, last).want(forwarding).send(), refused(ERR_NEXT_FAILED));
    }
    world().interfaces.clear();
    EXPECT_EQ(getNext(table).want(forwarding).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(Ipv6Interface, TheIdentifierServicesOwnCodeDoesNotMatter)
{
    world().failing["IP6Mib_GetIFID"] = RC_NO_MORE;
    EXPECT_EQ(getNext(table).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(Ipv6Interface, AWalkGoesOnWithoutAnIterator)
{
    world().outOfIterators = true;
    EXPECT_EQ(getNext(table).send(), answered({integer(ifIndex, 3)}));
}

TEST_F(Ipv6Interface, AForeignParameterEndsTheWalkAtItsPlace)
{
    EXPECT_EQ(getNext(table).want(forwarding).wantId(ip_ParamId(table, 8)).send(),
              refused(ERR_BAD_PARAM, 1, {integer(ifIndex, 3), integer(forwarding, 1)}));
    EXPECT_EQ(get(table).index(ifIndex, 3).wantId(ip_ParamId(3, 2)).send(), refused(ERR_BAD_PARAM, 1));
}

} // namespace
} // namespace ipmib::scripted::ipv6_interface
