// SPDX-License-Identifier: BSD-3-Clause
// ipAddressPrefixTable: the prefixes of each selected interface, then its link-local prefix.
#include <scripted/module_test.h>

#include <algorithm>

using namespace ipmib::scripted;

namespace
{

constexpr std::uint32_t table = 5;
enum Column {
    ifIndex = 1,
    prefixType,
    prefixPrefix,
    prefixLength,
    origin,
    onLinkFlag,
    autonomousFlag,
    preferredLifetime,
    validLifetime
};
enum AddressType : std::uint32_t { ipv6 = 2, ipv6z = 4 };

class IpAddressPrefix : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().interfaces = {3, 5};
        world().prefixes = {prefix(3, "2001:db8:1::", 48), prefix(3, "2001:db8:1::", 64),
                            prefix(5, "2001:db8:2::", 64)};
        world().linkLocal = {3};
    }
};

Request withIndex(Request request, std::uint32_t interface, std::uint32_t kind, const Bytes &bytes,
                  std::uint32_t length)
{
    return request.index(ifIndex, interface)
        .index(prefixType, kind)
        .index(prefixPrefix, bytes)
        .index(prefixLength, length);
}
Request getRow(std::uint32_t interface, std::uint32_t kind, const Bytes &bytes, std::uint32_t length)
{
    return withIndex(get(table), interface, kind, bytes, length);
}
Request nextAfter(std::uint32_t interface, std::uint32_t kind, const Bytes &bytes, std::uint32_t length)
{
    return withIndex(getNext(table), interface, kind, bytes, length);
}

Reply row(std::uint32_t interface, const char *address, std::uint32_t length)
{
    return answered({integer(ifIndex, interface), integer(prefixType, ipv6), octets(prefixPrefix, bytesOf(address)),
                     unsigned32(prefixLength, length)});
}
Reply linkLocalRow(std::uint32_t interface)
{
    return answered({integer(ifIndex, interface), integer(prefixType, ipv6z),
                     octets(prefixPrefix, zoned("fe80::", interface)), unsigned32(prefixLength, 10)});
}

// What looking at an interface that is the key's own leaves behind its lookups.
Calls withClosingSelection(Calls lookups)
{
    lookups.insert(lookups.begin(), "IP6_DaemonCheck(1)");
    lookups.insert(lookups.end(), {standardSelection, "IF_IteratorInitialize()", "IF_IteratorFinalize()"});
    return lookups;
}
// What the walk over the interfaces after the key's own leaves.
Calls followingInterfaces(Calls before, const Calls &lookups)
{
    before.insert(before.begin(), "IP6_DaemonCheck(1)");
    before.insert(before.end(), {standardSelection, "IF_IteratorInitialize()"});
    before.insert(before.end(), lookups.begin(), lookups.end());
    before.emplace_back("IF_IteratorFinalize()");
    return before;
}

// --- The order of rows

TEST_F(IpAddressPrefix, AWalkVisitsThePrefixesOfEachInterfaceThenItsLinkLocalOne)
{
    EXPECT_EQ(getNext(table).send(), row(3, "2001:db8:1::", 48));
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("2001:db8:1::"), 48).send(), row(3, "2001:db8:1::", 64));
    EXPECT_EQ(nextAfter(3, ipv6, bytesOf("2001:db8:1::"), 64).send(), linkLocalRow(3));
    EXPECT_EQ(nextAfter(3, ipv6z, zoned("fe80::", 3), 10).send(), row(5, "2001:db8:2::", 64));
    EXPECT_EQ(nextAfter(5, ipv6, bytesOf("2001:db8:2::"), 64).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpAddressPrefix, TheFirstRowMayBeALinkLocalOneOrOfALaterInterface)
{
    world().prefixes.clear();
    EXPECT_EQ(getNext(table).send(), linkLocalRow(3));
    world().linkLocal = {5};
    EXPECT_EQ(getNext(table).send(), linkLocalRow(5));
    EXPECT_EQ(nextAfter(5, ipv6z, zoned("fe80::", 5), 10).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpAddressPrefix, AnEmptyTableEndsWithoutIndexAndFailsWithOne)
{
    world().prefixes.clear();
    world().linkLocal.clear();
    EXPECT_EQ(getNext(table).want(origin).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getNext(table).index(ifIndex, 0).want(origin).send(), refused(ERR_NEXT_FAILED));
    world().interfaces.clear();
    EXPECT_EQ(getNext(table).want(origin).send(), refused(ERR_END_OF_TABLE));
}

TEST_F(IpAddressPrefix, TheFirstRowIsSearchedFromInterfaceZero)
{
    world().prefixes = {prefix(5, "2001:db8:2::", 64)};
    world().linkLocal.clear();
    getNext(table).send();
    EXPECT_EQ(foldedCalls(),
              followingInterfaces({}, {"IF_GetNextIfIndexByIfSelect(0)", "IP6CFG_GetFirstFullPrefix(3, -1)",
                                       "IP6Addr_GetLinkLocalAddr(3)", "IF_GetNextIfIndexByIfSelect(3)",
                                       "IP6CFG_GetFirstFullPrefix(5, -1)"}));
}

// --- Columns

TEST_F(IpAddressPrefix, ALinkLocalPrefixHasFixedColumns)
{
    EXPECT_EQ(getRow(3, ipv6z, zoned("fe80::", 3), 10)
                  .want(ifIndex, prefixType, prefixPrefix, prefixLength, origin, onLinkFlag, autonomousFlag,
                        preferredLifetime, validLifetime)
                  .send(),
              answered({integer(origin, 3), integer(onLinkFlag, 1), integer(autonomousFlag, 1),
                        unsigned32(preferredLifetime, 4294967295), unsigned32(validLifetime, 4294967295)}));
}

class PrefixColumns : public IpAddressPrefix
{
  protected:
    // The only prefix, with the time since boot 1100 seconds.
    FullPrefixRecord &only(std::uint32_t originCode)
    {
        world().secondsSinceBoot = 1100;
        world().prefixes = {prefix(3, "2001:db8::", 64)};
        FullPrefixRecord &record = world().prefixes[0];
        record.origin = ipmib_be32(originCode);
        record.learned_at_s = ipmib_be32(1000);
        record.preferred_s = ipmib_be32(3600);
        record.valid_s = ipmib_be32(7200);
        return record;
    }
    static Reply read(std::uint32_t column) { return getRow(3, ipv6, bytesOf("2001:db8::"), 64).want(column).send(); }
};

TEST_F(PrefixColumns, OriginsAreMapped)
{
    const std::vector<std::pair<std::uint32_t, int>> origins = {{1, 2}, {2, 2}, {4, 3}, {8, 4},  {16, 5},
                                                                {0, 1}, {3, 1}, {5, 1}, {32, 1}, {0xFFFFFFFF, 1}};
    for (const auto &[code, expected] : origins) {
        only(code);
        EXPECT_EQ(read(origin), answered({integer(origin, expected)})) << code;
    }
}

TEST_F(PrefixColumns, FlagsAreTruthValues)
{
    only(1).flags = 0x80;
    EXPECT_EQ(read(onLinkFlag), answered({integer(onLinkFlag, 1)}));
    EXPECT_EQ(read(autonomousFlag), answered({integer(autonomousFlag, 2)}));
    only(1).flags = 0x40;
    EXPECT_EQ(read(onLinkFlag), answered({integer(onLinkFlag, 2)}));
    EXPECT_EQ(read(autonomousFlag), answered({integer(autonomousFlag, 1)}));
    only(1).flags = 0x3F; // the other bits do not matter
    EXPECT_EQ(read(onLinkFlag), answered({integer(onLinkFlag, 2)}));
    EXPECT_EQ(read(autonomousFlag), answered({integer(autonomousFlag, 2)}));
}

TEST_F(PrefixColumns, LearnedLifetimesAge)
{
    for (std::uint32_t learned : {8u, 16u}) {
        only(learned);
        EXPECT_EQ(read(preferredLifetime), answered({unsigned32(preferredLifetime, 3500)}));
        EXPECT_EQ(read(validLifetime), answered({unsigned32(validLifetime, 7100)}));
    }
}

TEST_F(PrefixColumns, LapsedLifetimesAreZero)
{
    only(16).preferred_s = ipmib_be32(99);
    EXPECT_EQ(read(preferredLifetime), answered({unsigned32(preferredLifetime, 0)}));
    only(16).preferred_s = ipmib_be32(100);
    EXPECT_EQ(read(preferredLifetime), answered({unsigned32(preferredLifetime, 0)}));
    only(16).valid_s = ipmib_be32(101);
    EXPECT_EQ(read(validLifetime), answered({unsigned32(validLifetime, 1)}));
}

TEST_F(PrefixColumns, InfiniteLearnedLifetimesAgeLikeAnyOther)
{
    only(8).valid_s = ipmib_be32(0xFFFFFFFF);
    EXPECT_EQ(read(validLifetime), answered({unsigned32(validLifetime, 0xFFFFFFFF - 100)}));
}

TEST_F(PrefixColumns, ATimeOfLearningInTheFutureWrapsAround)
{
    only(8).learned_at_s = ipmib_be32(1101);
    EXPECT_EQ(read(validLifetime), answered({unsigned32(validLifetime, 0)}));
}

TEST_F(PrefixColumns, OtherLifetimesDoNotAge)
{
    for (std::uint32_t code : {1u, 2u, 4u, 32u, 24u}) {
        only(code);
        EXPECT_EQ(read(preferredLifetime), answered({unsigned32(preferredLifetime, 3600)})) << code;
        EXPECT_EQ(read(validLifetime), answered({unsigned32(validLifetime, 7200)})) << code;
    }
}

TEST_F(PrefixColumns, TheTimeIsAskedOnceForALearnedRowAndNotOtherwise)
{
    only(16);
    getRow(3, ipv6, bytesOf("2001:db8::"), 64).want(preferredLifetime, validLifetime).send();
    EXPECT_EQ(serviceCalls(),
              (Calls{"IP6_DaemonCheck(1)", "IP6CFG_GetFirstFullPrefix(3, -1)", "TIME_GetSystemBootTime()"}));
    only(4);
    forgetCalls();
    getRow(3, ipv6, bytesOf("2001:db8::"), 64).want(preferredLifetime, validLifetime).send();
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6CFG_GetFirstFullPrefix(3, -1)"}));
}

TEST_F(PrefixColumns, ALinkLocalPrefixOfThePlatformIsAZonedRowWithSixteenBytes)
{
    for (const char *linkLocal : {"fe80::", "febf:ffff::"}) {
        world().prefixes = {prefix(3, linkLocal, 64)};
        EXPECT_EQ(getNext(table).send(),
                  answered({integer(ifIndex, 3), integer(prefixType, ipv6z), octets(prefixPrefix, bytesOf(linkLocal)),
                            unsigned32(prefixLength, 64)}));
    }
    for (const char *other : {"fe7f::", "fec0::", "ff80::", "::"}) {
        world().prefixes = {prefix(3, other, 64)};
        EXPECT_EQ(getNext(table).send(), row(3, other, 64));
    }
}

// --- Get

TEST_F(IpAddressPrefix, GetGoesThroughThePrefixesOfTheInterfaceWithOneCursor)
{
    EXPECT_EQ(getRow(3, ipv6, bytesOf("2001:db8:1::"), 64).want(origin).send(), answered({integer(origin, 1)}));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6CFG_GetFirstFullPrefix(3, -1)",
                                     "IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/48 as left)"}));
}

TEST_F(IpAddressPrefix, GetOfAPrefixThatIsNotThereEndsBehindTheLastOne)
{
    EXPECT_EQ(getRow(3, ipv6, bytesOf("2001:db8:1::"), 65).want(origin).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6CFG_GetFirstFullPrefix(3, -1)",
                                     "IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/48 as left)",
                                     "IP6CFG_GetNextFullPrefix(3, -1, 2001:db8:1::/64 as left)"}));
    EXPECT_EQ(getRow(9, ipv6, bytesOf("2001:db8:1::"), 64).want(origin).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(5, ipv6, bytesOf("2001:db8:1::"), 64).want(origin).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(IpAddressPrefix, GetOfTheLinkLocalPrefixDoesNotLookAtTheAddressBytes)
{
    EXPECT_EQ(getRow(3, ipv6z, zoned("2001:db8::7", 3), 10).want(origin).send(), answered({integer(origin, 3)}));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6Addr_GetLinkLocalAddr(3)"}));
}

TEST_F(IpAddressPrefix, GetOfTheLinkLocalPrefixNeedsItsZoneItsLengthAndTheAddress)
{
    EXPECT_EQ(getRow(3, ipv6z, zoned("fe80::", 5), 10).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(3, ipv6z, zoned("fe80::", 3), 64).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(3, ipv6z, bytesOf("fe80::"), 10).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(3, ipv6z, Bytes(21), 10).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls(4, "IP6_DaemonCheck(1)"));
    EXPECT_EQ(getRow(5, ipv6z, zoned("fe80::", 5), 10).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(IpAddressPrefix, GetOfAWrongLengthFindsNothing)
{
    EXPECT_EQ(getRow(3, ipv6, Bytes(15), 64).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(3, ipv6, zoned("2001:db8:1::", 3), 64).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls(2, "IP6_DaemonCheck(1)"));
}

TEST_F(IpAddressPrefix, GetOfAnotherTypeFindsNothing)
{
    for (std::uint32_t kind : {0u, 1u, 3u, 5u, 16u}) {
        EXPECT_EQ(getRow(3, kind, bytesOf("2001:db8:1::"), 64).send(), refused(ERR_NO_INSTANCE)) << kind;
    }
}

TEST_F(IpAddressPrefix, GetNeedsAllFourIndexParts)
{
    const Bytes bytes = bytesOf("2001:db8:1::");
    EXPECT_EQ(get(table).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(ifIndex, 3).index(prefixType, ipv6).index(prefixPrefix, bytes).send(),
              refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(prefixType, ipv6).index(prefixPrefix, bytes).index(prefixLength, 64).send(),
              refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(ifIndex, 3).index(prefixPrefix, bytes).index(prefixLength, 64).send(),
              refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(ifIndex, 3).index(prefixType, ipv6).index(prefixLength, 64).send(),
              refused(ERR_NO_INSTANCE));
    EXPECT_EQ(
        get(table).index(ifIndex, 3).index(prefixType, ipv6).index(prefixPrefix, bytes).emptyIndex(prefixLength).send(),
        refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls(6, "IP6_DaemonCheck(1)"));
}

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

// --- Foreign parameters

TEST_F(IpAddressPrefix, AForeignParameterEndsTheWalkAtItsPlace)
{
    for (std::uint32_t id : {ip_ParamId(table, 0), ip_ParamId(table, 10), ip_ParamId(6, 5)}) {
        EXPECT_EQ(getRow(3, ipv6z, zoned("fe80::", 3), 10).want(ifIndex, origin).wantId(id).send(),
                  refused(ERR_BAD_PARAM, 6, {integer(origin, 3)}));
    }
}

} // namespace
