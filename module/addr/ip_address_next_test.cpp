// SPDX-License-Identifier: BSD-3-Clause
// ipAddressTable: what follows a key, and how a request spells one.
#include "ip_address_test.h"

#include <algorithm>

namespace ipmib::scripted::ip_address
{
namespace
{

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

TEST_F(IpAddress, RoomFor512OctetsOfAKeyIsOffered)
{
    nextAfter(ipv6, bytesOf("2001:db8::1")).send();
    EXPECT_EQ(std::count(allCalls().begin(), allCalls().end(), "MOR_GetDataFromPara(0x3720602, 512)"), 1);
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

} // namespace
} // namespace ipmib::scripted::ip_address
