// SPDX-License-Identifier: BSD-3-Clause
// ipAddressPrefix of an address: the row of the prefix table that it points to.
#include "ip_address_test.h"

#include <algorithm>

namespace ipmib::scripted::prefix_pointer
{
using namespace ip_address;

namespace
{

class PrefixPointer : public IpAddress
{
  protected:
    static constexpr std::uint32_t column[10] = {1, 3, 6, 1, 2, 1, 4, 32, 1, 5};

    static Reply pointsTo(std::vector<std::uint32_t> instance)
    {
        instance.insert(instance.begin(), std::begin(column), std::end(column));
        return answered({objectId(prefixPointer, instance)});
    }
    static Reply pointsTo(std::uint32_t interface, std::uint32_t kind, const Bytes &prefixBytes, std::uint32_t length)
    {
        std::vector<std::uint32_t> instance = {interface, kind, static_cast<std::uint32_t>(prefixBytes.size())};
        instance.insert(instance.end(), prefixBytes.begin(), prefixBytes.end());
        instance.push_back(length);
        return pointsTo(instance);
    }
    static Reply pointerOf(const char *text, std::uint32_t length)
    {
        world().addresses = {address(3, text)};
        world().addresses[0].prefix_length = length;
        return getRow(ipv6, bytesOf(text)).want(prefixPointer).send();
    }
};

TEST_F(PrefixPointer, NamesThePrefixRowOfTheAddress)
{
    world().prefixes = {prefix(3, "2001:db8::", 48), prefix(3, "2001:db8:0:7::", 64), prefix(5, "2001:db8:0:7::", 64)};
    EXPECT_EQ(pointerOf("2001:db8:0:7::1", 64), pointsTo(3, ipv6, bytesOf("2001:db8:0:7::"), 64));
    EXPECT_EQ(pointerOf("2001:db8:0:7::1", 48), pointsTo(3, ipv6, bytesOf("2001:db8::"), 48));
}

TEST_F(PrefixPointer, WithoutAPrefixRowNamesNone)
{
    EXPECT_EQ(pointerOf("2001:db8::1", 64), pointsTo({0, 0}));
    world().prefixes = {prefix(5, "2001:db8::", 64), prefix(3, "2001:db8::", 63), prefix(3, "2001:db8:1::", 64)};
    EXPECT_EQ(pointerOf("2001:db8::1", 64), pointsTo({0, 0}));
}

TEST_F(PrefixPointer, MasksAnyNumberOfBits)
{
    world().prefixes = {prefix(3, "::", 0),
                        prefix(3, "8000::", 1),
                        prefix(3, "ffff:fffe::", 31),
                        prefix(3, "ffff:ffff::", 32),
                        prefix(3, "ffff:ffff:8000::", 33),
                        prefix(3, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fffe", 127),
                        prefix(3, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 128),
                        prefix(3, "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", 200)};
    for (const FullPrefixRecord &each : world().prefixes) {
        const std::uint32_t length = ipmib_be32_get(each.length);
        EXPECT_EQ(pointerOf("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", length),
                  pointsTo(3, ipv6, Bytes(each.prefix, each.prefix + 16), length));
    }
}

TEST_F(PrefixPointer, OfALinkLocalAddressNamesTheLinkLocalPrefixWithItsZone)
{
    world().linkLocal = {3};
    world().linkLocalAddresses[3].prefix_length = 10;
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 3)).want(prefixPointer).send(),
              pointsTo(3, ipv6z, zoned("fe80::", 3), 10));
}

TEST_F(PrefixPointer, OfALongerLinkLocalPrefixNamesNone)
{
    world().linkLocal = {3};
    world().linkLocalAddresses[3].prefix_length = 64;
    EXPECT_EQ(getRow(ipv6z, zoned("fe80::1", 3)).want(prefixPointer).send(), pointsTo({0, 0}));
}

TEST_F(PrefixPointer, LooksThroughTheRowsOfTheAddressesInterface)
{
    world().prefixes = {prefix(3, "2001:db8::", 64), prefix(5, "2001:db8:1::", 64), prefix(5, "2001:db8:2::", 64),
                        prefix(5, "2001:db8:3::", 64)};
    world().addresses = {address(5, "2001:db8:2::7")};
    world().addresses[0].prefix_length = 64;
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8:2::7")).want(prefixPointer).send(),
              pointsTo(5, ipv6, bytesOf("2001:db8:2::"), 64));
    EXPECT_EQ(foldedCalls(), (Calls{"IP6_DaemonCheck(1)", "IP6Mib_GetAddrFullInfoInVrf(0, 2001:db8:2::7, -1)",
                                    // the interface is one of those that are walked
                                    standardSelection, "IF_IteratorInitialize()", "IF_GetNextIfIndexByIfSelect(4)",
                                    "IF_IteratorFinalize()", "IP6CFG_GetFirstFullPrefix(5, -1)",
                                    "IP6CFG_GetNextFullPrefix(5, -1, 2001:db8:1::/64 new)"}));
}

// No walk of the prefix table visits the interface, so its own rows are none of the table's.
TEST_F(PrefixPointer, OfAnInterfaceThatIsNotWalkedNamesNone)
{
    world().interfaces = {3};
    world().prefixes = {prefix(5, "2001:db8::", 64)};
    world().addresses = {address(5, "2001:db8::2")};
    world().addresses[0].prefix_length = 64;
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::2")).want(prefixPointer).send(), pointsTo({0, 0}));
    world().interfaces = {};
    world().prefixes = {prefix(0, "2001:db8::", 64)};
    world().addresses[0].if_index = 0;
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8::2")).want(prefixPointer).send(), pointsTo({0, 0}));
}

TEST_F(PrefixPointer, WalksAllPrefixRowsWhenNoneOfTheInterfaceFits)
{
    world().prefixes = {prefix(3, "2001:db8::", 64), prefix(5, "2001:db8::", 64)};
    world().linkLocal = {3};
    getRow(ipv6, bytesOf("2001:db8::2")).send(); // on interface 5, with prefix length 0
    EXPECT_EQ(
        foldedCalls(),
        (Calls{"IP6_DaemonCheck(1)", "IP6Mib_GetAddrFullInfoInVrf(0, 2001:db8::2, -1)",
               // the interface's own rows
               standardSelection, "IF_IteratorInitialize()", "IF_GetNextIfIndexByIfSelect(4)", "IF_IteratorFinalize()",
               "IP6CFG_GetFirstFullPrefix(5, -1)", "IP6CFG_GetNextFullPrefix(5, -1, 2001:db8::/64 new)",
               "IP6Addr_GetLinkLocalAddr(5)",
               // the first row of all
               standardSelection, "IF_IteratorInitialize()", "IF_GetNextIfIndexByIfSelect(0)",
               "IP6CFG_GetFirstFullPrefix(3, -1)", "IF_IteratorFinalize()",
               // the one behind 3 2001:db8::/64
               "IP6CFG_GetNextFullPrefix(3, -1, 2001:db8::/64 new)", "IP6Addr_GetLinkLocalAddr(3)", standardSelection,
               "IF_IteratorInitialize()", "IF_IteratorFinalize()",
               // the one behind 3 fe80::%3/10
               "IP6Addr_GetLinkLocalAddr(3)", standardSelection, "IF_IteratorInitialize()",
               "IF_GetNextIfIndexByIfSelect(3)", "IP6CFG_GetFirstFullPrefix(5, -1)", "IF_IteratorFinalize()",
               // nothing behind 5 2001:db8::/64
               "IP6CFG_GetNextFullPrefix(5, -1, 2001:db8::/64 new)", "IP6Addr_GetLinkLocalAddr(5)", standardSelection,
               "IF_IteratorInitialize()", "IF_GetNextIfIndexByIfSelect(5)", "IF_IteratorFinalize()"}));
}

// A platform that, asked for one interface, goes on into the rows of another: those are met when all rows are walked.
TEST_F(PrefixPointer, TheInterfacesRowsEndWhereAnotherInterfacesBegin)
{
    const FullPrefixRecord own = prefix(3, "2001:db8::", 64);
    const FullPrefixRecord foreign = prefix(5, "2001:db8:5::", 64);
    world().nextPrefix = [&](std::uint32_t ifIndex, const FullPrefixRecord *key) -> const FullPrefixRecord * {
        if (key == nullptr) {
            return ifIndex == 3 ? &own : nullptr;
        }
        return ifIndex == 3 ? &foreign : nullptr;
    };
    world().addresses = {address(3, "2001:db8:7::1")};
    world().addresses[0].prefix_length = 64;
    EXPECT_EQ(getRow(ipv6, bytesOf("2001:db8:7::1")).want(prefixPointer).send(), pointsTo({0, 0}));
    const Calls calls = foldedCalls();
    const auto behindForeign =
        std::find(calls.begin(), calls.end(), "IP6CFG_GetNextFullPrefix(5, -1, 2001:db8:5::/64 new)");
    const auto secondFirst = std::find(std::find(calls.begin(), calls.end(), "IP6CFG_GetFirstFullPrefix(3, -1)") + 1,
                                       calls.end(), "IP6CFG_GetFirstFullPrefix(3, -1)");
    EXPECT_LT(secondFirst, behindForeign) << "the walk of all rows begins before anything is asked of interface 5";
    EXPECT_NE(behindForeign, calls.end());
}

TEST_F(PrefixPointer, DoesNotStopWhenTheInterfaceIsPassed)
{
    world().prefixes = {prefix(3, "2001:db8::", 64), prefix(5, "2001:db8::", 64)};
    pointerOf("2001:db8::1", 48);
    EXPECT_NE(std::find(allCalls().begin(), allCalls().end(), "IP6CFG_GetFirstFullPrefix(5, -1)"), allCalls().end());
}

} // namespace
} // namespace ipmib::scripted::prefix_pointer
