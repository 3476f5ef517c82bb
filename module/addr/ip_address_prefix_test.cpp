// SPDX-License-Identifier: BSD-3-Clause
// ipAddressPrefixTable: the prefixes of each selected interface, then its link-local prefix.
#include "ip_address_prefix_test.h"

namespace ipmib::scripted::ip_address_prefix
{
namespace
{

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

// --- Foreign parameters

TEST_F(IpAddressPrefix, AForeignParameterEndsTheWalkAtItsPlace)
{
    for (std::uint32_t id : {ip_ParamId(table, 0), ip_ParamId(table, 10), ip_ParamId(6, 5)}) {
        EXPECT_EQ(getRow(3, ipv6z, zoned("fe80::", 3), 10).want(ifIndex, origin).wantId(id).send(),
                  refused(ERR_BAD_PARAM, 6, {integer(origin, 3)}));
    }
}

} // namespace
} // namespace ipmib::scripted::ip_address_prefix
