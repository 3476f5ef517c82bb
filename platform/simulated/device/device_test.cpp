// SPDX-License-Identifier: BSD-3-Clause
// What there is on a device at which moment.
#include "test_scenario.h"

#include <arpa/inet.h>

namespace ipmib::simulated
{
namespace
{

PackedAddress packed(const char *text)
{
    in6_addr address{};
    EXPECT_EQ(inet_pton(AF_INET6, text, &address), 1) << text;
    return PackedAddress::of(&address);
}

void setSeconds(Device &device, double seconds)
{
    device.setTime(static_cast<Time>(seconds * 1'000));
}

const char *const flapping = R"({
  "interfaces": [
    {
      "name": "a", "ifIndex": 4, "down": [{"from": 10, "to": 15, "every": 20}],
      "addresses": ["2001:db8::1/64", "fe80::1/64"],
      "neighbours": [{"address": "2001:db8::2"}, {"address": "fe80::2"}],
      "routers": [{"address": "fe80::2"}, {"address": "2001:db8::2"}],
      "counters": {"ipv6": {"inReceives": {"start": 100, "rate": 10}}}
    },
    {"name": "b", "ifIndex": 9, "addresses": ["2001:db8:1::1/64"], "routers": [{"address": "fe80::2"}],
     "counters": {"ipv6": {"inReceives": {"start": 1, "rate": 1}}}},
    {"name": "c", "ifIndex": 6, "gone": [{"from": 3, "to": 4}], "addresses": ["2001:db8:2::1/64"]}
  ]
})";

TEST(Device, interfacesAscendByNumber)
{
    Device device = deviceOf(flapping);
    ASSERT_NE(device.after(0), nullptr);
    EXPECT_EQ(device.after(0)->ifIndex, 4u);
    EXPECT_EQ(device.after(4)->ifIndex, 6u);
    EXPECT_EQ(device.after(5)->ifIndex, 6u);
    EXPECT_EQ(device.after(6)->ifIndex, 9u);
    EXPECT_EQ(device.after(9), nullptr);
    EXPECT_EQ(device.after(UINT32_MAX), nullptr);
    EXPECT_EQ(device.find(5), nullptr);
    EXPECT_EQ(device.find(6)->name, "c");
}

TEST(Device, onAnInterfaceThatDoesNotRunNothingIsListed)
{
    Device device = deviceOf(flapping);
    const PackedAddress address = packed("2001:db8::1");
    const NeighbourKey before{4, 0, 0};
    for (const double down : {10.0, 14.999, 30.0, 1'000'010.0}) {
        setSeconds(device, down);
        EXPECT_NE(device.find(4), nullptr) << down;
        EXPECT_EQ(device.address(address), nullptr);
        EXPECT_EQ(device.addressAfter(PackedAddress{})->ifIndex, 9u);
        EXPECT_EQ(device.linkLocal(4), nullptr);
        EXPECT_EQ(device.firstPrefix(4), nullptr);
        EXPECT_EQ(device.globalNeighbourAfter(before), nullptr);
        EXPECT_EQ(device.linkLocalNeighbourAfter(before), nullptr);
        EXPECT_EQ(device.router({packed("fe80::2"), 4}), nullptr);
        EXPECT_EQ(device.firstRouter(Device::RouterClass::linkLocal)->ifIndex, 9u);
        EXPECT_EQ(device.firstRouter(Device::RouterClass::global), nullptr);
    }
    for (const double up : {0.0, 9.999, 15.0, 29.999, 1'000'015.0}) {
        setSeconds(device, up);
        EXPECT_EQ(device.addressAfter(PackedAddress{})->ifIndex, 4u) << up;
        EXPECT_NE(device.linkLocal(4), nullptr);
        EXPECT_EQ(device.firstPrefix(4)->length, 64u);
        EXPECT_NE(device.globalNeighbourAfter(before), nullptr);
        EXPECT_EQ(device.firstRouter(Device::RouterClass::linkLocal)->ifIndex, 4u);
    }
}

TEST(Device, oneThatIsGoneIsNoInterface)
{
    Device device = deviceOf(flapping);
    setSeconds(device, 3);
    EXPECT_EQ(device.find(6), nullptr);
    EXPECT_EQ(device.after(4)->ifIndex, 9u);
    EXPECT_EQ(device.address(packed("2001:db8:2::1")), nullptr);
    setSeconds(device, 4);
    EXPECT_NE(device.find(6), nullptr);
}

TEST(Device, countersGrowWhileTheInterfaceRuns)
{
    Device device = deviceOf(flapping);
    const auto received = [&device](std::uint32_t ifIndex) {
        IpmibIpCounters stat{};
        const Interface &interface = *device.find(ifIndex);
        interface.ip6Counters.setIn(stat, interface.runningTime(device.time()));
        return stat.value[IPMIB_IP_IN_RECEIVES];
    };
    setSeconds(device, 10);
    EXPECT_EQ(received(4), 200u);
    setSeconds(device, 15);
    EXPECT_EQ(received(4), 200u);
    setSeconds(device, 20);
    EXPECT_EQ(received(4), 250u);
    EXPECT_EQ(device.systemTraffic(IPMIB_IPV6).value[IPMIB_IP_IN_RECEIVES], 250u + 21u)
        << "the system's are the sum of the interfaces'";
}

TEST(Device, addressesBringTheirPrefixesAlong)
{
    Device device = deviceOf(R"({"interfaces": [{"name": "a", "addresses": [
        "2001:db8::1/64", "2001:db8::2/64", {"address": "2001:db8::3/128", "origin": "dhcp"},
        {"address": "2001:db8:9::1/64", "origin": "random"}], "prefixes": [
        {"prefix": "2001:db8::/64", "origin": "routeradv"}]}]})");
    const Prefix *first = device.firstPrefix(1);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->origin, platform::prefixOriginRouter) << "one that is listed stays as it is";
    const Prefix *second = device.prefixAfter(first->key());
    EXPECT_EQ(second->length, 128u);
    EXPECT_EQ(second->origin, platform::prefixOriginDhcp);
    const Prefix *third = device.prefixAfter(second->key());
    EXPECT_EQ(third->origin, platform::prefixOriginRouter);
    EXPECT_EQ(device.prefixAfter(third->key()), nullptr);
    EXPECT_EQ(device.firstPrefix(2), nullptr);
}

TEST(Device, lifetimesRunDownAndAreRenewed)
{
    Device device = deviceOf(R"({"interfaces": [{"name": "a", "prefixes": [
        {"prefix": "2001:db8::/64", "valid": 100, "preferred": 30},
        {"prefix": "2001:db8:1::/64", "valid": 100, "renewed": 40}],
        "routers": [{"address": "fe80::1", "lifetime": 100}, {"address": "fe80::2", "lifetime": 5, "renewed": 10}]}]})");
    setSeconds(device, 70);
    const Prefix *prefix = device.firstPrefix(1);
    EXPECT_EQ(prefix->valid.left(device.elapsedS()), 30u);
    EXPECT_EQ(prefix->preferred.left(device.elapsedS()), 0u);
    EXPECT_EQ(device.prefixAfter(prefix->key())->valid.left(device.elapsedS()), 70u);
    EXPECT_NE(device.router({packed("fe80::1"), 1}), nullptr);
    EXPECT_NE(device.router({packed("fe80::2"), 1}), nullptr);
    setSeconds(device, 105);
    EXPECT_EQ(device.firstPrefix(1)->prefix, packed("2001:db8:1::")) << "the first has ended";
    EXPECT_EQ(device.firstRouter(Device::RouterClass::linkLocal), nullptr);
}

TEST(Device, aLinkLocalAddressIsMadeFromTheLinkLayerAddress)
{
    Device device = deviceOf(R"({"interfaces": [{"name": "a", "mac": "02:00:5e:00:53:01"}, {"name": "b"},
        {"name": "c", "mac": "02:00:5e:00:53:01", "addresses": ["fe80::9/64"]},
        {"name": "d", "mac": "02:00:5e:00:53:01", "ipv6": false}]})");
    EXPECT_EQ(device.linkLocal(1)->address, packed("fe80::5eff:fe00:5301"));
    EXPECT_EQ(device.linkLocal(2), nullptr);
    EXPECT_EQ(device.linkLocal(3)->address, packed("fe80::9"));
    EXPECT_EQ(device.linkLocal(4), nullptr);
}

} // namespace
} // namespace ipmib::simulated
