// SPDX-License-Identifier: BSD-3-Clause
// ipNetToPhysicalTable: what follows a key, and how a request spells one.
#include "ip_net_to_physical_test.h"

namespace ipmib::scripted::ip_net_to_physical
{
namespace
{

// --- Successors by the type of the key

TEST_F(IpNetToPhysical, TypesZeroAndOneStartTheInterface)
{
    for (std::uint32_t kind : {0u, 1u}) {
        EXPECT_EQ(nextAfter(3, kind, bytesOf("2001:db8::5")).send(), globalRow(3, "2001:db8::1"));
        EXPECT_EQ(nextAfter(5, kind, {}).send(), linkLocalRow(5, "fe80::1"));
    }
}

TEST_F(IpNetToPhysical, TypeThreeStartsTheLinkLocalNeighbours)
{
    EXPECT_EQ(nextAfter(3, 3, bytesOf("ffff::")).send(), linkLocalRow(3, "fe80::1"));
}

TEST_F(IpNetToPhysical, TypeThreeWithASmallZoneFirstAsksForTheZeroAddress)
{
    nextAfter(3, 3, zoned("fe80::7", 2)).send();
    EXPECT_EQ(serviceCalls()[1], "ND_GetNetToPhysicalTable(3, ::, address)");
}

TEST_F(IpNetToPhysical, AZoneBelowTheInterfaceIndexFindsTheSameAddressThere)
{
    EXPECT_EQ(nextAfter(5, ipv6z, zoned("fe80::1", 3)).send(), linkLocalRow(5, "fe80::1"));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "ND_GetNetToPhysicalTable(5, fe80::1, address)"}));
}

TEST_F(IpNetToPhysical, AZoneBelowTheInterfaceIndexWithoutThatAddressGoesOn)
{
    world().neighbours = {neighbour(5, "fe80::2")};
    EXPECT_EQ(nextAfter(5, ipv6z, zoned("fe80::1", 3)).send(), linkLocalRow(5, "fe80::2"));
}

TEST_F(IpNetToPhysical, ZonesCompareAsUnsignedNumbers)
{
    EXPECT_EQ(nextAfter(5, ipv6z, zoned("fe80::1", 0x80000000)).send(), linkLocalRow(5, "fe80::2"));
    EXPECT_EQ(nextAfter(5, ipv6z, zoned("fe80::1", 0x100)).send(), linkLocalRow(5, "fe80::2"));
    EXPECT_EQ(nextAfter(5, ipv6z, zoned("fe80::1", 5)).send(), linkLocalRow(5, "fe80::2"));
}

TEST_F(IpNetToPhysical, TypesFromFiveOnMoveToTheNextInterface)
{
    for (std::uint32_t kind : {5u, 7u, 16u, 0xFFFFFFFFu}) {
        EXPECT_EQ(nextAfter(3, kind, {}).send(), linkLocalRow(5, "fe80::1")) << kind;
        EXPECT_EQ(nextAfter(5, kind, {}).send(), refused(ERR_END_OF_TABLE)) << kind;
    }
}

TEST_F(IpNetToPhysical, TypesFromFiveOnStandBehindTheHighestAddress)
{
    nextAfter(3, 7, bytesOf("::1")).send();
    EXPECT_EQ(serviceCalls()[1], "ND_GetNetToPhysicalTable(3, ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff, address)");
    EXPECT_EQ(serviceCalls()[6], "ND_GetNextNetToPhysicalTable(2, 3 ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff)");
}

TEST_F(IpNetToPhysical, InterfaceZeroIsTheFirstInterfaceWithTheKeysAddress)
{
    EXPECT_EQ(nextAfter(0, ipv6, bytesOf("2001:db8::1")).send(), globalRow(3, "2001:db8::2"));
}

TEST_F(IpNetToPhysical, AnInterfaceThatIsNotSelectedIsAskedAllTheSame)
{
    world().neighbours.push_back(neighbour(4, "2001:db8::44"));
    EXPECT_EQ(nextAfter(4, ipv6, bytesOf("::")).send(), globalRow(4, "2001:db8::44"));
    EXPECT_EQ(nextAfter(4, ipv6, bytesOf("2001:db8::44")).send(), linkLocalRow(5, "fe80::1"));
}

// --- Reading the index

TEST_F(IpNetToPhysical, AShortAddressIsTheStartOfItsRange)
{
    EXPECT_EQ(nextAfter(3, ipv6, Bytes(15, 0xFF)).send(), globalRow(3, "2001:db8::1"));
    EXPECT_EQ(nextAfter(3, ipv6, {}).send(), globalRow(3, "2001:db8::1"));
    forgetCalls();
    nextAfter(3, ipv6z, Bytes(19, 0xFF)).send();
    EXPECT_EQ(serviceCalls()[1], "ND_GetNetToPhysicalTable(3, ::, address)") << "all zero, the zone as well";
}

TEST_F(IpNetToPhysical, ALongAddressIsTheEndOfItsRange)
{
    EXPECT_EQ(nextAfter(3, ipv6, Bytes(17, 0)).send(), linkLocalRow(3, "fe80::1"));
    EXPECT_EQ(nextAfter(3, ipv6, Bytes(600, 0)).send(), linkLocalRow(3, "fe80::1"));
    forgetCalls();
    nextAfter(3, ipv6z, Bytes(21, 0)).send();
    EXPECT_EQ(serviceCalls()[1], "ND_GetNetToPhysicalTable(3, ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff, address)")
        << "the zone stays 0";
}

TEST_F(IpNetToPhysical, WithoutTheInterfaceAWrongLengthIsCopiedOverTheKey)
{
    Bytes shortAddress = bytesOf("2001:db8::1");
    shortAddress.pop_back();
    getNext(table).index(addressType, ipv6).index(netAddress, shortAddress).send();
    EXPECT_EQ(serviceCalls()[6], "ND_GetNextNetToPhysicalTable(1, 3 2001:db8::)");
    forgetCalls();
    Bytes longAddress = zoned("2001:db8::1", 9);
    getNext(table).index(addressType, ipv6).index(netAddress, longAddress).send();
    EXPECT_EQ(serviceCalls()[6], "ND_GetNextNetToPhysicalTable(1, 3 2001:db8::1)");
}

TEST_F(IpNetToPhysical, AnEmptyAddressThatIsCopiedLeavesTheDigitZeroInTheKey)
{
    getNext(table).index(addressType, ipv6).emptyIndex(netAddress).send();
    EXPECT_EQ(serviceCalls()[6], "ND_GetNextNetToPhysicalTable(1, 3 3000::)");
}

TEST_F(IpNetToPhysical, WithoutATypeAnAddressOfAnyLengthIsCopiedAndTheInterfaceStarts)
{
    EXPECT_EQ(getNext(table).index(ifIndex, 3).index(netAddress, Bytes(3, 0xFF)).send(), globalRow(3, "2001:db8::1"));
    EXPECT_EQ(getNext(table).index(ifIndex, 5).send(), linkLocalRow(5, "fe80::1"));
    EXPECT_EQ(getNext(table).index(ifIndex, 0).send(), globalRow(3, "2001:db8::1"));
    EXPECT_EQ(getNext(table).index(addressType, ipv6).send(), globalRow(3, "2001:db8::1"));
}

TEST_F(IpNetToPhysical, OnlyTheAddressesLengthIsLookedAt)
{
    nextAfter(3, ipv6, bytesOf("2001:db8::1")).send();
    Calls lengths;
    for (const std::string &call : allCalls()) {
        if (call.rfind("MOR_GetParaLen", 0) == 0) {
            lengths.push_back(call);
        }
    }
    EXPECT_EQ(lengths, Calls{"MOR_GetParaLen(0x3720703)"});
    EXPECT_EQ(getNext(table).emptyIndex(ifIndex).emptyIndex(addressType).send(), globalRow(3, "2001:db8::1"));
}

} // namespace
} // namespace ipmib::scripted::ip_net_to_physical
