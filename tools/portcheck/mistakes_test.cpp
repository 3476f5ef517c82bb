// SPDX-License-Identifier: BSD-3-Clause
// A table of mistakes: in each field of each record, and in each list. Each is named exactly, or it is one of those
// that no check can tell from a right device; then --expect shows it.
#include "expectation.h"
#include "testing/check.h"
#include "testing/field_places.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace ipmib::portcheck
{
namespace
{

using enum Promise;

constexpr char byteOrder[] = "the right one in the wrong byte order";
constexpr char sameValue[] = "the record is the same with and without it";

// What cannot be told from a right device, and why. An empty record or field is any.
struct Untold {
    const char *record;
    const char *field;
    const char *kinds;
    const char *reason;
};

constexpr Untold untold[] = {
    {"FullAddressRecord", "lead", "bytes stale empty", sameValue},
    {"FullAddressRecord", "origin", "one empty", "any number is an origin: others are reported as other"},
    {"FullAddressRecord", "flags", "one empty", "an address may be an anycast one or not"},
    {"FullAddressRecord", "state", "one empty", "any number is a state: others are reported as preferred"},
    {"FullAddressRecord", "created_s", "empty", "it may be as old as the device"},
    {"FullAddressRecord", "last_changed_s", "one", "it may have changed then"},
    {"FullPrefixRecord", "origin", "one empty", "any number is an origin: others are reported as other"},
    {"FullPrefixRecord", "preferred_s", "empty", "a prefix may be deprecated"},
    {"FullPrefixRecord", "flags", "bytes", sameValue},
    {"FullPrefixRecord", "flags", "empty", "a prefix may be neither on-link nor autonomous"},
    {"FullPrefixRecord", "learned_at_s", "one stale empty", "it may have been learned then"},
    {"NeighbourEntry", "type", "one empty", "another type is a type"},
    {"NeighbourEntry", "state", "one", "another state is a state"},
    {"NeighbourEntry", "last_updated_s", "one empty", "it may have been updated then"},
    {"GatewayRecord", "lead", "bytes stale empty", sameValue},
    {"GatewayRecord", "lead", "one", "the lower 16 bits mean nothing"},
    {"GatewayRecord", "flags", "one", "bits other than the preference mean nothing"},
    {"GatewayRecord", "flags", "empty", "0 is medium, the preference of most"},
    {"GatewayRecord", "lifetime_s", "one empty", "another lifetime is a lifetime"},
    {"GatewayRecord", "learned_at_s", "stale", sameValue},
    {"GatewayRecord", "learned_at_s", "one empty", "it may have been learned then"},
    {"NdIfConfigInfo", "max_interval_s", "one", "another interval is an interval"},
    {"NdIfConfigInfo", "min_interval_s", "one", "another interval is an interval"},
    {"NdIfConfigInfo", "default_lifetime_s", "one empty", "another lifetime is a lifetime, and 0 is one"},
    {"NdIfConfigInfo", "flags", "one empty", "a bit more or less is another setting"},
    {"NdIfConfigInfo", "retransmit_ms", "one empty", "another time is a time, and 0 means unspecified"},
    {"NdIfConfigInfo", "reachable_ms", "one empty", "another time is a time, and 0 means unspecified"},
    {"Ip6MibStat", "header_errors_2", "bytes stale empty", sameValue}, // a sum has its number in its first part
    {"Ip6MibStat", "header_errors_3", "bytes stale empty", sameValue},
    {"Ip6MibStat", "header_errors_4", "bytes stale empty", sameValue},
    {"Ip6MibStat", "reasm_fails_2", "bytes stale empty", sameValue},
    {"Ip6MibStat", "", "one empty", "a counter may have any value"},
    {"IpMibIfStat", "", "one empty", "a counter may have any value"},
    {"Icmp6MibStat", "", "stale", sameValue}, // there is one such record
    {"Icmp6MibStat", "", "one empty", "a counter may have any value"},
    {"identifier", "", "one", "any 8 bytes may identify an interface"},
    {"mtu", "", "one", "another size is a size"},
    {"hopLimit", "", "stale", sameValue}, // there is one such number
    {"hopLimit", "", "one", "another limit is a limit"},
};

const char *reasonOf(const FieldPlace &place, const char *kind)
{
    for (const Untold &one : untold) {
        if (std::strcmp(one.record, place.record) == 0 && std::strstr(one.kinds, kind) != nullptr &&
            (one.field[0] == '\0' || std::strcmp(one.field, place.field) == 0)) {
            return one.reason;
        }
    }
    return nullptr;
}

bool names(const Report &report, const char *field, const char *said)
{
    return std::any_of(report.broken.begin(), report.broken.end(), [&](const Finding &one) {
        return one.seen.find(field) != std::string::npos && one.seen.find(said) != std::string::npos;
    });
}

class MistakeInARecord : public testing::TestWithParam<const char *>
{
};

TEST_P(MistakeInARecord, isNamedFieldByField)
{
    const Report right = checkWith("");
    ASSERT_TRUE(right.broken.empty()) << right.text();
    for (const FieldPlace &place : fieldPlaces) {
        if (std::strcmp(place.record, GetParam()) != 0) {
            continue;
        }
        for (const char *kind : {"bytes", "one", "stale", "empty"}) {
            const std::string mistake = std::string(place.record) + "." + place.field + ":" + kind;
            const char *const reason = reasonOf(place, kind);
            Report report = checkWith(mistake, reason == nullptr);
            if (reason == nullptr) {
                const char *said = std::strcmp(kind, "bytes") == 0 ? byteOrder : "";
                EXPECT_TRUE(names(report, place.field, said)) << mistake << ":\n" << report.text();
                continue;
            }
            EXPECT_TRUE(report.broken.empty()) << mistake << " can be told:\n" << report.text();
            compareRows(report, expectationOf(right));
            EXPECT_EQ(report.breaks(asExpected), reason != sameValue) << mistake << ": " << reason << report.text();
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Records, MistakeInARecord,
                         testing::Values("FullAddressRecord", "FullPrefixRecord", "NeighbourEntry", "GatewayRecord",
                                         "NdIfConfigInfo", "Ip6MibStat", "IpMibIfStat", "Icmp6MibStat", "ifIndex",
                                         "identifier", "mtu", "hopLimit"));

struct MistakeInAList {
    const char *list;
    const char *kind;
    Promise promise;
    const char *said; // in its words
};

constexpr char hidden[] =
    "is found when it is asked for, and no walk comes to it: the list is out of order, or ends early";
constexpr char unselected[] = "exists and is not in the standard selection: it is left out, or out of order";
constexpr char neverEnds[] = "was there before: the list never ends";

constexpr MistakeInAList lists[] = {
    {"interfaces", "repeats", interfacesAscend, "behind ifIndex 3 comes ifIndex 3 again"},
    {"interfaces", "unsorted", addressInterface, unselected},
    {"interfaces", "disordered", interfacesAscend, "ifIndex 3 comes behind ifIndex 7, out of order"},
    {"interfaces", "ends", addressInterface, unselected},
    {"interfaces", "endless", interfacesAscend, neverEnds},
    {"interfaces", "forgets", interfacesFollow, "behind ifIndex 1 comes none in place of ifIndex 2"},
    {"interfaces", "lacks", addressInterface, unselected},
    {"interfaces", "first", interfacesBegin, "the first is ifIndex 3, but behind ifIndex 0 comes ifIndex 2"},
    {"interfaces", "stays", interfacesAscend, "again"},
    {"interfaces", "inclusive", interfacesAscend, "again"},
    {"interfaces", "cursor", interfacesFollow, "in place of"},
    {"neighbours", "repeats", neighboursMove, "2001:db8:1::20 again"},
    {"neighbours", "unsorted", neighboursAscend, hidden},
    {"neighbours", "disordered", neighboursAscend, "2001:db8:1::20 comes behind 2001:db8:1::30, out of order"},
    {"neighbours", "ends", neighboursAscend, hidden},
    {"neighbours", "endless", neighboursAscend, neverEnds},
    {"neighbours", "forgets", neighboursFollow, "behind 2001:db8:1::f comes none in place of 2001:db8:1::10"},
    {"neighbours", "lacks", neighboursAscend, hidden},
    {"neighbours", "mixed", neighbourMode, "fe80::10 in mode 1"},
    {"neighbours", "stays", neighboursMove, "again"},
    {"neighbours", "inclusive", neighboursMove, "again"},
    {"neighbours", "cursor", neighboursFollow, "in place of"},
    {"prefixes", "repeats", prefixesMove, "2001:db8:1::/64 again"},
    {"prefixes", "repeats", returns, "the walk of ipAddressPrefixTable through the module"},
    {"prefixes", "unsorted", addressHasPrefix,
     "the walk goes on to 2001:db8:3::/64: it is not listed, or it is out of order and stands behind that"},
    {"prefixes", "disordered", prefixesAscend, "2001:db8:2::/64 comes behind 2001:db8:3::/64, out of order"},
    {"prefixes", "ends", addressHasPrefix,
     "no 2001:db8:3::/64 for a prefix_length of 64: it is not listed, or the list ends"},
    {"prefixes", "endless", prefixesAscend, neverEnds},
    {"prefixes", "forgets", prefixesFollow, "comes none in place of"},
    {"prefixes", "lacks", addressHasPrefix, "interface 2 has 2001:db8:1::1/64, and no 2001:db8:1::/64"},
    {"prefixes", "lacks", pointers, "that of 2001:db8:1::1 ends in 0.0"},
    {"prefixes", "first", prefixesBegin, "the first is 2001:db8:1::/64, but behind ::/0 comes 2001:db8:0:1::/65"},
    {"prefixes", "mixed", prefixesOutsideLinkLocal, "interface 3, fe80::/128"},
    {"prefixes", "stays", prefixesMove, "again"},
    {"prefixes", "inclusive", prefixesMove, "again"},
    {"prefixes", "cursor", prefixesFollow, "in place of"},
    {"addresses", "repeats", addressesMove, "2001:db8:2::1 again"},
    {"addresses", "unsorted", addressesAscend, hidden},
    {"addresses", "disordered", addressesAscend, "2001:db8:a::1 comes behind 2001:db8:a::2, out of order"},
    {"addresses", "ends", addressesAscend, hidden},
    {"addresses", "endless", addressesAscend, neverEnds},
    {"addresses", "forgets", addressesFollow, "comes none in place of"},
    {"addresses", "lacks", addressesAscend, hidden},
    {"addresses", "first", addressesBegin, "the first is 2001:db8:2::1, but behind :: comes 2001:db8:1::1"},
    {"addresses", "mixed", addressesOutsideLinkLocal, "fe80::5eff:fe00:5301/10"},
    {"addresses", "stays", addressesMove, "again"},
    {"addresses", "inclusive", addressesMove, "again"},
    {"addresses", "cursor", addressesFollow, "in place of"},
    {"routers", "repeats", routersMove, "fe80::10 on interface 3 again"},
    {"routers", "unsorted", routersAscend, hidden},
    {"routers", "disordered", routersAscend,
     "fe80::10 on interface 2 comes behind fe80::10 on interface 3, out of order"},
    {"routers", "ends", routersAscend, hidden},
    {"routers", "endless", routersAscend, neverEnds},
    {"routers", "forgets", routersFollow, "comes none in place of"},
    {"routers", "lacks", routersAscend, hidden},
    {"routers", "first", routersBegin, "the first is fe80::10 on interface 3"},
    {"routers", "mixed", routerClass, "fe80::10 on interface 2 in class 14"},
    {"routers", "stays", routersMove, "again"},
    {"routers", "inclusive", routersMove, "again"},
    {"routers", "cursor", routersFollow, "in place of"},
};

class MistakeInLists : public testing::TestWithParam<const char *>
{
};

TEST_P(MistakeInLists, isNamed)
{
    for (const MistakeInAList &one : lists) {
        if (std::strcmp(one.list, GetParam()) != 0) {
            continue;
        }
        const std::string mistake = std::string(one.list) + ":" + one.kind;
        const Report report = checkWith(mistake);
        EXPECT_TRUE(std::any_of(report.broken.begin(), report.broken.end(),
                                [&](const Finding &found) {
                                    const std::string words = found.service + ": " + found.seen;
                                    return found.promise == one.promise && words.find(one.said) != std::string::npos;
                                }))
            << mistake << ": " << one.said << "\n"
            << report.text();
    }
}
INSTANTIATE_TEST_SUITE_P(Lists, MistakeInLists,
                         testing::Values("interfaces", "neighbours", "prefixes", "addresses", "routers"));

} // namespace
} // namespace ipmib::portcheck
