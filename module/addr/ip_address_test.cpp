// SPDX-License-Identifier: BSD-3-Clause
// ipAddressTable: the global addresses, then the link-local ones of the selected interfaces.
#include <scripted/module_test.h>

#include <algorithm>

using namespace ipmib::scripted;

namespace
{

constexpr std::uint32_t table = 6;
enum Column {
    addrType = 1,
    addr,
    ifIndex,
    addressType,
    prefixPointer,
    origin,
    status,
    created,
    lastChanged,
    rowStatus,
    storageType
};
enum AddressType : std::uint32_t { ipv6 = 2, ipv6z = 4 };

class IpAddress : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().interfaces = {3, 5};
        world().addresses = {address(3, "2001:db8::1"), address(5, "2001:db8::2")};
        world().linkLocalAddresses = {{3, address(3, "fe80::1")}, {5, address(5, "fe80::1")}};
    }
};

Request getRow(std::uint32_t kind, const Bytes &bytes)
{
    return get(table).index(addrType, kind).index(addr, bytes);
}
Request nextAfter(std::uint32_t kind, const Bytes &bytes)
{
    return getNext(table).index(addrType, kind).index(addr, bytes);
}
Reply globalRow(const char *text)
{
    return answered({integer(addrType, ipv6), octets(addr, bytesOf(text))});
}
Reply linkLocalRow(const char *text, std::uint32_t zone)
{
    return answered({integer(addrType, ipv6z), octets(addr, zoned(text, zone))});
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

// --- The prefix pointer

class PrefixPointer : public IpAddress
{
  protected:
    static constexpr std::uint32_t column[10] = {1, 3, 6, 1, 2, 1, 4, 32, 1, 5};

    static Reply pointsTo(std::vector<std::uint32_t> instance)
    {
        instance.insert(instance.begin(), std::begin(column), std::end(column));
        return answered({objectId(prefixPointer, instance)});
    }
    static Reply pointsTo(std::uint32_t interface, std::uint32_t kind, const Bytes &prefixBytes, std::uint32_t length)
    {
        std::vector<std::uint32_t> instance = {interface, kind, static_cast<std::uint32_t>(prefixBytes.size())};
        instance.insert(instance.end(), prefixBytes.begin(), prefixBytes.end());
        instance.push_back(length);
        return pointsTo(instance);
    }
    static Reply pointerOf(const char *text, std::uint32_t length)
    {
        world().addresses = {address(3, text)};
        world().addresses[0].prefix_length = length;
        return getRow(ipv6, bytesOf(text)).want(prefixPointer).send();
    }
};

TEST_F(PrefixPointer, NamesThePrefixRowOfTheAddress)
{
    world().prefixes = {prefix(3, "2001:db8::", 48), prefix(3, "2001:db8:0:7::", 64), prefix(5, "2001:db8:0:7::", 64)};
    EXPECT_EQ(pointerOf("2001:db8:0:7::1", 64), pointsTo(3, ipv6, bytesOf("2001:db8:0:7::"), 64));
    EXPECT_EQ(pointerOf("2001:db8:0:7::1", 48), pointsTo(3, ipv6, bytesOf("2001:db8::"), 48));
}

TEST_F(PrefixPointer, WithoutAPrefixRowNamesNone)
{
    EXPECT_EQ(pointerOf("2001:db8::1", 64), pointsTo({0, 0}));
    world().prefixes = {prefix(5, "2001:db8::", 64), prefix(3, "2001:db8::", 63), prefix(3, "2001:db8:1::", 64)};
    EXPECT_EQ(pointerOf("2001:db8::1", 64), pointsTo({0, 0}));
}

TEST_F(PrefixPointer, MasksAnyNumberOfBits)
{
    world().prefixes = {prefix(3, "::", 0),
                        prefix(3, "8000::", 1),
                        prefix(3, "ffff:fffe::", 31),
                        prefix(3, "ffff:ffff::", 32),
                        prefix(3, "ffff:ffff:8000::", 33),
                        prefix(3, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fffe", 127),
                        prefix(3, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 128),
                        prefix(3, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 200)};
    for (const FullPrefixRecord &each : world().prefixes) {
        const std::uint32_t length = ipmib_be32_get(each.length);
        EXPECT_EQ(pointerOf("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", length),
                  pointsTo(3, ipv6, Bytes(each.prefix, each.prefix + 16), length));
    }
}

TEST_F(PrefixPointer, OfALinkLocalAddressNamesTheLinkLocalPrefixWithItsZone)
{
    world().linkLocal = {3};
    world().linkLocalAddresses[3].prefix_length = 10;
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 3)).want(prefixPointer).send(),
              pointsTo(3, ipv6z, zoned("fe80::", 3), 10));
}

TEST_F(PrefixPointer, OfALongerLinkLocalPrefixNamesNone)
{
    world().linkLocal = {3};
    world().linkLocalAddresses[3].prefix_length = 64;
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 3)).want(prefixPointer).send(), pointsTo({0, 0}));
}

TEST_F(PrefixPointer, WalksThePrefixRowsUntilOneMatches)
{
    world().prefixes = {prefix(3, "2001:db8::", 64), prefix(5, "2001:db8::", 64)};
    world().linkLocal = {3};
    getRow(ipv6, bytesOf("2001:db8::2")).send(); // on interface 5, with prefix length 0
    EXPECT_EQ(
        foldedCalls(),
        (Calls{"IP6_DaemonCheck(1)", "IP6Mib_GetAddrFullInfoInVrf(0, 2001:db8::2, -1)",
               // the first row
               standardSelection, "IF_IteratorInitialize()", "IF_GetNextIfIndexByIfSelect(0)",
               "IP6CFG_GetFirstFullPrefix(3, -1)", "IF_IteratorFinalize()",
               // the one behind 3 2001:db8::/64
               "IP6CFG_GetNextFullPrefix(3, -1, 2001:db8::/64 new)", "IP6Addr_GetLinkLocalAddr(3)", standardSelection,
               "IF_IteratorInitialize()", "IF_IteratorFinalize()",
               // the one behind 3 fe80::%3/10
               "IP6Addr_GetLinkLocalAddr(3)", standardSelection, "IF_IteratorInitialize()",
               "IF_GetNextIfIndexByIfSelect(3)", "IP6CFG_GetFirstFullPrefix(5, -1)", "IF_IteratorFinalize()",
               // nothing behind 5 2001:db8::/64
               "IP6CFG_GetNextFullPrefix(5, -1, 2001:db8::/64 new)", "IP6Addr_GetLinkLocalAddr(5)", standardSelection,
               "IF_IteratorInitialize()", "IF_GetNextIfIndexByIfSelect(5)", "IF_IteratorFinalize()"}));
}

TEST_F(PrefixPointer, DoesNotStopWhenTheInterfaceIsPassed)
{
    world().prefixes = {prefix(3, "2001:db8::", 64), prefix(5, "2001:db8::", 64)};
    pointerOf("2001:db8::1", 48);
    EXPECT_NE(std::find(allCalls().begin(), allCalls().end(), "IP6CFG_GetFirstFullPrefix(5, -1)"), allCalls().end());
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

// --- Successors by the type of the key

TEST_F(IpAddress, TypesZeroAndOneStartTheTable)
{
    for (std::uint32_t kind : {0u, 1u}) {
        EXPECT_EQ(nextAfter(kind, bytesOf("ffff::")).send(), globalRow("2001:db8::1"));
    }
    world().addresses[0].lead = 1;
    EXPECT_EQ(nextAfter(0, {}).send(), globalRow("2001:db8::1")) << "the leading field is not looked at";
    world().addresses.clear();
    EXPECT_EQ(nextAfter(1, {}).send(), linkLocalRow("fe80::1", 3));
}

TEST_F(IpAddress, AZeroAddressIsNoRow)
{
    world().addresses = {address(3, "::")};
    EXPECT_EQ(nextAfter(0, {}).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpAddress, TypeTwoAsksForTheAddressBehindTheKey)
{
    EXPECT_EQ(nextAfter(ipv6, bytesOf("2001:db8::1")).send(), globalRow("2001:db8::2"));
    EXPECT_EQ(foldedCalls()[1], "IP6Mib_GetNextAddrInVrf(0, 14, 2001:db8::1 new)");
}

TEST_F(IpAddress, AnAnswerEqualToTheKeyIsSkipped)
{
    world().repeatsKey = 2;
    EXPECT_EQ(nextAfter(ipv6, bytesOf("2001:db8::1")).send(), globalRow("2001:db8::2"));
    const Calls calls = foldedCalls();
    EXPECT_EQ(
        Calls(calls.begin() + 1, calls.begin() + 4),
        (Calls{"IP6Mib_GetNextAddrInVrf(0, 14, 2001:db8::1 new)", "IP6Mib_GetNextAddrInVrf(0, 14, 2001:db8::1 as left)",
               "IP6Mib_GetNextAddrInVrf(0, 14, 2001:db8::1 as left)"}));
}

TEST_F(IpAddress, TypeThreeStartsTheLinkLocalAddresses)
{
    EXPECT_EQ(nextAfter(3, bytesOf("ffff::")).send(), linkLocalRow("fe80::1", 3));
}

TEST_F(IpAddress, TypeFourGoesOnWithTheSameAddressOnALaterInterface)
{
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 0)).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 4)).send(), linkLocalRow("fe80::1", 5));
    world().linkLocalAddresses[5] = address(5, "fe80::2");
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3)).send(), linkLocalRow("fe80::2", 5));
}

TEST_F(IpAddress, TypeFourWalksTheInterfacesFromTheStart)
{
    world().linkLocalAddresses.clear();
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3)).send(), refused(ERR_NEXT_FAILED));
    const Calls walk = {standardSelection,
                        "IF_IteratorInitialize()",
                        "IF_GetNextIfIndexByIfSelect(0)",
                        "IP6Mib_GetLinkLocalFullAddr(3)",
                        "IF_GetNextIfIndexByIfSelect(3)",
                        "IP6Mib_GetLinkLocalFullAddr(5)",
                        "IF_GetNextIfIndexByIfSelect(5)",
                        "IF_IteratorFinalize()"};
    Calls expected = {"IP6_DaemonCheck(1)"};
    expected.insert(expected.end(), walk.begin(), walk.end()); // for the same address on a later interface
    expected.insert(expected.end(), walk.begin(), walk.end()); // for the next greater address
    EXPECT_EQ(foldedCalls(), expected);
}

TEST_F(IpAddress, ZonesCompareAsUnsignedNumbers)
{
    world().linkLocalAddresses[5] = address(5, "fe80::2");
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 0x80000000)).send(), linkLocalRow("fe80::2", 5));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 0x100)).send(), linkLocalRow("fe80::2", 5));
    world().linkLocalAddresses[5] = address(0x80000000, "fe80::1");
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3)).send(), linkLocalRow("fe80::1", 0x80000000));
}

TEST_F(IpAddress, LinkLocalAddressesThatDoNotCountAreSkipped)
{
    world().linkLocalAddresses[3].lead = 1;
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 0)).send(), linkLocalRow("fe80::1", 5));
    EXPECT_EQ(nextAfter(3, {}).send(), linkLocalRow("fe80::1", 5));
}

TEST_F(IpAddress, TheSmallestGreaterLinkLocalAddressFollows)
{
    world().interfaces = {3, 5, 7};
    world().linkLocalAddresses = {{3, address(3, "fe80::9")}, {5, address(5, "fe80::4")}, {7, address(7, "fe80::4")}};
    EXPECT_EQ(nextAfter(3, {}).send(), linkLocalRow("fe80::4", 5)) << "of equal ones the first in walk order";
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::4", 7)).send(), linkLocalRow("fe80::9", 3));
}

TEST_F(IpAddress, TypesFromFiveOnAreFollowedByNothing)
{
    for (std::uint32_t kind : {5u, 16u, 0xFFFFFFFFu}) {
        EXPECT_EQ(nextAfter(kind, bytesOf("::")).send(), refused(ERR_NEXT_FAILED)) << kind;
    }
    EXPECT_EQ(serviceCalls(), Calls(3, "IP6_DaemonCheck(1)"));
}

TEST_F(IpAddress, AWalkGoesOnWithoutAnIterator)
{
    world().outOfIterators = true;
    EXPECT_EQ(getNext(table).send(), globalRow("2001:db8::1"));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3)).send(), linkLocalRow("fe80::1", 5));
}

// --- Reading the index

TEST_F(IpAddress, AShortKeyIsTheZeroAddress)
{
    EXPECT_EQ(nextAfter(ipv6, Bytes(15, 0xFF)).send(), globalRow("2001:db8::1"));
    EXPECT_EQ(nextAfter(ipv6, {}).send(), globalRow("2001:db8::1"));
    EXPECT_EQ(nextAfter(ipv6z, Bytes(19, 0xFF)).send(), linkLocalRow("fe80::1", 3));
}

TEST_F(IpAddress, ALongKeyIsTheHighestAddress)
{
    EXPECT_EQ(nextAfter(ipv6, Bytes(17)).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(nextAfter(ipv6, Bytes(600)).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(nextAfter(ipv6z, Bytes(21)).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpAddress, APartialIndexIsAKey)
{
    EXPECT_EQ(getNext(table).index(addrType, ipv6).send(), globalRow("2001:db8::1"));
    EXPECT_EQ(getNext(table).index(addrType, ipv6z).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(getNext(table).index(addr, Bytes(600, 0xFF)).send(), globalRow("2001:db8::1"));
}

TEST_F(IpAddress, AnEmptyIndexPartIsPresent)
{
    world().interfaces.clear(); // without index there is no first row now
    EXPECT_EQ(getNext(table).emptyIndex(addrType).send(), globalRow("2001:db8::1"));
    EXPECT_EQ(getNext(table).emptyIndex(addr).send(), globalRow("2001:db8::1"));
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
