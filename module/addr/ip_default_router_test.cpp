// SPDX-License-Identifier: BSD-3-Clause
// ipDefaultRouterTable: the routers outside fe80::/10, then the link-local ones; its walk does not stop at a foreign
// id.
#include <scripted/module_test.h>

namespace ipmib::scripted::ip_default_router
{
namespace
{

constexpr std::uint32_t table = 8;
enum Column { addressType = 1, routerAddress, ifIndex, lifetime, preference };
enum AddressType : std::uint32_t { ipv6 = 2, ipv6z = 4 };

class IpDefaultRouter : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().gateways = {gateway(3, "2001:db8::1"), gateway(5, "2001:db8::1"), gateway(3, "fe80::1"),
                            gateway(5, "fe80::1"), gateway(5, "fe80::2")};
    }
};

Request withIndex(Request request, std::uint32_t kind, const Bytes &bytes, std::uint32_t interface)
{
    return request.index(addressType, kind).index(routerAddress, bytes).index(ifIndex, interface);
}
Request getRow(std::uint32_t kind, const Bytes &bytes, std::uint32_t interface)
{
    return withIndex(get(table), kind, bytes, interface);
}
Request nextAfter(std::uint32_t kind, const Bytes &bytes, std::uint32_t interface)
{
    return withIndex(getNext(table), kind, bytes, interface);
}
Reply globalRow(const char *text, std::uint32_t interface)
{
    return answered({integer(addressType, ipv6), octets(routerAddress, bytesOf(text)), integer(ifIndex, interface)});
}
Reply linkLocalRow(const char *text, std::uint32_t interface)
{
    return answered(
        {integer(addressType, ipv6z), octets(routerAddress, zoned(text, interface)), integer(ifIndex, interface)});
}

// --- The order of rows

TEST_F(IpDefaultRouter, AWalkVisitsTheGlobalThenTheLinkLocalRouters)
{
    EXPECT_EQ(getNext(table).send(), globalRow("2001:db8::1", 3));
    EXPECT_EQ(nextAfter(ipv6, bytesOf("2001:db8::1"), 3).send(), globalRow("2001:db8::1", 5));
    EXPECT_EQ(nextAfter(ipv6, bytesOf("2001:db8::1"), 5).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3), 3).send(), linkLocalRow("fe80::1", 5));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 5), 5).send(), linkLocalRow("fe80::2", 5));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::2", 5), 5).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpDefaultRouter, WithoutGlobalRoutersTheFirstRowIsLinkLocal)
{
    world().gateways = {gateway(5, "fe80::2"), gateway(3, "fe80::1")};
    EXPECT_EQ(getNext(table).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6Mib_GetFirstGatewayInVrf(0, 14)",
                                     "IP6Mib_GetFirstGatewayInVrf(0, 2)", "TIME_GetSystemBootTime()"}));
}

TEST_F(IpDefaultRouter, AnEmptyTableEndsWithoutIndexAndFailsWithOne)
{
    world().gateways.clear();
    EXPECT_EQ(getNext(table).want(lifetime).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(getNext(table).index(addressType, 0).want(lifetime).send(), refused(ERR_NEXT_FAILED));
}

TEST_F(IpDefaultRouter, ThePlatformsOwnCodeDoesNotMatter)
{
    for (const char *service :
         {"IP6Mib_GetFirstGatewayInVrf", "IP6Mib_GetNextGatewayInVrf", "IP6Mib_GetGatewayByKey"}) {
        world().failing[service] = RC_NO_MORE;
    }
    EXPECT_EQ(getNext(table).send(), refused(ERR_END_OF_TABLE));
    EXPECT_EQ(nextAfter(ipv6, bytesOf("::"), 0).send(), refused(ERR_NEXT_FAILED));
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::1"), 3).send(), refused(ERR_NO_INSTANCE));
}

// --- Columns

class RouterColumns : public IpDefaultRouter
{
  protected:
    static Reply read(std::uint32_t column) { return getRow(ipv6, bytesOf("2001:db8::1"), 3).want(column).send(); }
    static Reply lifetimeAt(std::uint32_t now, std::uint32_t learned, std::uint32_t seconds)
    {
        world().secondsSinceBoot = now;
        world().gateways[0].learned_at_s = ipmib_be32(learned);
        world().gateways[0].lifetime_s = ipmib_be32(seconds);
        return read(lifetime);
    }
};

TEST_F(RouterColumns, TheLifetimeIsWhatRemains)
{
    EXPECT_EQ(lifetimeAt(1100, 1000, 1800), answered({unsigned32(lifetime, 1700)}));
    EXPECT_EQ(lifetimeAt(2799, 1000, 1800), answered({unsigned32(lifetime, 1)}));
    EXPECT_EQ(lifetimeAt(1000, 1000, 65535), answered({unsigned32(lifetime, 65535)}));
}

TEST_F(RouterColumns, ALapsedLifetimeIsOne)
{
    EXPECT_EQ(lifetimeAt(2800, 1000, 1800), answered({unsigned32(lifetime, 1)}));
    EXPECT_EQ(lifetimeAt(9999, 1000, 1800), answered({unsigned32(lifetime, 1)}));
    EXPECT_EQ(lifetimeAt(1000, 1000, 0), answered({unsigned32(lifetime, 1)}));
    EXPECT_EQ(lifetimeAt(1000, 1001, 1800), answered({unsigned32(lifetime, 1)})) << "learned in the future";
}

TEST_F(RouterColumns, ThePreferenceIsTwoBitsOfTheFirstFlagsByte)
{
    const std::vector<std::pair<std::uint32_t, int>> preferences = {{0x00, 0}, {0x08, 1}, {0x10, -2}, {0x18, -1}};
    for (const auto &[bits, expected] : preferences) {
        world().gateways[0].flags = ipmib_be32(bits << 24);
        EXPECT_EQ(read(preference), answered({integer(preference, expected)})) << bits;
        world().gateways[0].flags = ipmib_be32(((bits | 0xE7) << 24) | 0xFFFFFF);
        EXPECT_EQ(read(preference), answered({integer(preference, expected)})) << bits << " among others";
    }
}

// --- Get

TEST_F(IpDefaultRouter, GetAsksForExactlyTheGivenRouterAndDoesNotEchoTheIndex)
{
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::1"), 5).want(addressType, routerAddress, ifIndex, preference).send(),
              answered({integer(preference, 0)}));
    EXPECT_EQ(serviceCalls(),
              (Calls{"IP6_DaemonCheck(1)", "IP6Mib_GetGatewayByKey(5 2001:db8::1)", "TIME_GetSystemBootTime()"}));
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::2"), 5).send(), refused(ERR_NO_INSTANCE));
}

TEST_F(IpDefaultRouter, ALinkLocalRouterIsReachedAsAZonedAddressOnly)
{
    EXPECT_EQ(getRow(ipv6, bytesOf("fe80::1"), 3).want(preference).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 3), 3).want(preference).send(), answered({integer(preference, 0)}));
}

TEST_F(IpDefaultRouter, GetRefusesAnInconsistentIndexWithoutAsking)
{
    world().gateways.push_back(gateway(3, "::"));
    EXPECT_EQ(getRow(ipv6, Bytes(15), 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6, {}, 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6, zoned("2001:db8::1", 3), 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6, bytesOf("febf::1"), 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 5), 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6z, zoned("2001:db8::1", 3), 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6z, bytesOf("fe80::1"), 0).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(getRow(ipv6z, Bytes(21, 0xFE), 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls(), Calls(8, "IP6_DaemonCheck(1)"));
}

TEST_F(IpDefaultRouter, GetOfAnotherTypeIsNotCheckedFurther)
{
    EXPECT_EQ(getRow(1, bytesOf("fe80::1"), 3).want(preference).send(), answered({integer(preference, 0)}));
    EXPECT_EQ(getRow(16, Bytes(3, 0xFF), 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls().back(), "IP6Mib_GetGatewayByKey(3 ffff:ff00::)");
    EXPECT_EQ(getRow(0, {}, 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(serviceCalls().back(), "IP6Mib_GetGatewayByKey(3 3000::)") << "an empty address that is copied";
}

TEST_F(IpDefaultRouter, GetNeedsThreeIndexParts)
{
    const Bytes bytes = bytesOf("2001:db8::1");
    EXPECT_EQ(get(table).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(routerAddress, bytes).index(ifIndex, 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(addressType, ipv6).index(ifIndex, 3).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(addressType, ipv6).index(routerAddress, bytes).send(), refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).emptyIndex(addressType).index(routerAddress, bytes).index(ifIndex, 3).send(),
              refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(addressType, ipv6).index(routerAddress, bytes).emptyIndex(ifIndex).send(),
              refused(ERR_NO_INSTANCE));
    EXPECT_EQ(get(table).index(addressType, ipv6).index(routerAddress, Bytes(3)).send(), refused(ERR_NO_INSTANCE))
        << "an address of a wrong length counts once";
    EXPECT_EQ(serviceCalls(), Calls(7, "IP6_DaemonCheck(1)"));
}

// --- Successors by the type of the key

TEST_F(IpDefaultRouter, TypesZeroAndOneStartTheTable)
{
    for (std::uint32_t kind : {0u, 1u}) {
        forgetCalls();
        EXPECT_EQ(nextAfter(kind, bytesOf("ffff::"), 9).send(), globalRow("2001:db8::1", 3));
        EXPECT_EQ(serviceCalls()[1], "IP6Mib_GetNextGatewayInVrf(0, 14, 0 ::)");
    }
    world().gateways = {gateway(3, "fe80::1")};
    forgetCalls();
    EXPECT_EQ(nextAfter(0, bytesOf("ffff::"), 9).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(serviceCalls()[2], "IP6Mib_GetNextGatewayInVrf(0, 2, 0 ::)");
}

TEST_F(IpDefaultRouter, TypeTwoGoesOnFromTheKeyThenToTheLinkLocalRouters)
{
    nextAfter(ipv6, bytesOf("2001:db8::1"), 5).send();
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6Mib_GetNextGatewayInVrf(0, 14, 5 2001:db8::1)",
                                     "IP6Mib_GetNextGatewayInVrf(0, 2, 0 ::)", "TIME_GetSystemBootTime()"}));
}

TEST_F(IpDefaultRouter, TypeThreeStartsTheLinkLocalRouters)
{
    EXPECT_EQ(nextAfter(3, bytesOf("ffff::"), 9).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(serviceCalls()[1], "IP6Mib_GetNextGatewayInVrf(0, 2, 0 ::)");
}

TEST_F(IpDefaultRouter, AZoneBelowTheInterfaceIndexFindsTheSameAddressThere)
{
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3), 5).send(), linkLocalRow("fe80::1", 5));
    EXPECT_EQ(serviceCalls(),
              (Calls{"IP6_DaemonCheck(1)", "IP6ADDR_DRVK_GetGatewayByKey(5 fe80::1)", "TIME_GetSystemBootTime()"}));
}

TEST_F(IpDefaultRouter, OtherwiseTypeFourGoesOnFromTheKey)
{
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 5), 5).send(), linkLocalRow("fe80::2", 5)) << "zone equal";
    EXPECT_EQ(serviceCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6ADDR_DRVK_GetGatewayByKey(5 fe80::1)",
                                     "IP6Mib_GetNextGatewayInVrf(0, 2, 5 fe80::1)", "TIME_GetSystemBootTime()"}));
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 0x80000000), 5).send(), linkLocalRow("fe80::2", 5)) << "zone above";
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3), 4).send(), linkLocalRow("fe80::1", 5)) << "no such router";
    world().gateways[3].lead = ipmib_be32(0x00010000);
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3), 5).send(), linkLocalRow("fe80::2", 5)) << "it does not count";
    world().gateways[3].lead = ipmib_be32(0x0000FFFF);
    EXPECT_EQ(nextAfter(ipv6z, zoned("fe80::1", 3), 5).send(), linkLocalRow("fe80::1", 5)) << "the rest is not read";
}

TEST_F(IpDefaultRouter, TypesFromFiveOnAreFollowedByNothing)
{
    for (std::uint32_t kind : {5u, 16u, 0xFFFFFFFFu}) {
        EXPECT_EQ(nextAfter(kind, bytesOf("::"), 0).send(), refused(ERR_NEXT_FAILED)) << kind;
    }
    EXPECT_EQ(serviceCalls(), Calls(3, "IP6_DaemonCheck(1)"));
}

// --- Reading the index

TEST_F(IpDefaultRouter, AShortAddressIsTheStartAndALongOneTheEndOfItsRange)
{
    nextAfter(ipv6, Bytes(15, 0xFF), 9).send();
    EXPECT_EQ(serviceCalls()[1], "IP6Mib_GetNextGatewayInVrf(0, 14, 9 ::)");
    forgetCalls();
    nextAfter(ipv6, Bytes(17), 9).send();
    EXPECT_EQ(serviceCalls()[1], "IP6Mib_GetNextGatewayInVrf(0, 14, 9 ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff)");
    forgetCalls();
    nextAfter(ipv6z, Bytes(19, 0xFF), 9).send();
    EXPECT_EQ(serviceCalls()[1], "IP6ADDR_DRVK_GetGatewayByKey(9 ::)");
    forgetCalls();
    nextAfter(ipv6z, Bytes(600), 9).send();
    EXPECT_EQ(serviceCalls()[1], "IP6ADDR_DRVK_GetGatewayByKey(9 ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff)");
}

TEST_F(IpDefaultRouter, AWrongLengthIsKeptAlsoWhenTheInterfaceIsMissing)
{
    getNext(table).index(addressType, ipv6).index(routerAddress, Bytes(15, 0xFF)).send();
    EXPECT_EQ(serviceCalls()[1], "IP6Mib_GetNextGatewayInVrf(0, 14, 0 ::)");
}

TEST_F(IpDefaultRouter, APartialIndexIsAKey)
{
    EXPECT_EQ(getNext(table).index(addressType, ipv6).send(), globalRow("2001:db8::1", 3));
    EXPECT_EQ(getNext(table).index(addressType, ipv6z).send(), linkLocalRow("fe80::1", 3));
    EXPECT_EQ(getNext(table).index(ifIndex, 9).send(), globalRow("2001:db8::1", 3));
    EXPECT_EQ(serviceCalls().rbegin()[1], "IP6Mib_GetNextGatewayInVrf(0, 14, 0 ::)");
    EXPECT_EQ(getNext(table).emptyIndex(routerAddress).send(), globalRow("2001:db8::1", 3));
    EXPECT_EQ(serviceCalls().rbegin()[1], "IP6Mib_GetNextGatewayInVrf(0, 14, 0 ::)") << "an empty address counts";
}

TEST_F(IpDefaultRouter, EmptyTypeAndInterfaceCountAsAbsent)
{
    EXPECT_EQ(getNext(table).emptyIndex(addressType).emptyIndex(ifIndex).send(), globalRow("2001:db8::1", 3));
    EXPECT_EQ(serviceCalls()[1], "IP6Mib_GetFirstGatewayInVrf(0, 14)");
}

// --- The walk over the requested parameters

TEST_F(IpDefaultRouter, AForeignParameterDoesNotStopTheWalkAndIsReportedAtItsEnd)
{
    Reply expected = globalRow("2001:db8::1", 3);
    expected.values.push_back(unsigned32(lifetime, 1));
    expected.values.push_back(integer(preference, 0));
    EXPECT_EQ(getNext(table).want(lifetime).wantId(ip_ParamId(9, 1)).want(preference).send(),
              refused(ERR_BAD_PARAM, 3, expected.values));
}

TEST_F(IpDefaultRouter, AnIndexIdBehindAForeignOneForgivesIt)
{
    const Reply first = globalRow("2001:db8::1", 3);
    for (std::uint32_t column : {addressType, routerAddress, ifIndex}) {
        if (column != routerAddress) { // its mere presence makes the request one with an index
            EXPECT_EQ(getNext(table).wantId(ip_ParamId(9, 1)).want(column).send(), first);
        }
        EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::1"), 3).wantId(1).want(column).send(), answered());
    }
    EXPECT_EQ(getNext(table).want(addressType).wantId(ip_ParamId(9, 1)).send(),
              refused(ERR_BAD_PARAM, 2, first.values));
}

TEST_F(IpDefaultRouter, AValueBehindAForeignIdDoesNotForgiveIt)
{
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::1"), 3).wantId(ip_ParamId(table, 6)).want(preference).send(),
              refused(ERR_BAD_PARAM, 5, {integer(preference, 0)}));
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::1"), 3).wantId(ip_ParamId(table, 0)).send(), refused(ERR_BAD_PARAM, 4));
}

TEST_F(IpDefaultRouter, IndexParametersBehindAForeignIdForgiveItToo)
{
    EXPECT_EQ(withIndex(get(table).wantId(7).want(preference), ipv6, bytesOf("2001:db8::1"), 3).send(),
              answered({integer(preference, 0)}));
}

} // namespace
} // namespace ipmib::scripted::ip_default_router
