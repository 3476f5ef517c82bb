// SPDX-License-Identifier: BSD-3-Clause
// How prefixes follow from addresses, on-link routes and advertisements, without a kernel: each change of one of them
// leaves the table as if it had been made anew.
#include "addresses/prefix_table.h"

#include "addresses/address_table.h"
#include "addresses/test_messages.h"
#include "core/uptime.h"

#include <random>
#include <tuple>

namespace
{

using namespace ipmib::platform;

class Tables : public testing::Test
{
  protected:
    Tables()
    {
        connect(prefixes_);
        RouteTable::Handlers handlers;
        handlers.onLinkChanged = [this](const PrefixKey &key) { prefixes_.update(key); };
        handlers.advertised = [this](const AdvertisedPrefix &prefix) { prefixes_.advertise(prefix); };
        handlers.uncertain = [this] { ++uncertain_; };
        handlers.anycastChanged = [this](const PackedAddress &changed, std::uint32_t ifIndex, bool joined) {
            if (joined) {
                anycasts_.joined(changed, ifIndex, 0);
            } else {
                anycasts_.left(changed, ifIndex);
            }
        };
        routes_.connect(handlers);
    }

    void address(std::uint16_t type, const std::string &text, unsigned length, std::uint32_t ifIndex,
                 std::uint32_t flags = IFA_F_PERMANENT, AddressLifetimes lifetimes = {})
    {
        addresses_.applyChange(*addressMessage(type, text, length, ifIndex, flags, lifetimes));
    }
    void route(std::uint16_t type, const std::string &text, unsigned length, std::uint32_t ifIndex,
               const RouteFacts &facts = {})
    {
        routes_.applyChange(*routeMessage(type, text, length, ifIndex, facts));
    }
    void advertise(const std::string &text, std::uint32_t ifIndex, unsigned flags, AddressLifetimes lifetimes)
    {
        routes_.applyChange(*prefixMessage(text, 64, ifIndex, flags, lifetimes));
    }
    void setAnycasts(const std::vector<std::pair<std::string, std::uint32_t>> &all)
    {
        ++generation_; // of the reading
        for (const auto &[text, ifIndex] : all) {
            TestMessage message(RTM_GETANYCAST);
            auto &header = message.family<ifaddrmsg>();
            header.ifa_family = AF_INET6;
            header.ifa_prefixlen = 128;
            header.ifa_index = ifIndex;
            message.withAddress(IFA_ANYCAST, text);
            anycasts_.applyDump(*message, generation_);
        }
        anycasts_.sweep(generation_);
    }
    void connect(PrefixTable &prefixes)
    {
        addresses_.onChange(
            [&prefixes](const Ip6Address *before, const Ip6Address *now) { prefixes.addressChanged(before, now); });
        anycasts_.onChange([&prefixes](const PackedAddress &changed, std::uint32_t ifIndex) {
            prefixes.update({ifIndex, changed, 128});
        });
    }
    const Prefix *row(const std::string &text, std::uint8_t length, std::uint32_t ifIndex = 1)
    {
        prefixes_.settle();
        return prefixes_.find({ifIndex, packed(text), length});
    }
    unsigned anycastLength(const PackedAddress &anycast, std::uint32_t ifIndex)
    {
        prefixes_.settle();
        return prefixes_.anycastLength(anycast, ifIndex);
    }
    std::uint32_t valid(const Prefix *prefix) const { return prefix->validUntil.left(secondsSinceBoot()); }
    std::uint32_t preferred(const Prefix *prefix) const { return prefix->preferredUntil.left(secondsSinceBoot()); }

    using Row = std::tuple<PrefixKey, Deadline, Deadline, PrefixOrigin, bool, bool>;
    static std::vector<Row> rowsOf(PrefixTable &prefixes)
    {
        prefixes.settle();
        std::vector<Row> all;
        for (const Prefix *at = prefixes.atOrAfter(PrefixKey{0, {}, 0}); at != nullptr;
             at = prefixes.after(at->key())) {
            all.emplace_back(at->key(), at->validUntil, at->preferredUntil, at->origin, at->onLink, at->autonomous);
        }
        return all;
    }

    // The rows of a table that learns all at once.
    std::vector<Row> rowsMadeAnew() const
    {
        PrefixTable anew(anycasts_, routes_);
        addresses_.each([&](const Ip6Address &address) { anew.addressChanged(nullptr, &address); });
        routes_.eachOnLink([&](const OnLinkRoute &route) { anew.update(route.key()); });
        anycasts_.each([&](const Anycast &anycast) { anew.update({anycast.ifIndex, anycast.address, 128}); });
        return rowsOf(anew);
    }
    AddressTable addresses_;
    Generation generation_ = 0;
    AnycastTable anycasts_;
    RouteTable routes_;
    PrefixTable prefixes_{anycasts_, routes_};
    int uncertain_ = 0;
};

TEST_F(Tables, aPrefixIsThereAsLongAsSomethingHasIt)
{
    address(RTM_NEWADDR, "2001:db8::1", 64, 1);
    address(RTM_NEWADDR, "2001:db8::2", 64, 1);
    route(RTM_NEWROUTE, "2001:db8::", 64, 1);
    address(RTM_DELADDR, "2001:db8::1", 64, 1);
    ASSERT_NE(row("2001:db8::", 64), nullptr);
    EXPECT_EQ(row("2001:db8::", 64)->origin, PrefixOrigin::manual);
    EXPECT_TRUE(row("2001:db8::", 64)->onLink);
    EXPECT_EQ(row("2001:db8::", 64, 2), nullptr);
    route(RTM_DELROUTE, "2001:db8::", 64, 1);
    EXPECT_FALSE(row("2001:db8::", 64)->onLink);
    address(RTM_DELADDR, "2001:db8::2", 64, 1);
    EXPECT_EQ(rowsOf(prefixes_).size(), 0u);
}

TEST_F(Tables, anAddressThatChangesItsPrefixLeavesTheOldOne)
{
    address(RTM_NEWADDR, "2001:db8::1", 64, 1);
    address(RTM_NEWADDR, "2001:db8::1", 48, 1);
    EXPECT_EQ(row("2001:db8::", 64), nullptr);
    EXPECT_NE(row("2001:db8::", 48), nullptr);
}

TEST_F(Tables, linkLocalAndMulticastPrefixesAreNotListed)
{
    address(RTM_NEWADDR, "fe80::1", 64, 1);
    route(RTM_NEWROUTE, "fe80::", 64, 1);
    route(RTM_NEWROUTE, "fe80::", 9, 1);
    route(RTM_NEWROUTE, "ff00::", 8, 1);
    route(RTM_NEWROUTE, "::", 0, 1);
    EXPECT_EQ(rowsOf(prefixes_).size(), 0u);
    address(RTM_NEWADDR, "fec0::1", 10, 1);
    EXPECT_EQ(rowsOf(prefixes_).size(), 1u);
}

TEST_F(Tables, routesOfRoutingProtocolsAndOtherTablesAreNoPrefixes)
{
    for (const int protocol : {RTPROT_ZEBRA, RTPROT_BGP, RTPROT_OSPF, RTPROT_BIRD}) {
        route(RTM_NEWROUTE, "2001:db8::", 64, 1, {.protocol = static_cast<std::uint8_t>(protocol)});
    }
    route(RTM_NEWROUTE, "2001:db8:1::", 64, 1, {.protocol = RTPROT_STATIC, .table = 100});
    route(RTM_NEWROUTE, "2001:db8:2::", 64, 1, {.gateway = "fe80::9"});
    route(RTM_NEWROUTE, "2001:db8:3::", 64, 1, {.type = RTN_UNREACHABLE});
    route(RTM_NEWROUTE, "2001:db8:4::1", 128, 1, {.type = RTN_LOCAL, .table = RT_TABLE_LOCAL});
    EXPECT_EQ(rowsOf(prefixes_).size(), 0u);
    route(RTM_NEWROUTE, "2001:db8:1::", 64, 1, {.table = 100}); // an interface of a VRF
    EXPECT_EQ(rowsOf(prefixes_).size(), 1u);
}

TEST_F(Tables, theLoopbackAddressIsWellKnown)
{
    address(RTM_NEWADDR, "::1", 128, 1);
    EXPECT_EQ(row("::1", 128)->origin, PrefixOrigin::wellKnown);
    EXPECT_EQ(valid(row("::1", 128)), 0xFFFFFFFFu);
}

TEST_F(Tables, anAdvertisementGivesLifetimesAndFlags)
{
    route(RTM_NEWROUTE, "2001:db8::", 64, 1, {.expires = 10000});
    advertise("2001:db8::", 1, 0xC0, {50, 100});
    EXPECT_EQ(row("2001:db8::", 64)->origin, PrefixOrigin::advertised);
    EXPECT_TRUE(row("2001:db8::", 64)->onLink);
    EXPECT_TRUE(row("2001:db8::", 64)->autonomous);
    EXPECT_NEAR(preferred(row("2001:db8::", 64)), 50, 1);
    advertise("2001:db8::", 1, 0x80, {500, 1000});
    EXPECT_NEAR(valid(row("2001:db8::", 64)), 1000, 1);
    EXPECT_FALSE(row("2001:db8::", 64)->autonomous);
    route(RTM_DELROUTE, "2001:db8::", 64, 1);
    EXPECT_EQ(rowsOf(prefixes_).size(), 0u) << "an advertisement alone is no prefix of the interface";
}

TEST_F(Tables, anAdvertisementMayComeBeforeItsAddress)
{
    advertise("2001:db8::", 1, 0x40, {0xFFFFFFFF, 0xFFFFFFFF});
    EXPECT_EQ(rowsOf(prefixes_).size(), 0u);
    address(RTM_NEWADDR, "2001:db8::1", 64, 1, IFA_F_MANAGETEMPADDR);
    EXPECT_EQ(row("2001:db8::", 64)->origin, PrefixOrigin::advertised);
    EXPECT_EQ(valid(row("2001:db8::", 64)), 0xFFFFFFFFu);
    EXPECT_FALSE(row("2001:db8::", 64)->onLink);
}

TEST_F(Tables, withoutAnAdvertisementTheKernelsOwnLifetimesCount)
{
    address(RTM_NEWADDR, "2001:db8::1", 64, 1, IFA_F_MANAGETEMPADDR, {40, 90});
    address(RTM_NEWADDR, "2001:db8::2", 64, 1, IFA_F_TEMPORARY, {30, 80});
    EXPECT_EQ(row("2001:db8::", 64)->origin, PrefixOrigin::advertised);
    EXPECT_TRUE(row("2001:db8::", 64)->autonomous);
    EXPECT_NEAR(preferred(row("2001:db8::", 64)), 40, 1);
    EXPECT_NEAR(valid(row("2001:db8::", 64)), 90, 1);
    route(RTM_NEWROUTE, "2001:db8::", 64, 1, {.expires = 12000});
    EXPECT_NEAR(valid(row("2001:db8::", 64)), 120, 1);
    EXPECT_NEAR(preferred(row("2001:db8::", 64)), 40, 1);
}

TEST_F(Tables, whatIsConfiguredOutweighsWhatIsLearned)
{
    advertise("2001:db8::", 1, 0xC0, {50, 100});
    address(RTM_NEWADDR, "2001:db8::1", 64, 1);
    EXPECT_EQ(row("2001:db8::", 64)->origin, PrefixOrigin::manual);
    EXPECT_EQ(valid(row("2001:db8::", 64)), 0xFFFFFFFFu);
    EXPECT_TRUE(row("2001:db8::", 64)->autonomous);
    advertise("2001:db8:1::", 1, 0xC0, {50, 100});
    route(RTM_NEWROUTE, "2001:db8:1::", 64, 1, {.protocol = RTPROT_STATIC});
    EXPECT_EQ(row("2001:db8:1::", 64)->origin, PrefixOrigin::manual);
    EXPECT_EQ(valid(row("2001:db8:1::", 64)), 0xFFFFFFFFu);
}

TEST_F(Tables, leases)
{
    address(RTM_NEWADDR, "2001:db8::7", 128, 1, 0, {50, 100});
    EXPECT_EQ(row("2001:db8::7", 128)->origin, PrefixOrigin::leased);
    EXPECT_NEAR(valid(row("2001:db8::7", 128)), 100, 1);
    route(RTM_NEWROUTE, "2001:db8:1::", 64, 1, {.protocol = RTPROT_DHCP, .expires = 3000});
    EXPECT_EQ(row("2001:db8:1::", 64)->origin, PrefixOrigin::leased);
    EXPECT_NEAR(valid(row("2001:db8:1::", 64)), 30, 1);
    address(RTM_NEWADDR, "2001:db8:2::1", 64, 1, 0, {50, 100});
    EXPECT_EQ(row("2001:db8:2::", 64)->origin, PrefixOrigin::leased) << "whatever its length";
}

TEST_F(Tables, aRouteThatReplacesAnotherTakesItsPlace)
{
    route(RTM_NEWROUTE, "2001:db8::", 64, 1, {.protocol = RTPROT_STATIC, .metric = 10});
    route(RTM_NEWROUTE, "2001:db8::", 64, 1, {.protocol = RTPROT_STATIC, .metric = 20});
    route(RTM_NEWROUTE, "2001:db8::", 64, 2, {.protocol = RTPROT_STATIC, .metric = 10, .flags = NLM_F_REPLACE});
    EXPECT_NE(row("2001:db8::", 64, 1), nullptr) << "the other metric's";
    EXPECT_NE(row("2001:db8::", 64, 2), nullptr);
    EXPECT_EQ(uncertain_, 1);
    route(RTM_NEWROUTE, "2001:db8::", 64, 0,
          {.protocol = RTPROT_BGP, .metric = 20, .gateway = "fe80::9", .flags = NLM_F_REPLACE});
    EXPECT_EQ(row("2001:db8::", 64, 1), nullptr);
    EXPECT_EQ(uncertain_, 2);
    route(RTM_NEWROUTE, "2001:db8:77::", 64, 0,
          {.protocol = RTPROT_BGP, .metric = 20, .gateway = "fe80::9", .flags = NLM_F_REPLACE});
    EXPECT_EQ(uncertain_, 2) << "no prefix of ours, however often a routing protocol changes it";
}

TEST_F(Tables, anycastAddressesHaveAPrefix)
{
    address(RTM_NEWADDR, "2001:db8::1", 64, 1);
    address(RTM_NEWADDR, "2001:db8::2", 48, 1);
    setAnycasts({{"2001:db8::", 1}, {"2001:db8::5", 1}, {"2001:db8::", 2}});
    EXPECT_EQ(anycastLength(packed("2001:db8::"), 1), 64u) << "the longest that begins with it";
    EXPECT_EQ(row("2001:db8::", 128), nullptr);
    EXPECT_EQ(anycastLength(packed("2001:db8::5"), 1), 128u);
    EXPECT_NE(row("2001:db8::5", 128), nullptr);
    EXPECT_NE(row("2001:db8::", 128, 2), nullptr);

    address(RTM_DELADDR, "2001:db8::1", 64, 1);
    EXPECT_EQ(anycastLength(packed("2001:db8::"), 1), 48u);
    address(RTM_DELADDR, "2001:db8::2", 48, 1);
    EXPECT_EQ(anycastLength(packed("2001:db8::"), 1), 128u);
    EXPECT_NE(row("2001:db8::", 128), nullptr) << "no prefix is left that begins with it";
    address(RTM_NEWADDR, "2001:db8::1", 64, 1);
    EXPECT_EQ(row("2001:db8::", 128), nullptr);

    route(RTM_NEWROUTE, "2001:db8::6", 128, 1, {.type = RTN_ANYCAST, .table = RT_TABLE_LOCAL});
    EXPECT_NE(row("2001:db8::6", 128), nullptr);
    EXPECT_TRUE(anycasts_.has(packed("2001:db8::6"), 1));
    route(RTM_DELROUTE, "2001:db8::6", 128, 1, {.type = RTN_ANYCAST, .table = RT_TABLE_LOCAL});
    EXPECT_EQ(row("2001:db8::6", 128), nullptr);
    route(RTM_NEWROUTE, "2001:db8::7", 128, 1, {.protocol = RTPROT_BOOT, .type = RTN_ANYCAST, .table = RT_TABLE_LOCAL});
    EXPECT_FALSE(anycasts_.has(packed("2001:db8::7"), 1)) << "a route entered by hand joins nothing";
}

// Of thousands of addresses, the lifetimes of those that are left count.
TEST_F(Tables, theLongestLifetimeOfTheAddressesCounts)
{
    address(RTM_NEWADDR, "2001:db8::1", 64, 1, IFA_F_MANAGETEMPADDR, {50, 400});
    address(RTM_NEWADDR, "2001:db8::2", 64, 1, IFA_F_MANAGETEMPADDR, {70, 300});
    address(RTM_NEWADDR, "2001:db8::3", 64, 1, IFA_F_MANAGETEMPADDR, {60, 400});
    EXPECT_NEAR(preferred(row("2001:db8::", 64)), 70, 1);
    EXPECT_NEAR(valid(row("2001:db8::", 64)), 400, 1);
    address(RTM_DELADDR, "2001:db8::1", 64, 1);
    address(RTM_DELADDR, "2001:db8::2", 64, 1);
    EXPECT_NEAR(preferred(row("2001:db8::", 64)), 60, 1);
    EXPECT_NEAR(valid(row("2001:db8::", 64)), 400, 1);
    address(RTM_NEWADDR, "2001:db8::3", 64, 1, IFA_F_MANAGETEMPADDR, {20, 100});
    EXPECT_NEAR(preferred(row("2001:db8::", 64)), 20, 1);
    EXPECT_NEAR(valid(row("2001:db8::", 64)), 100, 1);
}

// What a reading shows to have come or gone unseen changes the prefixes as an announcement does.
TEST_F(Tables, aReadingChangesWhatDiffers)
{
    address(RTM_NEWADDR, "2001:db8:1::1", 64, 1);
    address(RTM_NEWADDR, "2001:db8:2::1", 64, 1);
    route(RTM_NEWROUTE, "2001:db8:1::", 64, 1);
    route(RTM_NEWROUTE, "2001:db8:4::", 64, 1);
    addresses_.applyDump(*addressMessage(RTM_NEWADDR, "2001:db8:2::1", 64, 1, IFA_F_PERMANENT, {}), 1);
    addresses_.applyDump(*addressMessage(RTM_NEWADDR, "2001:db8:3::1", 64, 1, IFA_F_PERMANENT, {}), 1);
    addresses_.sweep(1);
    EXPECT_NE(row("2001:db8:1::", 64), nullptr) << "the route is still there";
    routes_.applyDump(*routeMessage(RTM_NEWROUTE, "2001:db8:2::", 64, 1, {}), 1);
    routes_.sweep(1);
    EXPECT_EQ(row("2001:db8:1::", 64), nullptr);
    EXPECT_TRUE(row("2001:db8:2::", 64)->onLink);
    EXPECT_FALSE(row("2001:db8:3::", 64)->onLink);
    EXPECT_EQ(row("2001:db8:4::", 64), nullptr);
    EXPECT_EQ(rowsOf(prefixes_), rowsMadeAnew());
}

TEST_F(Tables, whatWasAdvertisedIsForgottenWithTheInterface)
{
    address(RTM_NEWADDR, "2001:db8::1", 64, 1);
    address(RTM_NEWADDR, "2001:db8::1", 64, 2);
    advertise("2001:db8::", 1, 0xC0, {50, 100});
    advertise("2001:db8::", 2, 0xC0, {50, 100});
    prefixes_.forgetAdvertised(1);
    EXPECT_FALSE(row("2001:db8::", 64, 1)->autonomous);
    EXPECT_TRUE(row("2001:db8::", 64, 2)->autonomous);
}

TEST_F(Tables, aRouterThatAdvertisesWithoutEndFillsNothing)
{
    for (unsigned i = 0; i < 3 * PrefixTable::advertisedLimit; ++i) {
        char text[64];
        std::snprintf(text, sizeof text, "2001:db8:%x:%x::", i / 256 + 16, i % 256 + 16);
        advertise(text, 1, 0xC0, {50, 100});
    }
    route(RTM_NEWROUTE, "2001:db8:1::", 64, 1, {.expires = 100});
    advertise("2001:db8:1::", 1, 0xC0, {500, 1000});
    EXPECT_NEAR(valid(row("2001:db8:1::", 64)), 1000, 1) << "the one that is used still counts";
}

TEST_F(Tables, anySequenceOfChangesEndsLikeANewBeginning)
{
    std::mt19937 engine(5);
    const auto random = [&engine] { return static_cast<std::uint32_t>(engine()); };
    for (int step = 0; step < 3000; ++step) {
        char text[64];
        std::snprintf(text, sizeof text, "2001:db8:%x::%x", random() % 3, random() % 4);
        const std::uint32_t ifIndex = random() % 3 + 1;
        const std::uint16_t coming = random() % 2;
        constexpr std::uint32_t flags[] = {IFA_F_PERMANENT, IFA_F_MANAGETEMPADDR, 0, IFA_F_TEMPORARY};
        const auto length = std::array{64u, 48u, 128u, 127u}[random() % 4];
        switch (random() % 4) {
        case 0:
        case 1:
            address(coming ? RTM_NEWADDR : RTM_DELADDR, text, length, ifIndex, flags[random() % 4], {50, 100});
            break;
        case 2: {
            PackedAddress masked = packed(text).masked(length);
            std::array<std::uint8_t, 16> bytes;
            masked.copyTo(bytes.data());
            char network[INET6_ADDRSTRLEN];
            inet_ntop(AF_INET6, bytes.data(), network, sizeof network);
            const std::uint8_t protocol =
                std::array<std::uint8_t, 3>{RTPROT_KERNEL, RTPROT_STATIC, RTPROT_RA}[random() % 3];
            route(coming ? RTM_NEWROUTE : RTM_DELROUTE, network, length, ifIndex,
                  {.protocol = protocol, .metric = random() % 2});
            break;
        }
        default:
            if (random() % 10 == 0) {
                setAnycasts({{text, ifIndex}, {"2001:db8:1::", 1}});
            }
            break;
        }
        if (step % 20 == 0) {
            ASSERT_EQ(rowsOf(prefixes_), rowsMadeAnew()) << step;
        }
    }
    EXPECT_GT(rowsOf(prefixes_).size(), 10u);
}

} // namespace
