// SPDX-License-Identifier: BSD-3-Clause
// How the kernel's timers and radvd's settings become one record, and which hop limit is meant.
#include "advertisements/config_info.h"
#include "advertisements/row_hop_limit.h"

#include <gtest/gtest.h>

namespace ipmib::platform
{
namespace
{

NdIfConfigInfo infoOf(const std::string &options)
{
    Link link{};
    link.mtu = 1500;
    Ip6Link ip6;
    ip6.reachableMs = 31'000;
    ip6.retransmitMs = 1'000;
    RadvdConf conf;
    EXPECT_EQ(parseRadvdConf("interface eth0 {" + options + "};", "radvd.conf", conf).value_or(""), "");
    return configInfo(link, ip6, &conf["eth0"]);
}

TEST(ConfigInfo, anUnnamedInterfaceHasTheKernelsTimersAndStandardDefaults)
{
    Ip6Link ip6;
    ip6.reachableMs = 31'000;
    ip6.retransmitMs = 1'000;
    const NdIfConfigInfo info = configInfo(Link{}, ip6, nullptr);
    EXPECT_EQ(info.reachable_ms, 31'000u);
    EXPECT_EQ(info.retransmit_ms, 1'000u);
    EXPECT_EQ(info.max_interval_s, 600u);
    EXPECT_EQ(info.min_interval_s, 198u);
    EXPECT_EQ(info.flags, static_cast<std::uint32_t>(ND_FLAG_NO_MTU_OPTION));
}

TEST(ConfigInfo, aNamedInterfaceThatIsNotSwitchedOnDoesNotAdvertise)
{
    const NdIfConfigInfo info = infoOf("AdvLinkMTU 1400;");
    EXPECT_EQ(info.flags, static_cast<std::uint32_t>(ND_FLAG_LIFETIME_VALID));
    EXPECT_EQ(info.default_lifetime_s, 1'800u);
}

TEST(ConfigInfo, everySettingHasItsWordOrFlag)
{
    const NdIfConfigInfo info = infoOf("AdvSendAdvert on; AdvManagedFlag on; AdvOtherConfigFlag on; AdvLinkMTU 1400; "
                                       "AdvReachableTime 12345; AdvRetransTimer 678; AdvCurHopLimit 0; "
                                       "MaxRtrAdvInterval 10.5; MinRtrAdvInterval 5; AdvDefaultLifetime 0;");
    EXPECT_EQ(info.flags, static_cast<std::uint32_t>(ND_FLAG_SEND_ADVERTS | ND_FLAG_MANAGED | ND_FLAG_OTHER_CONFIG |
                                                     ND_FLAG_REACHABLE_VALID | ND_FLAG_RETRANSMIT_VALID |
                                                     ND_FLAG_LIFETIME_VALID | ND_FLAG_NO_HOP_LIMIT));
    EXPECT_EQ(info.reachable_ms, 12'345u);
    EXPECT_EQ(info.retransmit_ms, 678u);
    EXPECT_EQ(info.max_interval_s, 10u);
    EXPECT_EQ(info.min_interval_s, 5u);
    EXPECT_EQ(info.default_lifetime_s, 0u);
}

TEST(ConfigInfo, timersThatAreNotAdvertisedStayTheKernels)
{
    const NdIfConfigInfo info = infoOf("AdvSendAdvert on; AdvRetransTimer 678;");
    EXPECT_EQ(info.reachable_ms, 31'000u);
    EXPECT_EQ(info.retransmit_ms, 678u);
    EXPECT_EQ(info.flags & (ND_FLAG_REACHABLE_VALID | ND_FLAG_RETRANSMIT_VALID),
              static_cast<std::uint32_t>(ND_FLAG_RETRANSMIT_VALID));
}

TEST(ConfigInfo, nothingIsSentWhereRadvdRefuses)
{
    EXPECT_NE(infoOf("AdvSendAdvert on;").flags & ND_FLAG_SEND_ADVERTS, 0u);
    EXPECT_EQ(infoOf("AdvSendAdvert on; MaxRtrAdvInterval 4;").flags & ND_FLAG_SEND_ADVERTS, 0u);
    EXPECT_NE(infoOf("AdvSendAdvert on; AdvLinkMTU 1500;").flags & ND_FLAG_SEND_ADVERTS, 0u);
    EXPECT_EQ(infoOf("AdvSendAdvert on; AdvLinkMTU 1501;").flags & ND_FLAG_SEND_ADVERTS, 0u);
}

TEST(RowHopLimit, theAdvertisedOneIsForTheRowThatIsBeingFilled)
{
    RowHopLimit hopLimit;
    hopLimit.configAsked(3, 42);
    EXPECT_EQ(hopLimit.take(), std::optional(42u));
    EXPECT_EQ(hopLimit.take(), std::nullopt);
    hopLimit.configAsked(3, 42);
    hopLimit.configAsked(4, std::nullopt);
    EXPECT_EQ(hopLimit.take(), std::nullopt);
}

TEST(RowHopLimit, aRowOfInterfacesDoesNotChangeTheNodes)
{
    RowHopLimit hopLimit;
    hopLimit.mainLinkLocalAsked(3);
    hopLimit.configAsked(3, 42);
    EXPECT_EQ(hopLimit.take(), std::nullopt);
    hopLimit.configAsked(3, 42);
    EXPECT_EQ(hopLimit.take(), std::optional(42u));
}

TEST(RowHopLimit, aPacketKnowsNothingOfTheOneBefore)
{
    RowHopLimit hopLimit;
    hopLimit.configAsked(3, 42);
    hopLimit.newPacket();
    EXPECT_EQ(hopLimit.take(), std::nullopt);
}

} // namespace
} // namespace ipmib::platform
