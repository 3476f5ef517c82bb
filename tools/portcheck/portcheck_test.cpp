// SPDX-License-Identifier: BSD-3-Clause
// A platform that keeps its promises passes, in whichever language it is written; whatever else can be wrong is named.
#include "expectation.h"
#include "testing/check.h"

#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>

namespace ipmib::portcheck
{
namespace
{

using enum Promise;

TEST(Portcheck, passesASoundPlatform)
{
    const Report report = checkWith("");
    EXPECT_TRUE(report.broken.empty()) << report.text();
    EXPECT_NE(report.text().find("ipAddressTable: 9 rows"), std::string::npos) << report.text();
    EXPECT_NE(report.text().find("ipNetToPhysicalTable: 8 rows"), std::string::npos) << report.text();
    EXPECT_NE(report.text().find("ipAddressPrefixTable: 9 rows"), std::string::npos) << report.text();
}

class RightPort : public testing::TestWithParam<const char *>
{
};

TEST_P(RightPort, isNotAccused)
{
    const Report report = checkRight(GetParam());
    EXPECT_TRUE(report.broken.empty()) << report.text();
    EXPECT_FALSE(report.rows.empty());
    EXPECT_NE(report.text().find("built for records.h 1.0, platform.h 1.0"), std::string::npos) << report.text();
}
INSTANTIATE_TEST_SUITE_P(Ports, RightPort, testing::Values(IPMIB_RIGHT_PORTS));

TEST(Portcheck, doesNotAccuseADeviceWithoutRows)
{
    for (const char *empty : {"interfaces", "all"}) {
        setenv("EMPTY_DEVICE", empty, 1);
        const Report report = checkRight(IPMIB_UNSORTED_PORT);
        EXPECT_TRUE(report.broken.empty()) << empty << "\n" << report.text();
    }
    unsetenv("EMPTY_DEVICE");
}

TEST(Portcheck, looksBetweenInterfacesThatAreFarApart)
{
    setenv("MISTAKE", "knows-what-is-between", 1);
    const std::string known = checkRight(IPMIB_UNSORTED_PORT).text();
    EXPECT_NE(known.find("it says that ifIndex 33281 exists, and others between 511 and 66051"), std::string::npos)
        << known;
    setenv("MISTAKE", "compares-16-bits", 1);
    const std::string narrow = checkRight(IPMIB_UNSORTED_PORT).text();
    EXPECT_NE(narrow.find("behind ifIndex 33281 comes ifIndex 2147483600 in place of ifIndex 66051"), std::string::npos)
        << narrow;
    unsetenv("MISTAKE");
}

TEST(Portcheck, doesNotBlameTheByteOrderWhenExistenceIsToldTheWrongWayRound)
{
    const std::string text = checkWith("zero-is-success").text();
    EXPECT_EQ(text.find("wrong byte order"), std::string::npos) << text;
}

TEST(Portcheck, namesTheServicesThatAreMissing)
{
    const Report report = checkRight(IPMIB_EMPTY_PLATFORM);
    ASSERT_TRUE(report.breaks(provided));
    EXPECT_NE(report.text().find("IP6ADDR_DRVK_GetGatewayByKey"), std::string::npos) << report.text();
}

TEST(Portcheck, saysThatAPlatformDoesNotLoad)
{
    EXPECT_TRUE(checkRight("/nonexistent.so").breaks(starts));
}

TEST(Portcheck, comparesTheClockWithAnother)
{
    Options options;
    options.plugin.platform = std::string(IPMIB_FAULTY_PLATFORM) + ":" + IPMIB_DEVICE;
    options.plugin.module = IPMIB_MODULE;
    options.clockTime = std::chrono::milliseconds(1100);
    setenv("MISTAKE", "", 1);
    EXPECT_FALSE(checkPlatform(options).breaks(clock));
    setenv("MISTAKE", "clock-in-milliseconds", 1);
    const Report report = checkPlatform(options);
    EXPECT_TRUE(report.breaks(clock)) << report.text();
}

TEST(Portcheck, comparesRowsWithThoseThatSomebodyExpects)
{
    Report report;
    report.rows = {"router address=fe80::1 if_index=2 lifetime_s=1800",
                   "router address=fe80::2 if_index=3 lifetime_s=600", "system hop_limit=64"};
    const auto difference = [&](const std::string &file) {
        Report compared = report;
        compareRows(compared, file);
        return compared.text();
    };
    EXPECT_EQ(difference(expectationOf(report)), "");
    EXPECT_EQ(difference("# a person's\n\nrouter address=fe80::2\nrouter if_index=2 address=fe80::1\n"), "");
    EXPECT_NE(difference("router address=fe80::1 if_index=2 lifetime_s=1801\nrouter address=fe80::2\n")
                  .find("lifetime_s is 1800, not 1801: router address=fe80::1"),
              std::string::npos);
    EXPECT_NE(difference("router address=fe80::1\n").find("nobody expects router address=fe80::2"), std::string::npos);
    EXPECT_NE(
        difference(expectationOf(report) + "router address=fe80::3\n").find("there is no row router address=fe80::3"),
        std::string::npos);
    EXPECT_THROW(difference("router fe80::1\n"), std::runtime_error);
}

struct Fault {
    const char *mistake;
    Promise promise;
    const char *said; // within what is printed
};

void PrintTo(const Fault &fault, std::ostream *out)
{
    *out << fault.mistake;
}

constexpr Fault faults[] = {
    {"crash-at-start", survives, "the platform's library is opened"},
    {"crashes", survives, "IP6Mib_GetIFID(2)"},
    {"hangs", returns, "ICMP6_GetMibStat"},
    {"writes-too-far", keepsToRecord, "IF_Select_Init"},
    {"service-down", running, "IP6_DaemonCheck"},
    {"no-iterator", iteratorOpens, "IF_IteratorInitialize"},
    {"fickle-selection", interfacesStay, "the standard selection differs when it is asked for again"},
    {"denies-interface", interfacesExist, "it denies the selected ifIndex 7"},
    {"knows-every-interface", othersDoNotExist, "it says that ifIndex 0 exists"},
    {"zero-is-success", interfacesExist, "it denies the selected ifIndex 2"},
    {"ifIndex.ifIndex:bytes", ifIndexInMachineOrder, "ifIndex 33554432 is 2, the right one in the wrong byte order"},
    {"fails IP_GetMibIfStat", ipv4Counters, "IP_GetMibIfStat(3)"},
    {"fails IP6_GetIfStat", ipv6Counters, "IP6_GetIfStat(3)"},
    {"counters-of-none", noCountersOfNone, "IP6_GetIfStat"},
    {"fails IP6_GetMibStat", systemCounters, "IP6_GetMibStat"},
    {"Ip6MibStat.in_octets:words", countersInMachineOrder, "in_octets is 3006477107200000: it is 700000"},
    {"IpMibIfStat.out_octets:words", countersInMachineOrder, "IP_GetMibIfStat(2)"},
    {"backward-counters", countersGrow, "in_octets went from "},
    {"NdIfConfigInfo.min_interval_s:=601", advertisements, "min_interval_s is 601, more than max_interval_s, 600"},
    {"one-selection", interfacesStay, "differs when another selection is made beside it"},
    {"counters-of-the-system", countersAgree, "interfaces have counted each as much as the whole system"},
    {"counters-in-each-others-place", countersAgree, "in_octets is 7000, less than in_receives, 700000"},
    {"mtu-of-none", noneOfNone, "IP6_GetIfMTU("},
    {"fails IP6ADDR_DRVK_GetMainLLA", mainLinkLocal, "IP6ADDR_DRVK_GetMainLLA(2)"},
    {"neighbours-of-any-interface", neighbourAbsent, "it finds 2001:db8:1::10 on interface 3"},
    {"nearest-address", addressAbsent, "IP6Mib_GetAddrFullInfoInVrf"},
    {"routers-of-any-interface", routerAbsent,
     "it is asked for 2001:db8:1::10 on interface 3 and answers 2001:db8:1::10 on interface 2"},
    {"NeighbourEntry.last_updated_s:=1790000000", neighbourTime, "seconds since 1970 look like this"},
    {"neighbour-lookup-by-length", neighbourExact, "2001:db8:1::10 with 20 as the last argument"},
    {"invents-neighbours", neighbourAbsent, "ND_GetNetToPhysicalTable"},
    {"NeighbourEntry.last_updated_s:=500000", neighbourTime, "in hundredths of a second it would be"},
    {"unmasked-prefix", prefixLength, "and the prefix has bits behind its length"},
    {"FullPrefixRecord.preferred_s:=90000", prefixTimes, "preferred_s is 90000, longer than valid_s, 1800"},
    {"FullPrefixRecord.learned_at_s:=500000", prefixTimes, "learned_at_s is 500000"},
    {"fails IP6Mib_GetAddrFullInfoInVrf", addressExact, "2001:db8:1::1: it fails"},
    {"fails IP6Mib_GetAddrFullInfoInVrf", tableGets, "ipAddressTable"},
    {"FullAddressRecord.created_s:=500000", addressTimes, "created_s is 500000"},
    {"link-local-length", linkLocalLength, "prefix_length is 64, not 10"},
    {"link-local-of-another", linkLocalAddress, "if_index is 3, not the interface asked for, 2"},
    {"global-as-link-local", linkLocalAddress, "IP6Mib_GetLinkLocalFullAddr(2)"},
    {"fails IP6Addr_GetLinkLocalAddr", linkLocalRow, "IP6Addr_GetLinkLocalAddr(2)"},
    {"GatewayRecord.lead:=65536", routerLead, "fe80::10 on interface 2"},
    {"GatewayRecord.flags:=268435456", routerCodes, "flags is 268435456"},
    {"GatewayRecord.lifetime_s:=65536", routerLifetime, "lifetime_s is 65536, not 0 to 65535"},
    {"GatewayRecord.lifetime_s:=65536", tableAnswers, "ipDefaultRouterLifetime"},
    {"GatewayRecord.learned_at_s:=500000", routerTime, "learned_at_s is 500000"},
    {"fails IP6Mib_GetGatewayByKey", routerExact, "IP6Mib_GetGatewayByKey"},
    {"ipv4-counters-of-none", noCountersOfNone, "IP_GetMibIfStat: it succeeds for ifIndex 0"},
    {"identifier-of-16-bytes", keepsToRecord, "IP6Mib_GetIFID(2)"},
    {"mtu-of-64-bits", keepsToRecord, "IP6_GetIfMTU(2)"},
    {"modes-exchanged", neighbourMode, "fe80::10 in mode 1"},
    {"prefixes-of-all-interfaces", prefixInterface, "not the interface asked for, 2"},
    {"fails IP6Mib_GetLinkLocalFullAddr", linkLocalRow, "it succeeds, and there is no link-local address"},
    {"lookup-on-one-interface", addressExact, "in the list its if_index is"},
    {"addresses-in-machine-words", linkLocalAddress, "the right one in the wrong byte order"},
    {"seconds-since-1970", clock, "seconds since 1970 look like this"},
    {"no-clock", addressTimes, "a second since boot that has been (now is 0)"},
    {"fails IP6ADDR_DRVK_GetGatewayByKey", routerExact, "IP6ADDR_DRVK_GetGatewayByKey"},
    {"selection-not-reset", interfacesStay, "differs when it is made in storage that another selection was in"},
    {"selects-no-group", neighbourGroup, "it leaves out interface 2, which has neighbours"},
    {"swapped-words", countersInMachineOrder, "it is 27270000, the right one in the wrong word order"},
    {"fails ND_GetIfConfigInfo", identifierAndSettings, "interface 3: identifier is "},
    {"identifier-of-the-mac", identifiers, "with its universal/local bit, 02 of the first byte, turned over"},
    {"identifier-from-the-front", identifiers, "it is the first half of the address"},
    {"link-layer-not-filled", steady, "and then a5:a5:a5:a5:a5:a5 in a record that has held another row"},
    {"lifetimes-not-filled", steady, "valid_s is 0, and then 2779096485"},
    {"state-not-filled", steady, "state is preferred, and then 2779096485"},
    {"scope-in-neighbours", linkLocalPlain, "address has the interface, 2, in its third and fourth byte"},
    {"scope-in-link-local", linkLocalPlain, "IP6Mib_GetLinkLocalFullAddr(2)"},
    {"tentative-in-use", mainLinkLocal, "is there with a state of 64: not in use"},
    {"another-lifetime", routerExact, "in IP6Mib_GetGatewayByKey its lifetime_s is 1800, and then 1 here"},
    {"routers-not-filled", routerLifetime, "lifetime_s, learned_at_s and flags are 0"},
    {"clock-runs-backwards", clock, ": it runs backwards"},
    {"mtu.mtu:=576", mtu, "mtu is 576, not a link's size in bytes, 1280 or more"},
    {"hopLimit.hop limit:=0", hopLimit, "hop limit is 0, not 1 to 255"},
    {"NdIfConfigInfo.retransmit_ms:=1", timers,
     "retransmit_ms is 1, not 0, or 10 to an hour's milliseconds; in seconds"},
    {"NdIfConfigInfo.reachable_ms:=30", timers,
     "reachable_ms is 30, not 0, or 100 to an hour's milliseconds; in seconds"},
    {"NdIfConfigInfo.reachable_ms:=20000000", timers, "an hour's milliseconds; in microseconds it would be\n"},
    {"NdIfConfigInfo.max_interval_s:=0", advertisements, "max_interval_s is 0, not 4 to 1800"},
};

class PlantedFault : public testing::TestWithParam<Fault>
{
};

TEST_P(PlantedFault, isNamed)
{
    const Report report = checkWith(GetParam().mistake);
    EXPECT_TRUE(report.breaks(GetParam().promise)) << report.text();
    EXPECT_NE(report.text().find(GetParam().said), std::string::npos) << report.text();
}
INSTANTIATE_TEST_SUITE_P(Faults, PlantedFault, testing::ValuesIn(faults));

} // namespace
} // namespace ipmib::portcheck
