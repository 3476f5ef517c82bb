// SPDX-License-Identifier: BSD-3-Clause
// ipAddressPrefixTable: what follows a key, and how a request spells one.
#include "ip_address_prefix_test.h"

#include <algorithm>

namespace ipmib::scripted::ip_address_prefix
{
namespace
{

// --- Successors by the type of the key

TEST_F(IpAddressPrefix, ANextPrefixOfTheInterfaceStartsFromTheKey)
{
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("2001:db8:1::"), 48).send(), row(3, "2001:db8:1::", 64));
    EXPECT_EQ(foldedCalls(), withClosingSelection({"IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/48 new)"}));
}

TEST_F(IpAddressPrefix, AnAnswerEqualToTheKeyIsSkipped)
{
    world().repeatsKey = 2;
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("2001:db8:1::"), 48).send(), row(3, "2001:db8:1::", 64));
    EXPECT_EQ(foldedCalls(), withClosingSelection({"IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/48 new)",
                                                   "IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/48 as left)",
                                                   "IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/48 as left)"}));
}

TEST_F(IpAddressPrefix, BehindTheLastPrefixStandsTheLinkLocalOne)
{
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("2001:db8:1::"), 64).send(), linkLocalRow(3));
    EXPECT_EQ(foldedCalls(), withClosingSelection({"IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/64 new)",
                                                   "IP6Addr_GetLinkLocalAddr(3)"}));
}

TEST_F(IpAddressPrefix, BehindAnInterfaceStandTheFollowingOnes)
{
    world().linkLocal.clear();
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("2001:db8:1::"), 64).send(), row(5, "2001:db8:2::", 64));
    EXPECT_EQ(
        foldedCalls(),
        followingInterfaces({"IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/64 new)", "IP6Addr_GetLinkLocalAddr(3)"},
                            {"IF_GetNextIfIndexByIfSelect(3)", "IP6CFG_GetFirstFullPrefix(5, -1)"}));
}

TEST_F(IpAddressPrefix, ALearnedRowOfTheKeysInterfaceIsMadeBeforeTheSelectionIsPrepared)
{
    world().prefixes[1].origin = ipmib_be32(16);
    nextAfter(3, ipv6, bytesOf("2001:db8:1::"), 48).send();
    EXPECT_EQ(foldedCalls(), withClosingSelection(
                                 {"IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/48 new)", "TIME_GetSystemBootTime()"}));
}

TEST_F(IpAddressPrefix, TypesZeroAndOneStartTheInterface)
{
    for (std::uint32_t kind : {0u, 1u}) {
        forgetCalls();
        EXPECT_EQ(nextAfter(3, kind, bytesOf("ffff::"), 128).send(), row(3, "2001:db8:1::", 48));
        EXPECT_EQ(foldedCalls(), withClosingSelection({"IP6CFG_GetFirstFullPrefix(3, -1)"}));
    }
    world().prefixes.clear();
    EXPECT_EQ(nextAfter(3, 0, {}, 0).send(), linkLocalRow(3));
    world().linkLocal = {5};
    EXPECT_EQ(nextAfter(3, 1, {}, 0).send(), linkLocalRow(5));
}

TEST_F(IpAddressPrefix, TypeThreeStandsBeforeTheLinkLocalPrefix)
{
    EXPECT_EQ(nextAfter(3, 3, bytesOf("ffff::"), 128).send(), linkLocalRow(3));
    EXPECT_EQ(foldedCalls(), withClosingSelection({"IP6Addr_GetLinkLocalAddr(3)"}));
    EXPECT_EQ(nextAfter(4, 3, bytesOf("::"), 0).send(), row(5, "2001:db8:2::", 64));
}

TEST_F(IpAddressPrefix, TypeFourComparesAddressThenZoneThenLength)
{
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe7f:ffff::", 9), 128).send(), linkLocalRow(3));
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 2), 128).send(), linkLocalRow(3));
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 3), 9).send(), linkLocalRow(3));
    const Reply following = row(5, "2001:db8:2::", 64);
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 3), 10).send(), following);
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 3), 11).send(), following);
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 4), 0).send(), following);
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 0x80000000), 0).send(), following);
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::1", 0), 0).send(), following);
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 3), 0x8000000A).send(), following);
}

TEST_F(IpAddressPrefix, TypeFourAsksForTheLinkLocalAddressOnce)
{
    nextAfter(3, ipv6z, zoned("fe80::", 2), 10).send();
    EXPECT_EQ(foldedCalls(), withClosingSelection({"IP6Addr_GetLinkLocalAddr(3)"}));
    forgetCalls();
    nextAfter(3, ipv6z, zoned("fe80::", 3), 10).send();
    EXPECT_EQ(foldedCalls(),
              followingInterfaces({"IP6Addr_GetLinkLocalAddr(3)"},
                                  {"IF_GetNextIfIndexByIfSelect(3)", "IP6CFG_GetFirstFullPrefix(5, -1)"}));
    forgetCalls();
    EXPECT_EQ(nextAfter(5, ipv6z, zoned("fe80::", 2), 10).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(foldedCalls(), followingInterfaces({"IP6Addr_GetLinkLocalAddr(5)"}, {"IF_GetNextIfIndexByIfSelect(5)"}));
}

TEST_F(IpAddressPrefix, TypesFromFiveOnMoveToTheFollowingInterfaces)
{
    for (std::uint32_t kind : {5u, 16u, 0xFFFFFFFFu}) {
        forgetCalls();
        EXPECT_EQ(nextAfter(3, kind, {}, 0).send(), row(5, "2001:db8:2::", 64)) << kind;
        EXPECT_EQ(foldedCalls(),
                  followingInterfaces({}, {"IF_GetNextIfIndexByIfSelect(3)", "IP6CFG_GetFirstFullPrefix(5, -1)"}));
    }
}

TEST_F(IpAddressPrefix, AWalkGoesOnWithoutAnIterator)
{
    world().outOfIterators = true;
    EXPECT_EQ(getNext(table).send(), row(3, "2001:db8:1::", 48));
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("2001:db8:1::"), 48).send(), row(3, "2001:db8:1::", 64));
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 3), 10).send(), row(5, "2001:db8:2::", 64));
}

// --- Reading the index

TEST_F(IpAddressPrefix, AShortPrefixIsTheStartOfTheInterface)
{
    EXPECT_EQ(nextAfter(3, ipv6, Bytes(10, 0xFF), 64).send(), row(3, "2001:db8:1::", 48));
    EXPECT_EQ(foldedCalls()[1], "IP6CFG_GetNextFullPrefix(3, -1, ::/0 new)");
    EXPECT_EQ(nextAfter(3, ipv6z, Bytes(19, 0xFF), 64).send(), linkLocalRow(3));
}

TEST_F(IpAddressPrefix, ALongPrefixIsTheEndOfTheInterface)
{
    for (std::size_t length : {17u, 20u, 600u}) {
        forgetCalls();
        EXPECT_EQ(nextAfter(3, ipv6, Bytes(length), 64).send(), linkLocalRow(3));
        EXPECT_EQ(foldedCalls()[1], "IP6CFG_GetNextFullPrefix(3, -1, ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/128 new)");
    }
    EXPECT_EQ(nextAfter(3, ipv6z, Bytes(21), 0).send(), row(5, "2001:db8:2::", 64));
}

TEST_F(IpAddressPrefix, WithInterfaceAndTypeAWrongLengthPrefixIsACompleteIndex)
{
    EXPECT_EQ(getNext(table).index(ifIndex, 3).index(prefixType, ipv6).index(prefixPrefix, Bytes(10)).send(),
              row(3, "2001:db8:1::", 48));
    EXPECT_EQ(std::count(allCalls().begin(), allCalls().end(), "MOR_GetParaFromMsgByMOR(0x3720504)"), 0);
}

TEST_F(IpAddressPrefix, WithoutTheInterfaceAWrongLengthIsCopiedOverTheKeyAndThePrefixLengthRead)
{
    Bytes bytes = bytesOf("2001:db8:1::");
    bytes.resize(10);
    getNext(table).index(prefixType, ipv6).index(prefixPrefix, bytes).index(prefixLength, 40).send();
    EXPECT_EQ(foldedCalls()[1], "IP6CFG_GetNextFullPrefix(0, -1, 2001:db8:1::/40 new)");
    forgetCalls();
    bytes = zoned("2001:db8:1::", 9);
    getNext(table).index(prefixType, ipv6).index(prefixPrefix, bytes).send();
    EXPECT_EQ(foldedCalls()[1], "IP6CFG_GetNextFullPrefix(0, -1, 2001:db8:1::/128 new)");
}

TEST_F(IpAddressPrefix, APartialIndexStartsWhereItEnds)
{
    EXPECT_EQ(getNext(table).index(ifIndex, 3).send(), row(3, "2001:db8:1::", 48));
    EXPECT_EQ(getNext(table).index(ifIndex, 4).send(), row(5, "2001:db8:2::", 64));
    EXPECT_EQ(getNext(table).index(ifIndex, 3).index(prefixType, ipv6).send(), row(3, "2001:db8:1::", 48));
    EXPECT_EQ(getNext(table).index(ifIndex, 3).index(prefixType, ipv6z).send(), linkLocalRow(3));
    EXPECT_EQ(
        getNext(table).index(ifIndex, 3).index(prefixType, ipv6).index(prefixPrefix, bytesOf("2001:db8:1::")).send(),
        row(3, "2001:db8:1::", 48));
}

TEST_F(IpAddressPrefix, WithoutAPrefixLengthItIsZero)
{
    getNext(table).index(ifIndex, 3).index(prefixType, ipv6).index(prefixPrefix, bytesOf("2001:db8:1::")).send();
    EXPECT_EQ(foldedCalls()[1], "IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/0 new)");
}

TEST_F(IpAddressPrefix, EmptyIndexPartsCountAsAbsent)
{
    world().prefixes.clear();
    world().linkLocal.clear();
    EXPECT_EQ(getNext(table)
                  .emptyIndex(ifIndex)
                  .emptyIndex(prefixType)
                  .emptyIndex(prefixPrefix)
                  .index(prefixLength, 9)
                  .send(),
              refused(ERR_END_OF_TABLE))
        << "without a prefix its length is not looked at";
}

} // namespace
} // namespace ipmib::scripted::ip_address_prefix
