// SPDX-License-Identifier: BSD-3-Clause
// The text of /proc/net/snmp and /proc/net/netstat, as kernels write it and as they might.
#include "counters/ipv4_counter_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace
{

using namespace ipmib::platform;
using Text = Ipv4CounterText;

class Ipv4CounterTextTest : public testing::Test
{
  protected:
    void parse(std::string_view text) { text_.parse(text, values_); }
    // Nothing when the text does not say.
    std::optional<std::uint64_t> at(std::size_t slot) const
    {
        return values_.there[slot] ? std::optional(values_.value[slot]) : std::nullopt;
    }

    Text text_;
    Text::Values values_{};
};

TEST_F(Ipv4CounterTextTest, eachNameGoesToItsCounter)
{
    parse("Ip: Forwarding DefaultTTL InReceives ForwDatagrams OutTransmits\n"
          "Ip: 2 64 18446744073709551615 4294967296 7\n"
          "Tcp: RtoMin MaxConn CurrEstab InCsumErrors\n"
          "Tcp: 200 -1 3 9\n"
          "Udp: InDatagrams NoPorts\n"
          "Udp: 5 6\n"
          "UdpLite: InDatagrams NoPorts\n"
          "UdpLite: 50 60\n");
    EXPECT_EQ(at(IPMIB_IP_IN_RECEIVES), 18446744073709551615u);
    EXPECT_EQ(at(IPMIB_IP_OUT_FORW_DATAGRAMS), 4294967296u);
    EXPECT_EQ(at(IPMIB_IP_OUT_TRANSMITS), 7u);
    EXPECT_EQ(at(IPMIB_IP_IN_DISCARDS), std::nullopt);
    EXPECT_EQ(at(Text::tcpRtoMin), 200u);
    EXPECT_EQ(at(Text::tcpMaxConn), static_cast<std::uint64_t>(-1));
    EXPECT_EQ(at(Text::tcpCurrEstab), 3u);
    EXPECT_EQ(at(Text::udpInDatagrams), 5u);
    EXPECT_EQ(at(Text::udpNoPorts), 6u);
}

TEST_F(Ipv4CounterTextTest, theOrderIsThatOfTheNamesAlsoWhenItChanges)
{
    parse("Ip: InReceives InDelivers\nIp: 1 2\n");
    parse("Ip: InReceives InDelivers\nIp: 3 4\n");
    EXPECT_EQ(at(IPMIB_IP_IN_RECEIVES), 3u);
    EXPECT_EQ(at(IPMIB_IP_IN_DELIVERS), 4u);
    parse("Ip: InDelivers InNew InReceives\nIp: 5 6 7\n");
    EXPECT_EQ(at(IPMIB_IP_IN_RECEIVES), 7u);
    EXPECT_EQ(at(IPMIB_IP_IN_DELIVERS), 5u);
    parse("Ip: InReceives\nIp: 8\n");
    EXPECT_EQ(at(IPMIB_IP_IN_RECEIVES), 8u);
    EXPECT_EQ(at(IPMIB_IP_IN_DELIVERS), std::nullopt);
}

// The kernel writes at most sixteen types to a pair of lines, and a pair more when another type is seen.
TEST_F(Ipv4CounterTextTest, messagesByTypeComeAndMayFillSeveralLines)
{
    parse("IcmpMsg: InType3\nIcmpMsg: 1\nUdp: InErrors\nUdp: 2\n");
    EXPECT_EQ(at(Text::icmpInType + 3), 1u);
    EXPECT_EQ(at(Text::icmpOutType + 3), std::nullopt);
    parse("IcmpMsg: InType3 OutType255\nIcmpMsg: 4 5\nIcmpMsg: OutType0 InType256 InType OutTypeX InType3x\n"
          "IcmpMsg: 6 7 8 9 10\nUdp: InErrors\nUdp: 11\n");
    EXPECT_EQ(at(Text::icmpInType + 3), 4u);
    EXPECT_EQ(at(Text::icmpOutType + 255), 5u);
    EXPECT_EQ(at(Text::icmpOutType), 6u);
    EXPECT_EQ(at(Text::udpInErrors), 11u);
    EXPECT_EQ(std::count(values_.there.begin(), values_.there.end(), true), 4);
}

TEST_F(Ipv4CounterTextTest, linesThatDoNotFitTogetherSayNothing)
{
    for (const char *text :
         {"", "\n", "Ip", "Ip: InReceives", "Ip: InReceives\n", "Ip: InReceives\nTcp: 1\n", "Ip: InReceives\nIp:\n",
          "Ip: InReceives\nIp: x\n", "Ip: InReceives\nIp: 18446744073709551616\n", "Ip: InReceives\nIp: -\n"}) {
        parse(text);
        EXPECT_EQ(std::count(values_.there.begin(), values_.there.end(), true), 0) << text;
    }
    parse("Ip: InReceives InDelivers\nIp: 1\nIp: InDiscards\nIp: 2 3 4");
    EXPECT_EQ(at(IPMIB_IP_IN_RECEIVES), 1u);
    EXPECT_EQ(at(IPMIB_IP_IN_DELIVERS), std::nullopt);
    EXPECT_EQ(at(IPMIB_IP_IN_DISCARDS), 2u);
}

} // namespace
