// SPDX-License-Identifier: BSD-3-Clause
// A platform that keeps its promises passes; each planted fault is named.
#include "portcheck.h"

#include <gtest/gtest.h>

#include <ostream>

namespace ipmib::portcheck
{
namespace
{

using enum Promise;

Report check(const std::string &platform, std::chrono::milliseconds clockTime = {})
{
    Options options;
    options.plugin.platform = platform;
    options.plugin.module = IPMIB_MODULE;
    options.clockTime = clockTime;
    options.patience = std::chrono::milliseconds(1500);
    return checkPlatform(options);
}

TEST(Portcheck, passesASoundPlatform)
{
    const Report report = check(IPMIB_FAULTY_PLATFORM);
    EXPECT_TRUE(report.broken.empty()) << report.text();
    EXPECT_NE(report.text().find("ipAddressTable: 6 rows"), std::string::npos) << report.text();
    EXPECT_NE(report.text().find("ipNetToPhysicalTable: 5 rows"), std::string::npos) << report.text();
    EXPECT_NE(report.text().find("ipAddressPrefixTable: 7 rows"), std::string::npos) << report.text();
}

TEST(Portcheck, namesAServiceThatIsMissing)
{
    const Report report = check(IPMIB_INCOMPLETE_PLATFORM);
    ASSERT_TRUE(report.breaks(provided));
    EXPECT_NE(report.text().find("IP6ADDR_DRVK_GetGatewayByKey"), std::string::npos) << report.text();
}

TEST(Portcheck, saysThatAPlatformDoesNotLoad)
{
    EXPECT_TRUE(check("/nonexistent.so").breaks(starts));
}

TEST(Portcheck, comparesTheClockWithAnother)
{
    const std::chrono::milliseconds clockTime(1100);
    EXPECT_FALSE(check(IPMIB_FAULTY_PLATFORM, clockTime).breaks(clock));
    const Report report = check(std::string(IPMIB_FAULTY_PLATFORM) + ":clock-in-milliseconds", clockTime);
    EXPECT_TRUE(report.breaks(clock)) << report.text();
}

struct Fault {
    const char *name;
    Promise promise;
    const char *said; // within what is printed
};

void PrintTo(const Fault &fault, std::ostream *out)
{
    *out << fault.name;
}

class PlantedFault : public testing::TestWithParam<Fault>
{
};

TEST_P(PlantedFault, isNamed)
{
    const Report report = check(std::string(IPMIB_FAULTY_PLATFORM) + ":" + GetParam().name);
    EXPECT_TRUE(report.breaks(GetParam().promise)) << report.text();
    EXPECT_NE(report.text().find(GetParam().said), std::string::npos) << report.text();
}

constexpr Fault faults[] = {
    {"crash-at-start", survives, "the platform's start"},
    {"crashes", survives, "IP6Mib_GetIFID(2)"},
    {"hangs", returns, "ICMP6_GetMibStat"},
    {"writes-too-far", keepsToRecord, "IF_Select_Init"},
    {"service-down", running, "IP6_DaemonCheck"},
    {"no-iterator", iteratorOpens, "IF_IteratorInitialize"},
    {"descending-interfaces", interfacesAscend, "ifIndex 2 comes behind ifIndex 3"},
    {"other-first-interface", interfacesBegin, "the first is ifIndex 3, but behind ifIndex 0 comes ifIndex 2"},
    {"forgets-removed-interfaces", interfacesFollow, "behind ifIndex 1 comes none in place of ifIndex 2"},
    {"fickle-selection", interfacesStay, "the standard selection differs when it is asked for again"},
    {"denies-interface", interfacesExist, "it denies the selected ifIndex 7"},
    {"knows-every-interface", othersDoNotExist, "it says that ifIndex 0 exists"},
    {"swapped-interfaces", ifIndexInMachineOrder, "ifIndex 33554432 would be 2 in the other byte order"},
    {"no-ipv4-counters", ipv4Counters, "IP_GetMibIfStat(3)"},
    {"no-ipv6-counters", ipv6Counters, "IP6_GetIfStat(3)"},
    {"counters-of-none", noCountersOfNone, "IP6_GetIfStat"},
    {"no-system-counters", systemCounters, "IP6_GetMibStat"},
    {"swapped-counters", countersInMachineOrder, "IP6_GetIfStat(2)"},
    {"swapped-words", countersInMachineOrder, "IP_GetMibIfStat(2)"},
    {"backward-counters", countersGrow, "IP6_GetIfStat(2)"},
    {"swapped-hop-limit", hopLimit, "1073741824"},
    {"swapped-timers", timers, "which would be 30000 in the other byte order"},
    {"intervals", advertisements, "601 to 600"},
    {"swapped-mtu", mtu, "IP6_GetIfMTU(2)"},
    {"unordered-neighbours", neighboursAscend, "2001:db8:1::20 comes behind 2001:db8:1::30"},
    {"stands-still-at-neighbour", neighboursMove, "2001:db8:1::20 again"},
    {"forgets-removed-neighbours", neighboursFollow, "comes none in place of"},
    {"ignores-mode", neighbourMode, "fe80::10 in mode 1"},
    {"swapped-neighbour-interface", neighbourInterface, "the right one in the wrong byte order"},
    {"neighbour-lookup-by-length", neighbourExact, "2001:db8:1::10"},
    {"invents-neighbours", neighbourAbsent, "ND_GetNetToPhysicalTable"},
    {"neighbour-state", neighbourCodes, "state 0"},
    {"neighbour-in-ticks", neighbourTime, "was updated at 500000"},
    {"unordered-prefixes", prefixesAscend, "2001:db8:1::/64 comes behind 2001:db8:3::/64"},
    {"stands-still-at-prefix", prefixesMove, "2001:db8:2::/64 again"},
    {"stands-still-at-prefix", returns, "the walk of ipAddressPrefixTable through the module"},
    {"other-first-prefix", prefixesBegin, "the first is 2001:db8:2::/64, but behind ::/0 comes 2001:db8:1::/64"},
    {"forgets-removed-prefixes", prefixesFollow, "comes none in place of"},
    {"link-local-prefix", prefixesOutsideLinkLocal, "interface 3, fe80::/64"},
    {"swapped-prefix-interface", prefixInterface, "the right one in the wrong byte order"},
    {"unmasked-prefix", prefixLength, "2001:db8:1::1/64 has bits behind its length"},
    {"prefix-lifetimes", prefixTimes, "is preferred for 7201 and valid for 7200 seconds"},
    {"stands-still-at-address", addressesMove, "2001:db8:2::1 again"},
    {"unordered-addresses", addressesAscend, "2001:db8:1::1 comes behind 2001:db8:9::1"},
    {"other-first-address", addressesBegin, "the first is 2001:db8:2::1, but behind :: comes 2001:db8:1::1"},
    {"link-local-among-addresses", addressesOutsideLinkLocal, "fe80::1/10"},
    {"no-exact-address", addressExact, "2001:db8:1::1/64: it fails"},
    {"no-exact-address", tableGets, "ipAddressTable"},
    {"leading-field", addressLead, "2001:db8:1::1/64"},
    {"swapped-address-interface", addressInterface, "an existing one in the wrong byte order"},
    {"address-in-ticks", addressTimes, "created at 500000"},
    {"address-without-prefix", addressHasPrefix, "interface 2 has 2001:db8:2::1/64, and no 2001:db8:2::/64"},
    {"address-without-prefix", pointers, "that of 2001:db8:2::1 ends in 0.0"},
    {"link-local-length", linkLocalLength, "fe80::1/64"},
    {"global-as-link-local", linkLocalAddress, "IP6Mib_GetLinkLocalFullAddr(2)"},
    {"link-local-without-row", linkLocalRow, "IP6Addr_GetLinkLocalAddr(2)"},
    {"unordered-routers", routersAscend, "fe80::10 on interface 2 comes behind fe80::10 on interface 3"},
    {"stands-still-at-router", routersMove, "fe80::10 on interface 3 again"},
    {"other-first-router", routersBegin, "the first is fe80::10 on interface 3"},
    {"forgets-removed-routers", routersFollow, "comes none in place of"},
    {"ignores-router-class", routerClass, "fe80::10 on interface 2 in class 14"},
    {"swapped-router-interface", routerInterface, "an existing one in the wrong byte order"},
    {"router-lead", routerLead, "fe80::10 on interface 2"},
    {"router-in-ticks", routerTime, "was learned at 500000"},
    {"no-exact-router", routerExact, "IP6ADDR_DRVK_GetGatewayByKey"},
};
INSTANTIATE_TEST_SUITE_P(Faults, PlantedFault, testing::ValuesIn(faults));

} // namespace
} // namespace ipmib::portcheck
