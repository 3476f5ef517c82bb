// SPDX-License-Identifier: BSD-3-Clause
// ipAddressTable: the global addresses, then the link-local ones of the selected interfaces.
#include "ip_address_test.h"

namespace ipmib::scripted::ip_address
{
namespace
{

TEST_F(IpAddress, TheStorageOfALinkLocalAddressIsVolatileToo)
{
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 3)).want(storageType).send(), answered({integer(storageType, 2)}));
}

// --- The order of rows

TEST_F(IpAddress, AWalkVisitsTheGlobalThenTheLinkLocalAddresses)
{
    world().interfaces.insert(7);
    world().linkLocalAddresses[7] = address(7, "fe80::");
    EXPECT_EQ(getNext(table).send(), globalRow("2001:db8::1"));
    EXPECT_EQ(nextAfter(ipv6, bytesOf("2001:db8::1")).send(), globalRow("2001:db8::2"));
    EXPECT_EQ(nextAfter(ipv6, bytesOf("2001:db8::2")).send(), linkLocalRow("fe80::", 7));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::", 7)).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3)).send(), linkLocalRow("fe80::1", 5));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 5)).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpAddress, WithoutGlobalAddressesTheFirstRowIsLinkLocal)
{
    world().addresses.clear();
    EXPECT_EQ(getNext(table).send(), linkLocalRow("fe80::1", 3));
    world().linkLocalAddresses.clear();
    EXPECT_EQ(getNext(table).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getNext(table).index(addrType, 0).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpAddress, TheFirstAddressIsAskedForOncePerInterface)
{
    world().addresses.clear();
    world().linkLocalAddresses.clear();
    getNext(table).send();
    EXPECT_EQ(
        foldedCalls(),
        (Calls{"IP6_DaemonCheck(1)", standardSelection, "IF_IteratorInitialize()", "IF_GetNextIfIndexByIfSelect(0)",
               "IP6Mib_GetFirstAddrInVrf(0, 14)", "IF_GetNextIfIndexByIfSelect(3)", "IP6Mib_GetFirstAddrInVrf(0, 14)",
               "IF_GetNextIfIndexByIfSelect(5)", "IF_IteratorFinalize()", standardSelection, "IF_IteratorInitialize()",
               "IF_GetNextIfIndexByIfSelect(0)", "IP6Mib_GetLinkLocalFullAddr(3)", "IF_GetNextIfIndexByIfSelect(3)",
               "IP6Mib_GetLinkLocalFullAddr(5)", "IF_GetNextIfIndexByIfSelect(5)", "IF_IteratorFinalize()"}));
}

TEST_F(IpAddress, WithoutInterfacesThereIsNoFirstAddress)
{
    world().interfaces.clear();
    EXPECT_EQ(getNext(table).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getNext(table).index(addrType, 0).send(), globalRow("2001:db8::1")) << "a key does not need them";
}

TEST_F(IpAddress, OfSeveralFirstAddressesTheSmallestIsKept)
{
    world().interfaces = {3, 5, 7};
    world().firstAddresses = {address(3, "2001:db8::9"), address(5, "2001:db8::4"), address(7, "2001:db8::6")};
    EXPECT_EQ(getNext(table).send(), globalRow("2001:db8::4"));
    world().firstAddresses = {address(3, "2001:db8::4"), address(5, "2001:db8::4"), address(7, "2001:db8::6")};
    EXPECT_EQ(getNext(table).want(ifIndex).send().values.back(), integer(ifIndex, 3)) << "an equal one is not kept";
}

TEST_F(IpAddress, FirstAddressesThatDoNotCountAreDropped)
{
    FullAddressRecord odd = address(3, "2001:db8::1");
    odd.lead = 1;
    world().firstAddresses = {odd, address(5, "2001:db8::9")};
    EXPECT_EQ(getNext(table).send(), globalRow("2001:db8::9"));
    world().firstAddresses = {address(5, "2001:db8::9"), odd};
    EXPECT_EQ(getNext(table).send(), globalRow("2001:db8::9"));
    world().firstAddresses = {odd, odd};
    EXPECT_EQ(getNext(table).send(), linkLocalRow("fe80::1", 3));
}

TEST_F(IpAddress, AZeroFirstAddressIsNoneAtAll)
{
    world().firstAddresses = {address(3, "::"), address(5, "2001:db8::9")};
    EXPECT_EQ(getNext(table).send(), globalRow("2001:db8::9"));
    world().firstAddresses = {address(3, "::"), address(5, "::")};
    EXPECT_EQ(getNext(table).send(), linkLocalRow("fe80::1", 3));
}

// --- Columns

TEST_F(IpAddress, GetAnswersEveryColumnAndDoesNotEchoTheIndex)
{
    FullAddressRecord &record = world().addresses[0];
    record.created_s = 12;
    record.last_changed_s = 42949673; // times 100 is 4 more than 32 bits hold
    record.prefix_length = 64;
    Request request = getRow(ipv6, bytesOf("2001:db8::1"));
    for (std::uint32_t column = addrType; column <= storageType; ++column) {
        request.want(column);
    }
    EXPECT_EQ(request.send(), answered({integer(ifIndex, 3), integer(addressType, 1),
                                        objectId(prefixPointer, {1, 3, 6, 1, 2, 1, 4, 32, 1, 5, 0, 0}),
                                        integer(origin, 1), integer(status, 1), timeTicks(created, 1200),
                                        timeTicks(lastChanged, 4), integer(rowStatus, 1), integer(storageType, 2)}));
}

class AddressColumns : public IpAddress
{
  protected:
    static Reply read(std::uint32_t column) { return getRow(ipv6, bytesOf("2001:db8::1")).want(column).send(); }
};

TEST_F(AddressColumns, OriginsAreMapped)
{
    const std::vector<std::pair<std::uint32_t, int>> origins = {{4, 2},   {8, 2},  {16, 4},  {64, 5},
                                                                {128, 6}, {0, 1},  {1, 1},   {2, 1},
                                                                {12, 1},  {32, 1}, {256, 1}, {0xFFFFFFFF, 1}};
    for (const auto &[code, expected] : origins) {
        world().addresses[0].origin = code;
        EXPECT_EQ(read(origin), answered({integer(origin, expected)})) << code;
    }
}

TEST_F(AddressColumns, StatesAreMapped)
{
    const std::vector<std::pair<std::uint32_t, int>> states = {{4, 2}, {64, 6}, {128, 7}, {0, 1},
                                                               {1, 1}, {68, 1}, {192, 1}, {0xFFFFFFFF, 1}};
    for (const auto &[code, expected] : states) {
        world().addresses[0].state = code;
        EXPECT_EQ(read(status), answered({integer(status, expected)})) << code;
    }
}

TEST_F(AddressColumns, AnycastIsOneBitOfTheFlags)
{
    world().addresses[0].flags = 0xFFFFFFFE;
    EXPECT_EQ(read(addressType), answered({integer(addressType, 1)}));
    world().addresses[0].flags = 3;
    EXPECT_EQ(read(addressType), answered({integer(addressType, 2)}));
}

TEST_F(AddressColumns, LinkLocalIsADecisionOfTenBits)
{
    for (const char *linkLocal : {"fe80::7", "febf::7"}) {
        world().addresses = {address(9, linkLocal)};
        EXPECT_EQ(getNext(table).send(), linkLocalRow(linkLocal, 9));
    }
    for (const char *other : {"fe7f::7", "fec0::7"}) {
        world().addresses = {address(9, other)};
        EXPECT_EQ(getNext(table).send(), globalRow(other));
    }
}

// --- Get

TEST_F(IpAddress, GetOfAGlobalAddressAsksForItAlone)
{
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::9")).want(rowStatus).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6Mib_GetAddrFullInfoInVrf(0, 2001:db8::9, -1)"}));
}

TEST_F(IpAddress, GetOfAGlobalAddressDoesNotLookAtTheLeadingField)
{
    world().addresses[0].lead = 1;
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::1")).want(rowStatus).send(), answered({integer(rowStatus, 1)}));
}

TEST_F(IpAddress, GetOfAShortOrLongGlobalAddressAsksForTheEndsOfTheRange)
{
    getRow(ipv6, Bytes(15, 1)).send();
    EXPECT_EQ(serviceCalls().back(), "IP6Mib_GetAddrFullInfoInVrf(0, ::, -1)");
    getRow(ipv6, Bytes(17, 1)).send();
    EXPECT_EQ(serviceCalls().back(), "IP6Mib_GetAddrFullInfoInVrf(0, ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff, -1)");
    getRow(ipv6, {}).send();
    EXPECT_EQ(serviceCalls().back(), "IP6Mib_GetAddrFullInfoInVrf(0, ::, -1)");
}

TEST_F(IpAddress, GetOfALinkLocalAddressFindsTheInterfaceOfItsZone)
{
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 5)).want(ifIndex).send(), answered({integer(ifIndex, 5)}));
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 4)).want(ifIndex).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::2", 5)).want(ifIndex).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(IpAddress, GetOfALinkLocalAddressGoesByTheRecordsInterface)
{
    world().linkLocalAddresses[3].if_index = 77;
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 77)).want(ifIndex).send(), answered({integer(ifIndex, 77)}));
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 3)).want(ifIndex).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(IpAddress, GetOfALinkLocalAddressMakesTheRowBehindTheWalk)
{
    getRow(ipv6z, zoned("fe80::1", 3)).send();
    const Calls calls = foldedCalls();
    ASSERT_GE(calls.size(), 7u);
    EXPECT_EQ(
        Calls(calls.begin(), calls.begin() + 7),
        (Calls{"IP6_DaemonCheck(1)", standardSelection, "IF_IteratorInitialize()", "IF_GetNextIfIndexByIfSelect(0)",
               "IP6Mib_GetLinkLocalFullAddr(3)", "IF_IteratorFinalize()", standardSelection}));
}

TEST_F(IpAddress, ALastInterfaceWithAnOddRecordAnswersZeros)
{
    world().linkLocalAddresses[5].lead = 1;
    EXPECT_EQ(
        getRow(ipv6z, zoned("fe80::7", 7))
            .want(ifIndex, addressType, prefixPointer, origin, status, created, lastChanged, rowStatus, storageType)
            .send(),
        answered({integer(ifIndex, 0), integer(addressType, 0), objectId(prefixPointer, {}), integer(origin, 0),
                  integer(status, 0), timeTicks(created, 0), timeTicks(lastChanged, 0), integer(rowStatus, 0),
                  integer(storageType, 0)}));
}

TEST_F(IpAddress, AnOddRecordElsewhereAnswersNothing)
{
    world().linkLocalAddresses[3].lead = 1;
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::7", 7)).want(ifIndex).send(), refused(ERR_NO_INSTANCE));
    world().linkLocalAddresses.erase(5);
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::7", 7)).want(ifIndex).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 3)).want(ifIndex).send(), refused(ERR_NO_INSTANCE))
        << "a record that does not count is no row";
}

TEST_F(IpAddress, GetNeedsBothIndexPartsAndAServedType)
{
    EXPECT_EQ(get(table).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(addrType, ipv6).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(addr, bytesOf("2001:db8::1")).send(), refused(ERR_NO_INSTANCE));
    for (std::uint32_t kind : {0u, 1u, 3u, 5u, 16u}) {
        EXPECT_EQ(getRow(kind, bytesOf("2001:db8::1")).send(), refused(ERR_NO_INSTANCE)) << kind;
    }
    EXPECT_EQ(serviceCalls(), Calls(8, "IP6_DaemonCheck(1)"));
}

// --- Foreign parameters

TEST_F(IpAddress, AForeignParameterEndsTheWalkAtItsPlace)
{
    for (std::uint32_t id : {ip_ParamId(table, 0), ip_ParamId(table, 12), ip_ParamId(7, 8)}) {
        EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::1")).want(rowStatus).wantId(id).send(),
                  refused(ERR_BAD_PARAM, 3, {integer(rowStatus, 1)}));
    }
}

} // namespace
} // namespace ipmib::scripted::ip_address
