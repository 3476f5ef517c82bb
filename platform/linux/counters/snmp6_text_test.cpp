// SPDX-License-Identifier: BSD-3-Clause
// The text of /proc/net/snmp6, as kernels write it and as they might; and what becomes of the counters.
#include "counters/snmp6_text.h"

#include <gtest/gtest.h>

namespace
{

using namespace ipmib::platform;
using enum Ip6Counter;

struct Parsed : Snmp6Counters {
    explicit Parsed(std::string_view text) { parseSnmp6(text, *this); }
};

TEST(Snmp6Text, eachNameGoesToItsCounter)
{
    const Parsed counters("Ip6InReceives                   \t4294967297\n"
                          "Ip6InHdrErrors                  \t2\n"
                          "Ip6OutTransmits                 \t18446744073709551615\n"
                          "Icmp6InMsgs                     \t4\n"
                          "Icmp6InErrors                   \t5\n"
                          "Icmp6OutMsgs                    \t6\n"
                          "Icmp6InType128                  \t7\n"
                          "Icmp6OutType255                 \t8\n"
                          "Icmp6OutErrors                  \t9\n"
                          "Udp6InDatagrams                 \t10\n"
                          "Udp6NoPorts                     \t11\n"
                          "Udp6InErrors                    \t12\n"
                          "Udp6OutDatagrams                \t13\n"
                          "UdpLite6InDatagrams             \t14\n");
    EXPECT_EQ(counters.ip6[inReceives], 4294967297u);
    EXPECT_EQ(counters.ip6[inHdrErrors], 2u);
    EXPECT_EQ(counters.ip6[outTransmits], 18446744073709551615u);
    EXPECT_TRUE(counters.ip6.counted(outTransmits));
    EXPECT_FALSE(counters.ip6.counted(outRequests));
    EXPECT_EQ(counters.icmp6.inMsgs, 4u);
    EXPECT_EQ(counters.icmp6.inErrors, 5u);
    EXPECT_EQ(counters.icmp6.outMsgs, 6u);
    EXPECT_EQ(counters.icmp6.inType[128], 7u);
    EXPECT_EQ(counters.icmp6.outType[255], 8u);
    EXPECT_EQ(counters.icmp6.outType[128], 0u);
    EXPECT_EQ(counters.icmp6.outErrors, 9u);
    EXPECT_EQ(counters.icmp6.listed.count(), 2u);
    EXPECT_TRUE(counters.icmp6.listed[128] && counters.icmp6.listed[255]);
    EXPECT_EQ(counters.udp6.inDatagrams, 10u);
    EXPECT_EQ(counters.udp6.noPorts, 11u);
    EXPECT_EQ(counters.udp6.inErrors, 12u);
    EXPECT_EQ(counters.udp6.outDatagrams, 13u);
}

TEST(Snmp6Text, theOrderOfLinesDoesNotMatter)
{
    const Parsed counters("Ip6OutMcastPkts 1\nIp6InReceives 2\nIp6OutOctets 3\nIp6InDelivers 4\n");
    EXPECT_EQ(counters.ip6[outMcastPkts], 1u);
    EXPECT_EQ(counters.ip6[inReceives], 2u);
    EXPECT_EQ(counters.ip6[outOctets], 3u);
    EXPECT_EQ(counters.ip6[inDelivers], 4u);
}

TEST(Snmp6Text, whatMeansNothingIsPassedOver)
{
    const Parsed counters("\n\nIp6InReceives\nIp6 5\nIp6InNovelty 5\nIcmp6InType256 5\nIcmp6InType 5\n"
                          "Icmp6InTypeX 5\nIcmp6InType1x 5\nIp6InDelivers x\nIp6InDelivers -1\nIp6OutRequests 1");
    for (std::size_t i = 0; i < ip6CounterCount; ++i) {
        const auto which = static_cast<Ip6Counter>(i);
        EXPECT_EQ(counters.ip6[which], which == outRequests ? 1u : 0u) << i;
    }
    EXPECT_EQ(counters.icmp6.inType, (Icmp6Counters{}.inType));
}

// A text that is read again after another one says what it says when it is read first.
TEST(Snmp6Text, whatWasReadBeforeChangesNothing)
{
    constexpr std::string_view texts[] = {
        "Ip6InReceives                   \t1\nIcmp6InMsgs                     \t2\nIcmp6OutErrors                  "
        "\t3\n"
        "UdpLite6InDatagrams             \t4\nUdpLite6NoPorts                 \t5\n",
        "Ip6InReceives                   \t11\nIcmp6InMsgs                     \t12\nIcmp6OutErrors                  "
        "\t13\nUdpLite6InDatagrams             \t14\nUdpLite6NoPorts                 \t15\n",
        // a message type has been counted, behind what counted last
        "Ip6InReceives                   \t21\nIcmp6InMsgs                     \t22\nIcmp6OutErrors                  "
        "\t23\nIcmp6InType135                  \t24\nUdp6InDatagrams                 \t25\n",
        // the same lines with other blanks, a line that goes on otherwise, one without a number, an end within a line
        "Ip6InReceives \t1\nIcmp6InMsgs  2\n",
        "Ip6InReceives   7\nIcmp6InMsgs 2\nIcmp6InMsgs  x\n",
        "Ip6InReceives",
        "Ip6InReceivesX 5\nIp6InReceives\n\nIcmp6InMsgs 1",
        "Icmp6InMsgs 1",
        "ifIndex 7\nIp6InReceives 5\nIcmp6OutMsgs 6",
        "ifIndex 8\nIp6InReceives 9\nIcmp6OutMsgs 10\nIcmp6InType1 11\n",
        "",
    };
    for (const std::string_view before : texts) {
        for (const std::string_view between : texts) {
            for (const std::string_view text : texts) {
                Snmp6Text reader;
                Snmp6Counters again;
                for (const std::string_view each : {before, between, text}) {
                    reader.parse(each, again);
                }
                EXPECT_TRUE(again == Parsed(text)) << before << "\n" << between << "\n" << text;
            }
        }
    }
}

// Linux before 6.7 counts no transmissions: what was sent and what was forwarded is next to it.
TEST(Ip6MibStat, anOlderKernelsTransmissionsAreItsRequestsAndForwards)
{
    const Parsed counters("Ip6OutForwDatagrams 30\nIp6OutRequests 12\nIp6OutMcastPkts 1\n");
    Ip6MibStat stat;
    fillIp6MibStat(counters.ip6, stat);
    EXPECT_EQ(stat.out_transmits, 42u);
}

TEST(Ip6MibStat, everyCounterOfTheContractHasItsKernelCounter)
{
    // Each different in both halves, so that a counter that is cut or taken for another shows.
    const auto wide = [](auto... which) { return ((static_cast<std::uint64_t>(which) + 1) + ...) * 0x1'0000'0001u; };
    const auto narrow = [&](Ip6Counter which) { return static_cast<std::uint32_t>(wide(which)); };
    Ip6Counters counters;
    for (std::size_t i = 0; i < ip6CounterCount; ++i) {
        counters.set(static_cast<Ip6Counter>(i), wide(i));
    }
    Ip6MibStat stat;
    fillIp6MibStat(counters, stat);
    EXPECT_EQ(stat.in_receives, wide(inReceives));
    EXPECT_EQ(stat.in_forwarded, wide(outForwDatagrams, inNoRoutes, inTooBigErrors));
    EXPECT_EQ(stat.out_forwarded, wide(outForwDatagrams));
    EXPECT_EQ(stat.out_transmits, wide(outTransmits));
    EXPECT_EQ(stat.out_requests, wide(outRequests));
    EXPECT_EQ(stat.in_octets, wide(inOctets));
    EXPECT_EQ(stat.out_octets, wide(outOctets));
    EXPECT_EQ(stat.header_errors_1 + stat.header_errors_2 + stat.header_errors_3 + stat.header_errors_4,
              narrow(inHdrErrors));
    EXPECT_EQ(stat.in_truncated, narrow(inTruncatedPkts));
    EXPECT_EQ(stat.reasm_required, narrow(reasmReqds));
    EXPECT_EQ(stat.reasm_oks, narrow(reasmOKs));
    EXPECT_EQ(stat.reasm_fails_1 + stat.reasm_fails_2, narrow(reasmFails));
    EXPECT_EQ(stat.unknown_protos, narrow(inUnknownProtos));
    EXPECT_EQ(stat.in_delivers, narrow(inDelivers));
    EXPECT_EQ(stat.in_no_routes, narrow(inNoRoutes));
    EXPECT_EQ(stat.address_errors, narrow(inAddrErrors));
    EXPECT_EQ(stat.frag_fails, narrow(fragFails));
    EXPECT_EQ(stat.frag_oks, narrow(fragOKs));
    EXPECT_EQ(stat.frag_creates, narrow(fragCreates));
    EXPECT_EQ(stat.in_mcast_pkts, narrow(inMcastPkts));
    EXPECT_EQ(stat.out_mcast_pkts, narrow(outMcastPkts));
    EXPECT_EQ(stat.in_discards, narrow(inDiscards));
    EXPECT_EQ(stat.out_discards, narrow(outDiscards));
    EXPECT_EQ(stat.out_no_routes, narrow(outNoRoutes));
}

} // namespace
