// SPDX-License-Identifier: BSD-3-Clause
// The platform's IPv4 rows, with the option and without it.
#include "accounting/accounting_test.h"
#include "test_platform.h"

#include <ipmib/platform.h>

#include <algorithm>

namespace ipmib::platform
{

namespace
{

class Ipv4RowsTest : public AccountingTest
{
  protected:
    static IpMibIfStat row(std::uint32_t interface)
    {
        IpMibIfStat stat{};
        EXPECT_EQ(IP_GetMibIfStat(interface, &stat), 0U);
        return stat;
    }
};

} // namespace

TEST_F(Ipv4RowsTest, WithTheOptionTheyCountAndAreReadFresh)
{
    PlatformInside platform(bed->routerSpace, {.ipv4Accounting = true});
    bed->client.send(RouterBed::serverAddress, bed->server, 1000, octets);
    EXPECT_EQ(row(ifIndex("lan")).in_receives, 1000U);
    EXPECT_EQ(row(ifIndex("wan")).out_forwarded, 1000U);
    EXPECT_EQ(row(ifIndex("wan")).out_octets, 1000U * octets);
    bed->client.send(RouterBed::serverAddress, bed->server, 1, octets);
    EXPECT_EQ(row(ifIndex("wan")).out_forwarded, 1001U);
}

TEST_F(Ipv4RowsTest, WithoutTheOptionTheyExistAndTheLogSaysOnceThatTheyCountNothing)
{
    PlatformInside platform(bed->routerSpace);
    bed->client.send(RouterBed::serverAddress, bed->server, 10, octets);
    for (const char *interface : {"lo", "lan", "wan"}) {
        EXPECT_EQ(row(ifIndex(interface)).in_receives, 0U);
        EXPECT_EQ(row(ifIndex(interface)).out_transmits, 0U);
    }
    platform->beginPacket();
    row(ifIndex("lan"));
    EXPECT_EQ(std::count_if(logged.begin(), logged.end(),
                            [](const std::string &line) { return line.find("--ipv4-accounting") != line.npos; }),
              1);
    EXPECT_EQ(bed->routerSpace.run("nft list ruleset"), "");
}

TEST_F(Ipv4RowsTest, AnInterfaceThatTakesOverAnIndexStartsFromNothing)
{
    PlatformInside platform(bed->routerSpace, {.ipv4Accounting = true});
    bed->client.send(RouterBed::serverAddress, bed->server, 10, octets);
    const std::uint32_t lan = ifIndex("lan");
    EXPECT_EQ(row(lan).in_receives, 10U);
    bed->routerSpace.run("ip link delete lan && ip link add again index " + std::to_string(lan) + " type veth");
    platform->beginPacket();
    EXPECT_EQ(row(lan).in_receives, 0U);
}

TEST_F(Ipv4RowsTest, StoppingThePlatformRemovesTheTable)
{
    const std::string before = bed->routerSpace.run("nft list ruleset");
    {
        PlatformInside platform(bed->routerSpace, {.ipv4Accounting = true});
        EXPECT_NE(bed->routerSpace.run("nft list ruleset"), before);
    }
    EXPECT_EQ(bed->routerSpace.run("nft list ruleset"), before);
}

TEST(Ipv4AccountingOption, IsASwitch)
{
    LinuxPlatform platform;
    EXPECT_EQ(platform.takeOption({"ipv4-accounting", ""}), "");
    EXPECT_NE(platform.takeOption({"ipv4-accounting", "no"}), "");
    EXPECT_NE(platform.takeOption({"ipv4-acounting", ""}), "");
}

} // namespace ipmib::platform
