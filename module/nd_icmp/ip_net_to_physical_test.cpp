// SPDX-License-Identifier: BSD-3-Clause
// ipNetToPhysicalTable: the IPv6 neighbours, interface by interface, global addresses before link-local ones.
#include "ip_net_to_physical_test.h"

namespace ipmib::scripted::ip_net_to_physical
{
namespace
{

// --- Rows and their order

TEST_F(IpNetToPhysical, GetAnswersEveryColumnAndDoesNotEchoTheIndex)
{
    NeighbourEntry &entry = world().neighbours[0];
    const std::uint8_t station[6] = {1, 2, 3, 4, 5, 6};
    std::memcpy(entry.link_layer, station, sizeof station);
    entry.type = ipmib_be32(2);
    entry.state = ipmib_be32(4);
    entry.last_updated_s = ipmib_be32(7);
    EXPECT_EQ(getRow(3, ipv6, bytesOf("2001:db8::1"))
                  .want(ifIndex, addressType, netAddress, physAddress, lastUpdated, type, state, rowStatus)
                  .send(),
              answered({octets(physAddress, {1, 2, 3, 4, 5, 6}), timeTicks(lastUpdated, 700), integer(type, 3),
                        integer(state, 4), integer(rowStatus, 1)}));
}

TEST_F(IpNetToPhysical, ValuesAreComputedModulo32Bits)
{
    world().neighbours[0].type = ipmib_be32(0xFFFFFFFF);
    world().neighbours[0].last_updated_s = ipmib_be32(0x80000001);
    EXPECT_EQ(getRow(3, ipv6, bytesOf("2001:db8::1")).want(type, lastUpdated).send(),
              answered({integer(type, 0), timeTicks(lastUpdated, 100)}));
}

TEST_F(IpNetToPhysical, AWalkVisitsGlobalThenLinkLocalNeighboursOfEachInterface)
{
    EXPECT_EQ(getNext(table).send(), globalRow(3, "2001:db8::1"));
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("2001:db8::1")).send(), globalRow(3, "2001:db8::2"));
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("2001:db8::2")).send(), linkLocalRow(3, "fe80::1"));
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::1", 3)).send(), linkLocalRow(5, "fe80::1"));
    EXPECT_EQ(nextAfter(5, ipv6z, zoned("fe80::1", 5)).send(), linkLocalRow(5, "fe80::2"));
    EXPECT_EQ(nextAfter(5, ipv6z, zoned("fe80::2", 5)).send(), refused(ERR_END_OF_TABLE));
}

TEST_F(IpNetToPhysical, TheFirstRowMayBeLinkLocalOrOfALaterInterface)
{
    world().neighbours = {neighbour(3, "fe80::1"), neighbour(5, "2001:db8::1")};
    EXPECT_EQ(getNext(table).send(), linkLocalRow(3, "fe80::1"));
    world().neighbours.erase(world().neighbours.begin());
    EXPECT_EQ(getNext(table).send(), globalRow(5, "2001:db8::1"));
}

TEST_F(IpNetToPhysical, AnEmptyTableEndsAtOnce)
{
    world().neighbours.clear();
    EXPECT_EQ(getNext(table).want(state).send(), refused(ERR_END_OF_TABLE));
    world().interfaces.clear();
    EXPECT_EQ(getNext(table).want(state).send(), refused(ERR_END_OF_TABLE));
}

TEST_F(IpNetToPhysical, AnEnumerationAsksForAtMostTwoEntriesOfAnInterface)
{
    world().neighbours = {neighbour(5, "fe80::9")};
    EXPECT_EQ(getNext(table).send(), linkLocalRow(5, "fe80::9"));
    EXPECT_EQ(serviceCalls(),
              enumeration({"IF_GetFirstIfIndexByIfSelect()", "ND_GetNextNetToPhysicalTable(1, 3 ::)",
                           "ND_GetNextNetToPhysicalTable(2, 3 fe80::)", "IF_GetNextIfIndexByIfSelect(3)",
                           "ND_GetNextNetToPhysicalTable(1, 5 ::)", "ND_GetNextNetToPhysicalTable(2, 5 fe80::)"}));
}

TEST_F(IpNetToPhysical, ALinkLocalKeyAsksForLinkLocalNeighboursOnly)
{
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 3)).send(), linkLocalRow(3, "fe80::1"));
    EXPECT_EQ(serviceCalls(), enumeration({"ND_GetNextNetToPhysicalTable(2, 3 fe80::)"}));
}

TEST_F(IpNetToPhysical, WithoutInterfacesTheEnumerationIsClosedAgain)
{
    world().interfaces.clear();
    getNext(table).send();
    EXPECT_EQ(serviceCalls(), enumeration({"IF_GetFirstIfIndexByIfSelect()"}));
}

TEST_F(IpNetToPhysical, WithoutAnIteratorNothingIsEnumerated)
{
    world().outOfIterators = true;
    EXPECT_EQ(getNext(table).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IF_IteratorInitialize()"}));
    EXPECT_EQ(openIterators(), 1u);
    newWorld(); // what could not be opened need not be closed
}

// --- Get

TEST_F(IpNetToPhysical, GetAsksForExactlyTheGivenNeighbour)
{
    EXPECT_EQ(getRow(5, ipv6z, zoned("fe80::2", 5)).want(rowStatus).send(), answered({integer(rowStatus, 1)}));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "ND_GetNetToPhysicalTable(5, fe80::2, 20)"}));
    EXPECT_EQ(getRow(5, ipv6z, zoned("fe80::3", 5)).want(rowStatus).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(IpNetToPhysical, GetRefusesAWrongZoneOrLengthWithoutAsking)
{
    EXPECT_EQ(getRow(5, ipv6z, zoned("fe80::1", 3)).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(5, ipv6z, zoned("fe80::1", 0x05000000)).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(5, ipv6z, bytesOf("fe80::1")).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(3, ipv6, zoned("2001:db8::1", 3)).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(3, ipv6, Bytes(15)).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls(5, "IP6_DaemonCheck(1)"));
}

TEST_F(IpNetToPhysical, GetOfAnotherTypeIsNotCheckedFurther)
{
    EXPECT_EQ(getRow(3, 1, bytesOf("2001:db8::1")).want(rowStatus).send(), answered({integer(rowStatus, 1)}));
    EXPECT_EQ(getRow(3, 16, Bytes(4, 0xFF)).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls().back(), "ND_GetNetToPhysicalTable(3, ffff:ffff::, 4)");
}

TEST_F(IpNetToPhysical, GetOfAnIncompleteIndexAsksWithZeros)
{
    EXPECT_EQ(get(table).want(state).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "ND_GetNetToPhysicalTable(0, ::, 0)"}));
    forgetCalls();
    EXPECT_EQ(get(table).index(ifIndex, 3).want(state).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls().back(), "ND_GetNetToPhysicalTable(3, ::, 0)");
    EXPECT_EQ(get(table).index(ifIndex, 3).index(addressType, ipv6).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(IpNetToPhysical, ALinkLocalNeighbourIsKnownByItsAddressNotByTheRequestsType)
{
    IpNetToPhysicalRow row = {};
    EXPECT_EQ(ip_IpNetToPhysical_GetByIndex(3, ipv6, bytesOf("fe80::1").data(), 16, &row), 0u);
    EXPECT_EQ(row.address_type, ipv6z);
    EXPECT_EQ(row.address_length, 20u);
    EXPECT_EQ(ipmib_be32_get(row.zone), 3u);
}

// --- The service, foreign parameters

TEST_F(IpNetToPhysical, EveryRequestChecksTheServiceFirst)
{
    world().ipv6Service = {1};
    EXPECT_EQ(getNext(table).want(state).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(get(table).want(state).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("::")).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(serviceCalls(), Calls(3, "IP6_DaemonCheck(1)"));
}

TEST_F(IpNetToPhysical, AForeignParameterEndsTheWalkAtItsPlace)
{
    for (std::uint32_t id : {ip_ParamId(table, 0), ip_ParamId(table, 9), ip_ParamId(8, 4)}) {
        EXPECT_EQ(getRow(3, ipv6, bytesOf("2001:db8::1")).want(rowStatus).wantId(id).send(),
                  refused(ERR_BAD_PARAM, 4, {integer(rowStatus, 1)}));
    }
}

// --- The exported family

TEST_F(IpNetToPhysical, LookupsFillTheRow)
{
    IpNetToPhysicalRow row = {};
    EXPECT_EQ(ip_IpNetToPhysical_GetFirstByIndex(&row), 0u);
    EXPECT_EQ(row.if_index, 3u);
    EXPECT_EQ(row.address_type, ipv6);
    EXPECT_EQ(row.address_length, 16u);
    EXPECT_EQ(row.row_status, 1u);
    EXPECT_EQ(Bytes(row.address, row.address + 16), bytesOf("2001:db8::1"));

    row = {};
    EXPECT_EQ(ip_IpNetToPhysical_GetNextByIndex(5, ipv6z, zoned("fe80::1", 3).data(), &row), 0u);
    EXPECT_EQ(row.if_index, 5u);
    EXPECT_EQ(ipmib_be32_get(row.zone), 5u);
    EXPECT_EQ(row.address_length, 20u);

    row = {};
    EXPECT_EQ(ip_IpNetToPhysical_GetNext(5, ipv6, bytesOf("::").data(), &row), 0u);
    EXPECT_EQ(Bytes(row.address, row.address + 16), bytesOf("fe80::1"));
}

TEST_F(IpNetToPhysical, AGlobalRowLeavesTheZoneAsItWas)
{
    IpNetToPhysicalRow row = {};
    row.zone = ipmib_be32(77);
    EXPECT_EQ(ip_IpNetToPhysical_GetByIndex(3, ipv6, bytesOf("2001:db8::1").data(), 16, &row), 0u);
    EXPECT_EQ(ipmib_be32_get(row.zone), 77u);
}

TEST_F(IpNetToPhysical, LookupsSayWhyTheyFindNothing)
{
    IpNetToPhysicalRow row = {};
    EXPECT_EQ(ip_IpNetToPhysical_GetByIndex(3, ipv6, bytesOf("2001:db8::9").data(), 16, &row), RC_NO_MORE);
    EXPECT_EQ(ip_IpNetToPhysical_GetByIndex(3, ipv6, bytesOf("2001:db8::1").data(), 20, &row), RC_NO_MORE);
    EXPECT_EQ(ip_IpNetToPhysical_GetByIndex(5, ipv6z, zoned("fe80::1", 3).data(), 20, &row), RC_NO_MORE);
    EXPECT_EQ(ip_IpNetToPhysical_GetNext(5, ipv6z, bytesOf("fe80::2").data(), &row), RC_NO_MORE);
    EXPECT_EQ(row.if_index, 0u) << "the row is left alone";
    world().outOfIterators = true;
    EXPECT_EQ(ip_IpNetToPhysical_GetFirstByIndex(&row), RC_NOT_FOUND);
    EXPECT_EQ(ip_IpNetToPhysical_GetNextByIndex(3, ipv6, zoned("::", 0).data(), &row), RC_NOT_FOUND);
    newWorld();
}

TEST_F(IpNetToPhysical, ProcGatesTheOperationAndGetAnswers)
{
    EXPECT_EQ(getNext(table).sendTo(ip_IpNetToPhysical_Proc), globalRow(3, "2001:db8::1"));
    EXPECT_EQ(getNext(table).sendTo(ip_IpNetToPhysical_Get), globalRow(3, "2001:db8::1"));
    EXPECT_EQ(Request(table, OP_SET).sendTo(ip_IpNetToPhysical_Proc), refused(ERR_READ_ONLY));
    EXPECT_EQ(Request(table, 6).sendTo(ip_IpNetToPhysical_Proc), answered());
    EXPECT_EQ(Request(table, 0).sendTo(ip_IpNetToPhysical_Proc), refused(ERR_BAD_PARAM));
}

} // namespace
} // namespace ipmib::scripted::ip_net_to_physical
