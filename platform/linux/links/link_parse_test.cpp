// SPDX-License-Identifier: BSD-3-Clause
// What is read from messages about links, from well-formed and from malformed ones; type codes; interface identifiers.
#include "links/interface_row.h"
#include "links/ip6_link.h"
#include "links/link_traffic.h"

#include <gtest/gtest.h>

#include <linux/if.h>
#include <net/if_arp.h>

#include <cstring>
#include <vector>

namespace
{

using namespace ipmib::platform;

// An RTM_NEWLINK message under construction.
class LinkMessage
{
  public:
    explicit LinkMessage(int ifIndex, std::uint8_t family = AF_UNSPEC) : header_(mnl_nlmsg_put_header(buffer_.data()))
    {
        header_->nlmsg_type = RTM_NEWLINK;
        auto *info = static_cast<ifinfomsg *>(mnl_nlmsg_put_extra_header(header_, sizeof(ifinfomsg)));
        info->ifi_family = family;
        info->ifi_index = ifIndex;
        info->ifi_type = ARPHRD_ETHER;
    }
    nlmsghdr *operator->() { return header_; }
    nlmsghdr &operator*() { return *header_; }

  private:
    std::vector<char> buffer_ = std::vector<char>(8192);
    nlmsghdr *header_;
};

LinkMessage withIp6(const std::vector<std::uint64_t> &counters)
{
    LinkMessage message(3);
    mnl_attr_put_strz(&*message, IFLA_IFNAME, "eth0");
    nlattr *families = mnl_attr_nest_start(&*message, IFLA_AF_SPEC);
    nlattr *inet6 = mnl_attr_nest_start(&*message, AF_INET6);
    mnl_attr_put(&*message, IFLA_INET6_STATS, counters.size() * sizeof counters[0], counters.data());
    const ifla_cacheinfo timers{65535, 1, 31234, 1500};
    mnl_attr_put(&*message, IFLA_INET6_CACHEINFO, sizeof timers, &timers);
    mnl_attr_nest_end(&*message, inet6);
    mnl_attr_nest_end(&*message, families);
    return message;
}

TEST(LinkParse, namesAreCutToFitAndTerminated)
{
    LinkMessage message(7);
    mnl_attr_put_strz(&*message, IFLA_IFNAME, "a-name-of-more-than-fifteen-characters");
    Link link;
    ASSERT_TRUE(parseLink(*message, link));
    EXPECT_EQ(link.ifIndex, 7u);
    EXPECT_STREQ(link.name, "a-name-of-more-");
    EXPECT_STREQ(link.kind, "");
    EXPECT_EQ(link.addressSize, 0);
}

TEST(LinkParse, aBridgesWordOnItsPortsIsNotAboutTheLink)
{
    Link link;
    EXPECT_FALSE(parseLink(*LinkMessage(7, AF_BRIDGE), link));
    EXPECT_FALSE(parseLink(*LinkMessage(0), link));
    EXPECT_FALSE(parseLink(*LinkMessage(-5), link));
}

// It comes as RTM_NEWLINK, and says no more of the link than its name.
TEST(LinkParse, aWirelessEventIsNotAboutTheLink)
{
    LinkMessage message(7);
    mnl_attr_put_strz(&*message, IFLA_IFNAME, "wlan0");
    mnl_attr_put_u32(&*message, IFLA_WIRELESS, 0);
    Link link;
    EXPECT_FALSE(parseLink(*message, link));
}

TEST(LinkParse, anAliasIsCutToWhatTheTablesHold)
{
    LinkMessage message(7);
    mnl_attr_put_strz(&*message, IFLA_IFALIAS, std::string(200, 'x').c_str());
    mnl_attr_put_u8(&*message, IFLA_OPERSTATE, IF_OPER_DORMANT);
    mnl_attr_put_u32(&*message, IFLA_PROMISCUITY, 2);
    Link link;
    ASSERT_TRUE(parseLink(*message, link));
    EXPECT_EQ(link.alias, std::string(64, 'x'));
    EXPECT_EQ(link.operState, IF_OPER_DORMANT);
    EXPECT_TRUE(link.promiscuous);
}

TEST(LinkParse, aShortMessageIsRefused)
{
    LinkMessage message(7);
    message->nlmsg_len = sizeof(nlmsghdr) + 4;
    Link link;
    EXPECT_FALSE(parseLink(*message, link));
}

TEST(LinkParse, attributesOfTheWrongSizeAreAbsent)
{
    LinkMessage message(7);
    mnl_attr_put_u8(&*message, IFLA_MTU, 1);
    mnl_attr_put_u8(&*message, IFLA_LINKINFO, 1);
    mnl_attr_put_u8(&*message, IFLA_AF_SPEC, 1);
    Link link;
    ASSERT_TRUE(parseLink(*message, link));
    EXPECT_EQ(link.mtu, 0u);
    EXPECT_FALSE(Ip6LinkMessage(*message).link.present);
}

TEST(Ip6LinkParse, countersAndTimers)
{
    const Ip6LinkMessage parsed(*withIp6({4, 11, 22, 33}));
    EXPECT_TRUE(parsed.link.present);
    EXPECT_STREQ(parsed.name, "eth0");
    ASSERT_EQ(parsed.array().size(), 4u);
    EXPECT_EQ(parsed.array()[1], 11u);
    EXPECT_EQ(parsed.array()[3], 33u);
    EXPECT_EQ(parsed.link.reachableMs, 31234u);
    EXPECT_EQ(parsed.link.retransmitMs, 1500u);
    EXPECT_EQ(parsed.link.mtu, 0u);
}

TEST(Ip6LinkParse, aKernelWithMoreCountersThanThereIsRoomForIsCut)
{
    const Ip6LinkMessage parsed(*withIp6(std::vector<std::uint64_t>(100, 9)));
    EXPECT_EQ(parsed.array().size(), 64u);
    EXPECT_EQ(parsed.array()[63], 9u);
}

TEST(Ip6LinkParse, aLinkWithoutIp6HasNone)
{
    const Ip6LinkMessage parsed(*LinkMessage(3));
    EXPECT_FALSE(parsed.link.present);
    EXPECT_TRUE(parsed.array().empty());
}

TEST(InterfaceRow, theKernelsStatesAreThoseOfTheStandard)
{
    Link link{};
    const auto statusOf = [&](unsigned state, unsigned flags) {
        link.operState = static_cast<std::uint8_t>(state);
        link.flags = flags;
        return operStatus(link);
    };
    EXPECT_EQ(statusOf(IF_OPER_UP, 0), 1u);
    EXPECT_EQ(statusOf(IF_OPER_DOWN, IFF_UP | IFF_RUNNING), 2u);
    EXPECT_EQ(statusOf(IF_OPER_TESTING, 0), 3u);
    EXPECT_EQ(statusOf(IF_OPER_DORMANT, IFF_UP), 5u);
    EXPECT_EQ(statusOf(IF_OPER_NOTPRESENT, 0), 6u);
    EXPECT_EQ(statusOf(IF_OPER_LOWERLAYERDOWN, IFF_UP), 7u);
    EXPECT_EQ(statusOf(IF_OPER_UNKNOWN, IFF_UP | IFF_RUNNING), 1u);
    EXPECT_EQ(statusOf(IF_OPER_UNKNOWN, IFF_UP), 2u);
}

TEST(InterfaceRow, aKindSaysMoreThanTheHardware)
{
    Link link{};
    link.hardware = ARPHRD_ETHER;
    EXPECT_EQ(interfaceType(link), 6u);
    std::strcpy(link.kind, "vlan");
    EXPECT_EQ(interfaceType(link), 135u);
    std::strcpy(link.kind, "veth");
    EXPECT_EQ(interfaceType(link), 6u);
    link.hardware = ARPHRD_LOOPBACK;
    EXPECT_EQ(interfaceType(link), 24u);
    link.hardware = ARPHRD_SIT;
    EXPECT_EQ(interfaceType(link), 131u);
    link.hardware = 0xFFF0;
    EXPECT_EQ(interfaceType(link), 1u);
}

TEST(LinkTraffic, multicastsAreNoUnicastsAndMissedPacketsAreDiscards)
{
    rtnl_link_stats64 stats{};
    stats.rx_bytes = 0x1'0000'0001;
    stats.rx_packets = 10;
    stats.multicast = 4;
    stats.rx_dropped = 2;
    stats.rx_missed_errors = 3;
    stats.rx_errors = 5;
    stats.tx_packets = 6;
    stats.tx_bytes = 7;
    stats.tx_dropped = 8;
    stats.tx_errors = 9;
    const IpmibInterfaceTraffic traffic = trafficOf(stats);
    EXPECT_EQ(traffic.in.octets, 0x1'0000'0001u);
    EXPECT_EQ(traffic.in.unicast, 6u);
    EXPECT_EQ(traffic.in.multicast, 4u);
    EXPECT_EQ(traffic.in.discards, 5u);
    EXPECT_EQ(traffic.in.errors, 5u);
    EXPECT_EQ(traffic.out.octets, 7u);
    EXPECT_EQ(traffic.out.unicast, 6u);
    EXPECT_EQ(traffic.out.discards, 8u);
    EXPECT_EQ(traffic.out.errors, 9u);
    stats.multicast = 11;
    EXPECT_EQ(trafficOf(stats).in.unicast, 0u) << "a driver may count late";
}

// The standard selection asks for these codes and no others.
TEST(LinkType, everyHardwareTypeHasACodeOfTheStandardSelection)
{
    constexpr int standard[] = {22, 35, 42, 10, 6, 23, 67, 31, 16, 39, 5,   71,  27,  29,  1,   89,  26,  28,
                                41, 25, 7,  55, 2, 47, 51, 70, 97, 86, 105, 110, 111, 122, 124, 144, 168, 176};
    Link link{};
    for (unsigned hardware = 0; hardware <= 0xFFFF; ++hardware) {
        link.hardware = static_cast<std::uint16_t>(hardware);
        const int code = typeCode(link);
        ASSERT_NE(std::find(std::begin(standard), std::end(standard), code), std::end(standard)) << hardware;
    }
    link.hardware = ARPHRD_ETHER;
    EXPECT_EQ(typeCode(link), 6);
    link.hardware = ARPHRD_LOOPBACK;
    EXPECT_EQ(typeCode(link), 1);
}

Link withAddress(std::initializer_list<std::uint8_t> address)
{
    Link link{};
    link.addressSize = static_cast<std::uint8_t>(address.size());
    std::copy(address.begin(), address.end(), link.address);
    return link;
}

TEST(InterfaceIdentifier, comesFromTheTokenThenTheLinkLocalAddressThenTheLinkLayer)
{
    const Link ethernet = withAddress({0x02, 0x11, 0x22, 0x33, 0x44, 0x55});
    const std::uint8_t linkLocal[16] = {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
    Ip6Link ip6;
    EXPECT_EQ(interfaceIdentifier(ethernet, ip6, nullptr),
              (InterfaceIdentifier{0x00, 0x11, 0x22, 0xFF, 0xFE, 0x33, 0x44, 0x55}));
    EXPECT_EQ(interfaceIdentifier(ethernet, ip6, linkLocal), (InterfaceIdentifier{1, 2, 3, 4, 5, 6, 7, 8}));
    ip6.token[15] = 0x53;
    EXPECT_EQ(interfaceIdentifier(ethernet, ip6, linkLocal), (InterfaceIdentifier{0, 0, 0, 0, 0, 0, 0, 0x53}));
}

TEST(InterfaceIdentifier, linkLayerAddressesOfOtherSizes)
{
    const Ip6Link ip6;
    EXPECT_EQ(interfaceIdentifier(withAddress({0, 1, 2, 3, 4, 5, 6, 7}), ip6, nullptr),
              (InterfaceIdentifier{2, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(interfaceIdentifier(withAddress({0, 0, 0, 0, 0, 0}), ip6, nullptr), InterfaceIdentifier{});
    EXPECT_EQ(interfaceIdentifier(withAddress({10, 0, 0, 1}), ip6, nullptr), InterfaceIdentifier{});
    EXPECT_EQ(interfaceIdentifier(withAddress({}), ip6, nullptr), InterfaceIdentifier{});
}

} // namespace
