// SPDX-License-Identifier: BSD-3-Clause
// The parser of radvd.conf: what it takes, what it fills in, what it says of mistakes.
#include "advertisements/radvd_conf.h"

#include <gtest/gtest.h>

namespace ipmib::platform
{
namespace
{

RadvdInterface parseOne(const std::string &options)
{
    RadvdConf conf;
    const auto error = parseRadvdConf("interface eth0 {" + options + "};", "radvd.conf", conf);
    EXPECT_EQ(error.value_or(""), "");
    return conf.count("eth0") != 0 ? conf["eth0"] : RadvdInterface();
}

std::string errorOf(const std::string &text)
{
    RadvdConf conf;
    return parseRadvdConf(text, "radvd.conf", conf).value_or("no error");
}

TEST(RadvdConf, NamedInterfaceHasRadvdsDefaults)
{
    const RadvdInterface interface = parseOne("");
    EXPECT_FALSE(interface.sendAdverts);
    EXPECT_FALSE(interface.managed);
    EXPECT_FALSE(interface.otherConfig);
    EXPECT_EQ(interface.maxIntervalMs, 600'000u);
    EXPECT_EQ(interface.minIntervalMs, 198'000u);
    EXPECT_EQ(interface.defaultLifetimeS, 1'800u);
    EXPECT_EQ(interface.linkMtu, 0u);
    EXPECT_EQ(interface.reachableMs, 0u);
    EXPECT_EQ(interface.retransmitMs, 0u);
    EXPECT_EQ(interface.hopLimit, 64u);
    EXPECT_EQ(interface.refusal, "");
}

TEST(RadvdConf, ReadsEveryOptionOfTheTable)
{
    const RadvdInterface interface =
        parseOne("AdvSendAdvert on; AdvManagedFlag on; AdvOtherConfigFlag on; MaxRtrAdvInterval 100; "
                 "MinRtrAdvInterval 50; AdvLinkMTU 1400; AdvReachableTime 12345; AdvRetransTimer 678; "
                 "AdvCurHopLimit 42; AdvDefaultLifetime 0;");
    EXPECT_TRUE(interface.sendAdverts);
    EXPECT_TRUE(interface.managed);
    EXPECT_TRUE(interface.otherConfig);
    EXPECT_EQ(interface.maxIntervalMs, 100'000u);
    EXPECT_EQ(interface.minIntervalMs, 50'000u);
    EXPECT_EQ(interface.linkMtu, 1'400u);
    EXPECT_EQ(interface.reachableMs, 12'345u);
    EXPECT_EQ(interface.retransmitMs, 678u);
    EXPECT_EQ(interface.hopLimit, 42u);
    EXPECT_EQ(interface.defaultLifetimeS, 0u);
}

TEST(RadvdConf, TheLastValueOfAnOptionCounts)
{
    EXPECT_FALSE(parseOne("AdvSendAdvert on; AdvSendAdvert off;").sendAdverts);
}

TEST(RadvdConf, IntervalsMayHaveDecimals)
{
    const RadvdInterface interface = parseOne("MaxRtrAdvInterval 10.5; MinRtrAdvInterval 3.0625;");
    EXPECT_EQ(interface.maxIntervalMs, 10'500u);
    EXPECT_EQ(interface.minIntervalMs, 3'062u);
    EXPECT_EQ(interface.defaultLifetimeS, 31u); // three times the interval, cut to whole seconds
}

TEST(RadvdConf, DefaultLifetimeIsAtLeastOneSecond)
{
    const RadvdInterface interface = parseOne("MaxRtrAdvInterval 0.1; MinRtrAdvInterval 0.05; AdvIntervalOpt on;");
    EXPECT_EQ(interface.defaultLifetimeS, 1u);
}

TEST(RadvdConf, HopLimitHasEightBits)
{
    EXPECT_EQ(parseOne("AdvCurHopLimit 300;").hopLimit, 44u);
}

TEST(RadvdConf, NamesIgnoreCase)
{
    EXPECT_TRUE(parseOne("advsendadvert ON;").sendAdverts);
}

TEST(RadvdConf, SkipsCommentsBlocksAndUnknownOptions)
{
    RadvdConf conf;
    const auto error = parseRadvdConf("# the uplink\n"
                                      "interface eth0\n{\n"
                                      "  AdvSendAdvert on; # AdvManagedFlag on;\n"
                                      "  FutureOption 1 2 three;\n"
                                      "  FutureBlock a b { Inner { Deep 1; }; Other off; };\n"
                                      "  prefix 2001:db8:0:1::/64 { AdvOnLink on; AdvValidLifetime infinity; };\n"
                                      "  prefix 2001:db8:0:2::/64;\n"
                                      "  route ::/0 { AdvRoutePreference high; };\n"
                                      "  RDNSS 2001:db8::1 2001:db8::2 { AdvRDNSSLifetime 600; };\n"
                                      "  DNSSL example.com lab.example.com { };\n"
                                      "  clients { fe80::21f:16ff:fe06:3aab; !fe80::2; };\n"
                                      "  AdvRASrcAddress { fe80::1; };\n"
                                      "  abro fe80::a200:0:0:1/64 { AdvVersionLow 10; };\n"
                                      "  lowpanco { AdvContextID 2; };\n"
                                      "  AdvCaptivePortalAPI \"https://[2001:db8::1]/a;b\";\n"
                                      "  AdvOtherConfigFlag on;\n"
                                      "};\n"
                                      "interface eth0.5 { };\n",
                                      "radvd.conf", conf);
    ASSERT_EQ(error.value_or(""), "");
    ASSERT_EQ(conf.size(), 2u);
    EXPECT_TRUE(conf["eth0"].sendAdverts);
    EXPECT_TRUE(conf["eth0"].otherConfig);
    EXPECT_FALSE(conf["eth0"].managed);
    EXPECT_EQ(conf["eth0"].line, 2u);
    EXPECT_EQ(conf["eth0.5"].line, 19u);
}

TEST(RadvdConf, EmptyFileNamesNoInterface)
{
    RadvdConf conf;
    conf["stale"];
    EXPECT_FALSE(parseRadvdConf(" # nothing here\n", "radvd.conf", conf).has_value());
    EXPECT_TRUE(conf.empty());
}

TEST(RadvdConf, AnErrorNamesFileLineAndExpectation)
{
    EXPECT_EQ(errorOf("interface eth0 {\n  AdvSendAdvert yes;\n};"),
              "radvd.conf:2: expected 'on' or 'off' after AdvSendAdvert, found 'yes'");
    EXPECT_EQ(errorOf("interface eth0 {\n  AdvSendAdvert on\n};"),
              "radvd.conf:3: expected ';' to end AdvSendAdvert, found '}'");
    EXPECT_EQ(errorOf("interface eth0 {\n  AdvSendAdvert on\n  AdvManagedFlag on;\n};"),
              "radvd.conf:3: expected ';' to end AdvSendAdvert, found 'AdvManagedFlag'");
    EXPECT_EQ(errorOf("interface eth0 {\n  Future 1\n  AdvManagedFlag on;\n};"),
              "radvd.conf:3: expected ';' to end Future, found 'AdvManagedFlag'");
    EXPECT_EQ(errorOf("interface eth0 {\n  AdvDefaultLifetime 10.5;\n};"),
              "radvd.conf:2: expected a whole number after AdvDefaultLifetime, found '10.5'");
    EXPECT_EQ(errorOf("interface eth0 { AdvLinkMTU; };"),
              "radvd.conf:1: expected a whole number after AdvLinkMTU, found ';'");
    EXPECT_EQ(errorOf("interface eth0 { MaxRtrAdvInterval 5.; };"),
              "radvd.conf:1: expected a number of seconds after MaxRtrAdvInterval, found '5.'");
    EXPECT_EQ(errorOf("interface eth0 { AdvLinkMTU 99999999999; };"),
              "radvd.conf:1: expected a whole number after AdvLinkMTU, found '99999999999'");
    EXPECT_EQ(errorOf("interface eth0 { AdvSendAdvert on; }\n"),
              "radvd.conf:2: expected ';' after the '}' of interface eth0, found the end of the file");
    EXPECT_EQ(errorOf("interface eth0 {\n"), "radvd.conf:2: expected an option or '}', found the end of the file");
    EXPECT_EQ(errorOf("interface eth0 AdvSendAdvert on;"),
              "radvd.conf:1: expected '{' after the name of interface eth0, found 'AdvSendAdvert'");
    EXPECT_EQ(errorOf("interface { };"), "radvd.conf:1: expected the name of an interface, found '{'");
    EXPECT_EQ(errorOf("\n// comment\n"), "radvd.conf:2: expected 'interface', found '//'");
    EXPECT_EQ(errorOf("interface eth0 { /* no */ };"), "radvd.conf:1: expected an option or '}', found '/*'");
    EXPECT_EQ(errorOf("interface eth0 { prefix ::/64 {\n AdvOnLink on }; };"),
              "radvd.conf:2: expected ';' after 'on', found '}'");
    EXPECT_EQ(errorOf("interface eth0 { X \"unended; };"), "radvd.conf:1: expected ';' to end X, found '\"'");
    EXPECT_EQ(errorOf("interface eth0 { X \x01; };"), "radvd.conf:1: expected ';' to end X, found '\\x01'");
    EXPECT_EQ(errorOf("interface eth0 { };\ninterface eth0 { };"),
              "radvd.conf:2: expected one definition of interface eth0, found a second one");
}

TEST(RadvdConf, AnErrorLeavesTheSettingsAlone)
{
    RadvdConf conf;
    ASSERT_FALSE(parseRadvdConf("interface eth0 { AdvSendAdvert on; };", "radvd.conf", conf).has_value());
    ASSERT_TRUE(parseRadvdConf("interface eth1 { }; interface eth2 {", "radvd.conf", conf).has_value());
    ASSERT_EQ(conf.size(), 1u);
    EXPECT_TRUE(conf["eth0"].sendAdverts);
}

// What radvd logs of each of these when it starts, and then sends nothing on the interface.
TEST(RadvdConf, SaysWhatRadvdWouldRefuse)
{
    EXPECT_NE(parseOne("MaxRtrAdvInterval 4;").refusal, ""); // a third of it is below 3 seconds
    EXPECT_EQ(parseOne("MaxRtrAdvInterval 4; MinRtrAdvInterval 3;").refusal, "");
    EXPECT_NE(parseOne("MaxRtrAdvInterval 9;").refusal, "");
    EXPECT_EQ(parseOne("MaxRtrAdvInterval 9.1;").refusal, "");
    EXPECT_NE(parseOne("MaxRtrAdvInterval 1801;").refusal, "");
    EXPECT_NE(parseOne("MaxRtrAdvInterval 10; MinRtrAdvInterval 8;").refusal, "");
    EXPECT_NE(parseOne("MinDelayBetweenRAs 1;").refusal, "");
    EXPECT_NE(parseOne("AdvLinkMTU 1279;").refusal, "");
    EXPECT_EQ(parseOne("AdvLinkMTU 1280;").refusal, "");
    EXPECT_NE(parseOne("AdvReachableTime 3600001;").refusal, "");
    EXPECT_NE(parseOne("AdvDefaultLifetime 599;").refusal, "");
    EXPECT_NE(parseOne("AdvDefaultLifetime 9001;").refusal, "");
    EXPECT_EQ(parseOne("AdvDefaultLifetime 9000;").refusal, "");
}

TEST(RadvdConf, MobileIpv6LowersTheLimitsOfIntervals)
{
    const std::string fast = "MaxRtrAdvInterval 1; MinRtrAdvInterval 0.5; ";
    EXPECT_NE(parseOne(fast).refusal, "");
    EXPECT_EQ(parseOne(fast + "AdvIntervalOpt on;").refusal, "");
    EXPECT_EQ(parseOne(fast + "AdvHomeAgentFlag on; AdvIntervalOpt off;").refusal, "");
    EXPECT_EQ(parseOne(fast + "prefix 2001:db8::/64 { AdvRouterAddr on; };").refusal, "");
    EXPECT_NE(parseOne(fast + "prefix 2001:db8::/64 { AdvRouterAddr off; };").refusal, "");
    EXPECT_NE(parseOne(fast + "prefix ::/64 { };").refusal, "");
}

} // namespace
} // namespace ipmib::platform
