// SPDX-License-Identifier: BSD-3-Clause
// Rows beside those that the module asks for: IPv4, the transport layer, how interfaces are stacked.
#include "ip_rows.h"

#include "scenario/read.h"
#include "test_scenario.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace ipmib::simulated
{
namespace
{

class IpRowsTest : public ::testing::Test
{
  protected:
    void setSeconds(Time seconds) { device.setTime(seconds * 1'000); }

    Device device = readScenario(IPMIB_SOURCE_DIR "/platform/simulated/testdata/full.json").device;
    IpRows rows{device};
};

constexpr std::uint32_t lan = 7; // eth0
constexpr std::uint32_t old = 8;
constexpr std::uint32_t usb = 9;

TEST_F(IpRowsTest, addressesPointToPrefixesThatAreThere)
{
    std::vector<std::pair<std::uint32_t, std::uint32_t>> found;
    IpmibIpAddress address{};
    while (rows.addressAfter(address.address, address)) {
        IpmibIpPrefix prefix;
        EXPECT_TRUE(rows.findPrefix(address.if_index, address.prefix, address.prefix_length, prefix));
        found.emplace_back(address.address, address.type);
    }
    EXPECT_EQ(found, (std::vector<std::pair<std::uint32_t, std::uint32_t>>{
                         {0xC000'0201, 1}, {0xC633'6401, 1}, {0xC633'647F, IPMIB_ADDRESS_BROADCAST}}));
    ASSERT_TRUE(rows.findAddress(0xC633'6401, address));
    EXPECT_EQ(address.origin, std::uint32_t{IPMIB_ADDRESS_ORIGIN_DHCP});
    EXPECT_EQ(address.status, 2u);
    EXPECT_EQ(address.created, 10'000u);
    EXPECT_EQ(address.changed, 20'000u);
    EXPECT_EQ(address.prefix, 0xC633'6400u);
}

TEST_F(IpRowsTest, prefixesAscendAndGrowOlder)
{
    std::vector<std::uint32_t> found;
    IpmibIpPrefix prefix{};
    while (rows.prefixAfter(prefix.if_index, prefix.prefix, prefix.length, prefix)) {
        found.push_back(prefix.prefix);
    }
    EXPECT_EQ(found, (std::vector<std::uint32_t>{0xC000'0200, 0xC633'6400, 0xCB00'7100}));
    setSeconds(5);
    ASSERT_TRUE(rows.findPrefix(lan, 0xC633'6400, 25, prefix));
    EXPECT_EQ(prefix.valid_s, 995u);
    EXPECT_EQ(prefix.preferred_s, 495u);
    EXPECT_EQ(prefix.origin, 4u);
}

TEST_F(IpRowsTest, aLineThatIsDownHasNoRows)
{
    setSeconds(12);
    IpmibIpAddress address;
    IpmibIpRouter router;
    IpmibIpNeighbour neighbour;
    EXPECT_FALSE(rows.addressAfter(0, address));
    EXPECT_FALSE(rows.routerAfter(0, 0, router));
    EXPECT_FALSE(rows.neighbourAfter(0, 0, neighbour));
    IpmibIpInterface interface;
    ASSERT_TRUE(rows.findInterface(IPMIB_IPV4, lan, interface));
    EXPECT_EQ(interface.enabled, 2u);
    EXPECT_EQ(interface.retransmit_ms, 700u);
    EXPECT_EQ(rows.interfacesChanged(IPMIB_IPV4), 501'000u);
}

TEST_F(IpRowsTest, neighboursAndRoutersAreAsTheTablesShowThem)
{
    IpmibIpNeighbour neighbour;
    ASSERT_TRUE(rows.neighbourAfter(0, 0, neighbour));
    EXPECT_EQ(neighbour.if_index, lan);
    EXPECT_EQ(neighbour.address, 0xC000'0202u);
    EXPECT_EQ(neighbour.type, 4u);
    EXPECT_EQ(neighbour.state, 2u);
    EXPECT_EQ(neighbour.last_updated, 400'000u);
    EXPECT_EQ(neighbour.link_layer_size, 6u);
    setSeconds(7);
    IpmibIpRouter router;
    ASSERT_TRUE(rows.routerAfter(0, 0, router));
    EXPECT_EQ(router.address, 0xC000'02FDu);
    EXPECT_EQ(router.lifetime_s, 65'535u);
    ASSERT_TRUE(rows.routerAfter(router.address, router.if_index, router));
    EXPECT_EQ(router.preference, -1);
    EXPECT_EQ(router.lifetime_s, 23u);
    EXPECT_FALSE(rows.routerAfter(router.address, router.if_index, router));
}

TEST_F(IpRowsTest, countersAreThoseThatTheScenarioLists)
{
    setSeconds(2);
    IpmibIpCounters counters;
    ASSERT_TRUE(rows.systemCounters(IPMIB_IPV4, counters));
    EXPECT_EQ(counters.value[IPMIB_IP_IN_RECEIVES], 5'020u);
    EXPECT_EQ(counters.value[IPMIB_IP_OUT_OCTETS], 1u) << "the sum of the interfaces'";
    EXPECT_EQ(counters.counted,
              1u << IPMIB_IP_IN_RECEIVES | 1u << IPMIB_IP_OUT_OCTETS | 1u << IPMIB_IP_ROUTING_DISCARDS);
    EXPECT_TRUE(rows.interfaceCounters(IPMIB_IPV4, lan, counters));
    EXPECT_FALSE(rows.interfaceCounters(IPMIB_IPV4, old, counters)) << "a missing row is better than a false zero";
    IpmibIcmpCounters icmp;
    ASSERT_TRUE(rows.icmpCounters(IPMIB_IPV4, icmp));
    EXPECT_EQ(icmp.in_type[8], 2u);
    EXPECT_EQ(icmp.in_msgs, 2u);
    EXPECT_EQ(icmp.in_errors, 2u);
    EXPECT_EQ(icmp.listed[0], 0x01u);
    EXPECT_EQ(icmp.listed[1], 0x01u);
    IpmibTcpCounters tcp;
    ASSERT_TRUE(rows.tcpCounters(tcp));
    EXPECT_EQ(tcp.in_segments, 200u);
    EXPECT_EQ(tcp.established, 3u);
    IpmibUdpCounters udp;
    ASSERT_TRUE(rows.udpCounters(udp));
    EXPECT_EQ(udp.in_datagrams, 14u);
    IpmibIpSettings settings;
    ASSERT_TRUE(rows.settings(IPMIB_IPV4, settings));
    EXPECT_EQ(settings.forwarding, 2u);
    EXPECT_EQ(settings.default_ttl, 63u);
    EXPECT_EQ(settings.reasm_timeout_s, 15u);
}

TEST_F(IpRowsTest, interfacesStandOnEachOther)
{
    const auto walk = [this] {
        std::vector<std::pair<std::uint32_t, std::uint32_t>> found;
        IpmibStack row{};
        while (rows.stackAfter(row.higher, row.lower, row)) {
            IpmibStack same{};
            EXPECT_TRUE(rows.findStack(row.higher, row.lower, same));
            if (row.higher <= usb && row.lower <= usb) { // the generated ones stand alone
                found.emplace_back(row.higher, row.lower);
            }
        }
        return found;
    };
    EXPECT_EQ(walk(), (std::vector<std::pair<std::uint32_t, std::uint32_t>>{
                          {0, usb}, {lan, 0}, {old, 0}, {usb, lan}, {usb, old}}));
    EXPECT_EQ(rows.stackChanged(), 0u);
    setSeconds(6); // usb0 is gone
    EXPECT_EQ(walk(), (std::vector<std::pair<std::uint32_t, std::uint32_t>>{{0, lan}, {0, old}, {lan, 0}, {old, 0}}));
    EXPECT_EQ(rows.stackChanged(), 500'500u);
}

TEST_F(IpRowsTest, receiveAddressesAreOrderedLikeIdentifiers)
{
    constexpr std::uint8_t group[] = {0x01, 0x00, 0x5E, 0x00, 0x00, 0x01};
    IpmibReceiveAddress row;
    ASSERT_TRUE(rows.receiveAddressAfter(0, nullptr, 0, row));
    EXPECT_EQ(row.if_index, lan);
    EXPECT_TRUE(std::equal(std::begin(group), std::end(group), row.address));
    ASSERT_TRUE(rows.receiveAddressAfter(lan, group, sizeof group, row));
    EXPECT_EQ(row.address[5], 0x01u);
    EXPECT_EQ(row.address[0], 0x02u);
    EXPECT_TRUE(rows.findReceiveAddress(lan, group, sizeof group, row));
    EXPECT_FALSE(rows.findReceiveAddress(lan, group, sizeof group - 1, row));
    EXPECT_FALSE(rows.findReceiveAddress(old, group, sizeof group, row));
    constexpr std::uint8_t longer[7] = {};
    ASSERT_TRUE(rows.receiveAddressAfter(lan, longer, sizeof longer, row));
    EXPECT_GT(row.if_index, usb);
}

} // namespace
} // namespace ipmib::simulated
