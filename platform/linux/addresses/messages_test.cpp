// SPDX-License-Identifier: BSD-3-Clause
// What is read from the kernel's messages about addresses, routes and prefixes, and from messages that are none.
#include "addresses/address_message.h"
#include "addresses/test_messages.h"
#include "routes/nexthop_table.h"
#include "routes/route_message.h"
#include "routes/route_table.h"

#include <linux/nexthop.h>

#include <random>

namespace
{

using namespace ipmib::platform;

constexpr std::uint32_t receivedAt = 1000;

Ip6Address addressOf(const TestMessage &message)
{
    Ip6Address address{};
    EXPECT_TRUE(parseAddress(*message, receivedAt, address));
    return address;
}

TEST(PackedAddress, comparesAndMasksLikeItsBytes)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 1000; ++i) {
        std::array<std::uint8_t, 16> a;
        std::array<std::uint8_t, 16> b;
        for (std::size_t byte = 0; byte < 16; ++byte) {
            a[byte] = static_cast<std::uint8_t>(random());
            b[byte] = random() % 4 == 0 ? static_cast<std::uint8_t>(random()) : a[byte];
        }
        EXPECT_EQ(PackedAddress::of(a.data()) < PackedAddress::of(b.data()), a < b);
        EXPECT_EQ(PackedAddress::of(a.data()) == PackedAddress::of(b.data()), a == b);
        const unsigned length = static_cast<unsigned>(random() % 129);
        auto expected = a;
        for (unsigned bit = length; bit < 128; ++bit) {
            expected[bit / 8] = static_cast<std::uint8_t>(expected[bit / 8] & ~(0x80 >> bit % 8));
        }
        std::array<std::uint8_t, 16> masked;
        PackedAddress::of(a.data()).masked(length).copyTo(masked.data());
        EXPECT_EQ(masked, expected) << length;
    }
    EXPECT_TRUE(packed("fe80::1").isLinkLocal());
    EXPECT_TRUE(packed("febf:ffff::").isLinkLocal());
    EXPECT_FALSE(packed("fec0::").isLinkLocal());
    EXPECT_FALSE(packed("fe7f::").isLinkLocal());
    EXPECT_TRUE(packed("ff02::1").isMulticast());
    EXPECT_TRUE(packed("::1").isLoopback());
}

TEST(Deadline, countsDownAndNeverBeyondItsRange)
{
    EXPECT_EQ(Deadline::after(10, 5).left(10), 5u);
    EXPECT_EQ(Deadline::after(10, 5).left(14), 1u);
    EXPECT_EQ(Deadline::after(10, 5).left(15), 0u);
    EXPECT_EQ(Deadline::after(10, 5).left(4000), 0u);
    EXPECT_EQ(Deadline::after(10, 0xFFFFFFFF).left(4000), 0xFFFFFFFFu);
    EXPECT_EQ(Deadline::after(0xFFFFFF00, 0xFFFFFFFE).left(0xFFFFFF00), 0xFEu) << "late, but not for ever";
    EXPECT_LT(Deadline::after(0xFFFFFF00, 0xFFFFFFFE), Deadline::never());
}

TEST(AddressMessage, isReadWhole)
{
    const Ip6Address address = addressOf(addressMessage(RTM_NEWADDR, "2001:db8::1", 64, 7, 0x180, {50, 100}, 2));
    EXPECT_EQ(address.address, packed("2001:db8::1"));
    EXPECT_EQ(address.ifIndex, 7u);
    EXPECT_EQ(address.length, 64u);
    EXPECT_EQ(address.flags, 0x180u);
    EXPECT_EQ(address.protocol, 2u);
    EXPECT_EQ(address.created, 1234u);
    EXPECT_EQ(address.changed, 5678u);
    EXPECT_EQ(address.preferredUntil.left(receivedAt), 50u);
    EXPECT_EQ(address.validUntil.left(receivedAt + 1), 99u);
    EXPECT_EQ(address.prefix(), (PrefixKey{7, packed("2001:db8::"), 64}));
}

TEST(AddressMessage, theLocalOneOfTwoPeersIsOurs)
{
    TestMessage message = addressMessage(RTM_NEWADDR, "2001:db8::2", 128, 7);
    message.withAddress(IFA_LOCAL, "2001:db8::1");
    EXPECT_EQ(addressOf(message).address, packed("2001:db8::1"));
}

TEST(AddressMessage, othersAreNotRead)
{
    Ip6Address address{};
    TestMessage ipv4 = addressMessage(RTM_NEWADDR, "2001:db8::1", 64, 7);
    static_cast<ifaddrmsg *>(mnl_nlmsg_get_payload(&ipv4.header()))->ifa_family = AF_INET;
    EXPECT_FALSE(parseAddress(*ipv4, receivedAt, address));
    EXPECT_FALSE(parseAddress(*addressMessage(RTM_NEWADDR, "2001:db8::1", 129, 7), receivedAt, address));
    EXPECT_FALSE(parseAddress(*addressMessage(RTM_NEWADDR, "2001:db8::1", 64, 0), receivedAt, address));
    TestMessage empty(RTM_NEWADDR);
    EXPECT_FALSE(parseAddress(*empty, receivedAt, address));
}

TEST(AddressOrigin, byWhatTheKernelShows)
{
    const auto origin = [](std::uint32_t flags, unsigned length, std::uint8_t protocol = 0,
                           const char *text = "2001:db8::1") {
        return originOf(addressOf(addressMessage(RTM_NEWADDR, text, length, 7, flags, {}, protocol)));
    };
    EXPECT_EQ(origin(IFA_F_PERMANENT, 64), AddressOrigin::manual);
    EXPECT_EQ(origin(IFA_F_PERMANENT | IFA_F_NOPREFIXROUTE, 128, 200), AddressOrigin::manual);
    EXPECT_EQ(origin(0, 64, IFAPROT_KERNEL_RA), AddressOrigin::autoconfigured);
    EXPECT_EQ(origin(IFA_F_MANAGETEMPADDR, 64), AddressOrigin::autoconfigured)
        << "also before kernels told the protocol";
    EXPECT_EQ(origin(IFA_F_STABLE_PRIVACY, 64), AddressOrigin::autoconfigured);
    EXPECT_EQ(origin(IFA_F_TEMPORARY, 64, IFAPROT_KERNEL_RA), AddressOrigin::temporary);
    EXPECT_EQ(origin(IFA_F_TEMPORARY, 64), AddressOrigin::temporary);
    EXPECT_EQ(origin(0, 128), AddressOrigin::leased);
    EXPECT_EQ(origin(IFA_F_NOPREFIXROUTE, 128, 200), AddressOrigin::leased);
    EXPECT_EQ(origin(0, 64), AddressOrigin::leased) << "whatever the length of its prefix";
    EXPECT_EQ(origin(IFA_F_PERMANENT, 64, IFAPROT_KERNEL_LL, "fe80::1"), AddressOrigin::autoconfigured);
    EXPECT_EQ(origin(IFA_F_PERMANENT, 64, 0, "fe80::1"), AddressOrigin::manual);
    EXPECT_EQ(origin(IFA_F_PERMANENT, 128, IFAPROT_KERNEL_LO, "::1"), AddressOrigin::unknown);
    EXPECT_EQ(origin(IFA_F_PERMANENT, 128, 0, "::1"), AddressOrigin::unknown);

    const std::uint8_t linkLayer[] = {0x52, 0x3F, 0x03, 0xAA, 0xA1, 0xDE};
    EXPECT_TRUE(hasIdentifierOf(packed("fe80::503f:3ff:feaa:a1de"), linkLayer));
    EXPECT_FALSE(hasIdentifierOf(packed("fe80::523f:3ff:feaa:a1de"), linkLayer));
}

TEST(RouteMessage, isReadWhole)
{
    RouteFacts facts;
    facts.protocol = RTPROT_RA;
    facts.metric = 1024;
    facts.expires = 2999;
    facts.gateway = "fe80::9";
    facts.table = 1000; // beyond what fits into the header
    TestMessage message = routeMessage(RTM_NEWROUTE, "::", 0, 3, facts);
    message.with(RTA_PREF, std::uint8_t{1});
    Route route;
    ASSERT_TRUE(parseRoute(*message, AF_INET6, receivedAt, route));
    EXPECT_EQ(route.length, 0u);
    EXPECT_EQ(route.protocol, RTPROT_RA);
    EXPECT_EQ(route.metric, 1024u);
    EXPECT_EQ(route.table, 1000u);
    EXPECT_EQ(route.preference, 1u);
    EXPECT_EQ(route.until.left(receivedAt), 29u);
    ASSERT_EQ(route.nexthops.size(), 1u);
    EXPECT_TRUE(route.nexthops[0].hasGateway());
    EXPECT_EQ(route.nexthops[0].gateway, packed("fe80::9"));
    EXPECT_EQ(route.nexthops[0].ifIndex, 3u);
    EXPECT_EQ(route.nexthopId, 0u);
}

TEST(RouteMessage, aLapsedOneHasNothingLeft)
{
    RouteFacts facts;
    facts.expires = -50;
    Route route;
    ASSERT_TRUE(parseRoute(*routeMessage(RTM_NEWROUTE, "2001:db8::", 64, 3, facts), AF_INET6, receivedAt, route));
    EXPECT_EQ(route.until.left(receivedAt), 0u);
    facts.expires = 0;
    ASSERT_TRUE(parseRoute(*routeMessage(RTM_NEWROUTE, "2001:db8::", 64, 3, facts), AF_INET6, receivedAt, route));
    EXPECT_TRUE(route.until.isNever());
}

TEST(RouteMessage, theCacheIsNoRoute)
{
    TestMessage message = routeMessage(RTM_NEWROUTE, "2001:db8::", 64, 3);
    static_cast<rtmsg *>(mnl_nlmsg_get_payload(&message.header()))->rtm_flags = RTM_F_CLONED;
    Route route;
    EXPECT_FALSE(parseRoute(*message, AF_INET6, receivedAt, route));
}

TEST(AdvertisedPrefix, bothKernelsFlagsAreUnderstood)
{
    AdvertisedPrefix prefix;
    for (const unsigned flags : {0xC0u, 0x03u}) {
        ASSERT_TRUE(parseAdvertisedPrefix(*prefixMessage("2001:db8::", 64, 3, flags, {50, 100}), receivedAt, prefix));
        EXPECT_TRUE(prefix.onLink);
        EXPECT_TRUE(prefix.autonomous);
        EXPECT_FALSE(prefix.withdrawn);
        EXPECT_EQ(prefix.preferredUntil.left(receivedAt), 50u);
        EXPECT_EQ(prefix.validUntil.left(receivedAt), 100u);
    }
    ASSERT_TRUE(parseAdvertisedPrefix(*prefixMessage("2001:db8::", 64, 3, 0x80, {0, 0}), receivedAt, prefix));
    EXPECT_TRUE(prefix.onLink);
    EXPECT_FALSE(prefix.autonomous);
    EXPECT_TRUE(prefix.withdrawn);
    EXPECT_FALSE(parseAdvertisedPrefix(*prefixMessage("2001:db8::", 129, 3, 0x80, {0, 0}), receivedAt, prefix));
}

TEST(Nexthop, aGroupNamesItsMembers)
{
    TestMessage message(RTM_NEWNEXTHOP);
    message.family<nhmsg>();
    const nexthop_grp members[] = {{4, 0, 0, 0}, {9, 0, 0, 0}};
    message.with(NHA_ID, std::uint32_t{12}).with(NHA_GROUP, members);
    NexthopObject object;
    EXPECT_EQ(parseNexthop(*message, object), 12u);
    EXPECT_EQ(object.members, (std::vector<std::uint32_t>{4, 9}));
    EXPECT_FALSE(object.hasGateway);
}

// Whatever bytes a message holds, reading it stays within them; sanitizers watch.
TEST(Messages, anyBytesCanBeRead)
{
    std::mt19937 random(11);
    TestMessage seeds[] = {addressMessage(RTM_NEWADDR, "2001:db8::1", 64, 7, 0, {1, 2}, 1),
                           routeMessage(RTM_NEWROUTE, "::", 0, 3), prefixMessage("2001:db8::", 64, 3, 3, {1, 2})};
    const std::uint8_t multipath[] = {24, 0, 0, 0, 1, 0, 0, 0, 20, 0, 5, 0, 1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0};
    seeds[1].with(RTA_MULTIPATH, multipath);
    for (int i = 0; i < 30'000; ++i) {
        const nlmsghdr &seed = *seeds[random() % 3];
        std::vector<std::uint8_t> bytes(reinterpret_cast<const std::uint8_t *>(&seed),
                                        reinterpret_cast<const std::uint8_t *>(&seed) + seed.nlmsg_len);
        for (auto change = random() % 6; change > 0; --change) {
            bytes[sizeof(nlmsghdr) + random() % (bytes.size() - sizeof(nlmsghdr))] =
                static_cast<std::uint8_t>(random());
        }
        bytes.resize(sizeof(nlmsghdr) + random() % (bytes.size() - sizeof(nlmsghdr) + 1));
        auto &message = *reinterpret_cast<nlmsghdr *>(bytes.data());
        message.nlmsg_len = static_cast<std::uint32_t>(bytes.size());
        Ip6Address address;
        Anycast anycast;
        Route route;
        AdvertisedPrefix prefix;
        NexthopObject nexthop;
        parseAddress(message, receivedAt, address);
        parseAnycast(message, anycast);
        if (parseRoute(message, AF_INET6, receivedAt, route)) {
            EXPECT_LE(route.nexthops.size(), bytes.size() / sizeof(rtnexthop));
            EXPECT_LE(route.length, 128u);
        }
        parseAdvertisedPrefix(message, receivedAt, prefix);
        message.nlmsg_type = RTM_NEWNEXTHOP;
        parseNexthop(message, nexthop);
    }
}

TEST(RouteTable, anOnLinkRouteThatIsReadInItsLastMomentHasAnEnd)
{
    RouteTable routes;
    RouteFacts facts{RTPROT_KERNEL, 256, 0, ""};
    Generation generation = 0;
    const auto hasEndWhenRead = [&](std::int32_t expires) {
        facts.expires = expires;
        routes.applyDump(*routeMessage(RTM_NEWROUTE, "2001:db8::", 64, 3, facts), ++generation);
        EXPECT_TRUE(routes.sweep(generation));
        bool hasEnd = false;
        routes.eachOnLink([&](const OnLinkRoute &route) { hasEnd = !route.until.isNever(); });
        return hasEnd;
    };
    EXPECT_TRUE(hasEndWhenRead(50));
    EXPECT_TRUE(hasEndWhenRead(0)) << "less than a hundredth of a second is left";
    EXPECT_TRUE(hasEndWhenRead(100'000));
    EXPECT_FALSE(hasEndWhenRead(0));
}

TEST(RouteTable, aLearnedRouteInItsLastMomentHasAnEnd)
{
    RouteTable routes;
    RouteFacts facts{RTPROT_RA, 1024, 100, "fe80::1"};
    routes.applyChange(*routeMessage(RTM_NEWROUTE, "::", 0, 3, facts));
    const auto until = [&] { return routes.defaults().first()->until; };
    const auto update = [&](std::int32_t expires) {
        facts.expires = expires;
        routes.updateLearnedDefaults(*routeMessage(RTM_NEWROUTE, "::", 0, 3, facts), receivedAt);
    };
    update(500);
    EXPECT_EQ(until(), Deadline::after(receivedAt, 5));
    update(0); // less than a hundredth of a second is left, or it has no end
    EXPECT_EQ(until(), Deadline::after(receivedAt, 5));
    update(-200);
    EXPECT_EQ(until(), Deadline::after(receivedAt, 0));
}

} // namespace
