// SPDX-License-Identifier: BSD-3-Clause
// The address services against what `ip` says of the same addresses.
#include "addresses/test_rows.h"
#include "netns/namespace.h"
#include "test_platform.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fstream>
#include <map>

namespace
{

using namespace ipmib::platform;
using ipmib::netns::Namespace;

// What `ip` says of each address outside fe80::/10, or of each inside it, by address and ifIndex.
std::map<std::tuple<std::string, std::uint32_t>, nlohmann::json> listed(const Namespace &space, bool linkLocal)
{
    std::map<std::tuple<std::string, std::uint32_t>, nlohmann::json> found;
    for (const auto &link : space.json("ip -j -6 addr")) {
        for (const auto &info : link.value("addr_info", nlohmann::json::array())) {
            if (info.contains("local") && (info["local"].get<std::string>().substr(0, 3) == "fe8") == linkLocal) {
                found[{info["local"], link["ifindex"]}] = info;
            }
        }
    }
    return found;
}

std::uint32_t expectedState(const nlohmann::json &info)
{
    return info.value("dadfailed", false)    ? 128
           : info.value("tentative", false)  ? 64
           : info.value("deprecated", false) ? 4
                                             : 0;
}

std::uint32_t indexOf(const Namespace &space, const std::string &name)
{
    return space.json("ip -j link show dev " + name)[0]["ifindex"];
}

const AddressRow *rowOf(const std::vector<AddressRow> &rows, const std::string &address)
{
    for (const AddressRow &row : rows) {
        if (row.address == address) {
            return &row;
        }
    }
    return nullptr;
}

void expectWhatIpSays(const Namespace &space)
{
    const auto expected = listed(space, false);
    const auto rows = walkAddresses();
    std::size_t unicast = 0;
    for (const AddressRow &row : rows) {
        EXPECT_TRUE(prefixIsListed(row.record)) << row.address;
        if (row.record.flags != 0) {
            continue;
        }
        ++unicast;
        const auto found = expected.find({row.address, row.ifIndex});
        ASSERT_NE(found, expected.end()) << row.address;
        EXPECT_EQ(row.record.prefix_length, found->second["prefixlen"]) << row.address;
        EXPECT_EQ(row.record.state, expectedState(found->second)) << row.address;
    }
    EXPECT_EQ(unicast, expected.size());
}

// The kernel settles an address some time after it was asked for one, and tells a moment later.
bool isSettled(const Namespace &space, const std::vector<AddressRow> &rows)
{
    for (const auto &[key, info] : listed(space, false)) {
        const AddressRow *row = rowOf(rows, std::get<0>(key));
        if (row == nullptr || row->record.state != expectedState(info) || info.value("tentative", false)) {
            return false;
        }
    }
    return true;
}

TEST(AddressesNetns, twoThousandOnSixtyFourInterfaces)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    std::ofstream batch("addresses.batch");
    for (int link = 0; link < 32; ++link) {
        batch << "link add a" << link << " type veth peer name b" << link << "\n";
        for (const char end : {'a', 'b'}) {
            batch << "link set " << end << link << " up\n";
            for (int i = 0; i < 31; ++i) {
                batch << "addr add 2001:db8:" << std::hex << link << (end == 'a' ? ":a" : ":b") << (i % 4) << "::" << i
                      << "/" << std::dec << (i % 7 == 6 ? 128 : 64) << " dev " << end << link << " nodad\n";
            }
        }
    }
    batch.close();
    space.run("ip -batch addresses.batch && rm addresses.batch");
    PlatformInside platform(space);
    EXPECT_EQ(walkAddresses().size(), 64u * 31u + 1u);
    expectWhatIpSays(space);

    space.run("ip addr del 2001:db8:5:a1::1/64 dev a5; ip addr add 2001:db8:ffff::1/48 dev b9 nodad; ip link del a7");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return walkAddresses().size() == 62u * 31u + 1u;
    }));
    expectWhatIpSays(space);
    EXPECT_EQ(platform->addressing().addressMirror().timesRead(), 1u) << "changes come by announcement";
}

TEST(AddressesNetns, statesAreWhatIpSays)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    const Namespace other;
    Namespace::connect(space, "v0", other, "w0");
    space.sysctl("net/ipv6/conf/v0/accept_dad", "1");
    other.run("ip addr add 2001:db8::d/64 dev w0 nodad");
    PlatformInside platform(space);
    space.run("ip addr add 2001:db8::1/64 dev v0 nodad");
    space.run("ip addr add 2001:db8::2/64 dev v0 nodad preferred_lft 0");
    space.run("ip addr add 2001:db8::d/64 dev v0"); // the other side has it
    space.sysctl("net/ipv6/conf/v0/dad_transmits", "100");
    space.run("ip addr add 2001:db8::3/64 dev v0");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        const auto rows = walkAddresses();
        const AddressRow *duplicate = rowOf(rows, "2001:db8::d");
        return duplicate != nullptr && duplicate->record.state == 128;
    }));
    expectWhatIpSays(space);
    const auto rows = walkAddresses();
    EXPECT_EQ(rowOf(rows, "2001:db8::1")->record.state, 0u);
    EXPECT_EQ(rowOf(rows, "2001:db8::2")->record.state, 4u);
    EXPECT_EQ(rowOf(rows, "2001:db8::3")->record.state, 64u);

    // Time alone deprecates an address, and the kernel says so.
    space.run("ip addr change 2001:db8::1/64 dev v0 preferred_lft 1 valid_lft 100");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return rowOf(walkAddresses(), "2001:db8::1")->record.state == 4;
    }));
    expectWhatIpSays(space);
}

TEST(AddressesNetns, originsAreToldApart)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 address 02:00:00:00:00:07 type veth peer name v1; ip link set v1 up");
    space.sysctl("net/ipv6/conf/v0/use_tempaddr", "2");
    space.run("ip link set v0 up");
    space.run("ip addr add 2001:db8:1::1/64 dev v0");
    space.run("ip addr add 2001:db8:2::1/128 dev v0 valid_lft 1000 preferred_lft 500");
    space.run("ip addr add 2001:db8:3::ff/64 dev v0 valid_lft 1000 preferred_lft 500 mngtmpaddr");
    space.run("ip addr add 2001:db8:4::1/64 dev v0 valid_lft 1000 preferred_lft 500");
    space.run("ip -6 route add 2001:db8:5::/64 dev v0 proto ra; ip addr add 2001:db8:5::1/64 dev v0 noprefixroute "
              "valid_lft 1000 preferred_lft 500");
    PlatformInside platform(space);
    const std::uint32_t v0 = indexOf(space, "v0");
    ASSERT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return isSettled(space, walkAddresses()) && !walkLinkLocals({v0}).empty();
    }));
    const auto rows = walkAddresses();
    EXPECT_EQ(rowOf(rows, "::1")->record.origin, 0u);
    EXPECT_EQ(rowOf(rows, "2001:db8:1::1")->record.origin, 8u);
    EXPECT_EQ(rowOf(rows, "2001:db8:2::1")->record.origin, 16u);
    EXPECT_EQ(rowOf(rows, "2001:db8:3::ff")->record.origin, 64u);
    EXPECT_EQ(rowOf(rows, "2001:db8:4::1")->record.origin, 16u);
    EXPECT_EQ(rowOf(rows, "2001:db8:5::1")->record.origin, 64u);
    std::size_t temporary = 0;
    for (const auto &[key, info] : listed(space, false)) {
        if (info.value("temporary", false)) {
            ++temporary;
            EXPECT_EQ(rowOf(rows, std::get<0>(key))->record.origin, 128u);
        }
    }
    EXPECT_GT(temporary, 0u);
    expectWhatIpSays(space);

    EXPECT_EQ(walkLinkLocals({v0})[0].address, "fe80::ff:fe00:7");
    EXPECT_EQ(walkLinkLocals({v0})[0].record.origin, 64u);
    EXPECT_EQ(walkLinkLocals({v0})[0].record.prefix_length, 10u);
}

TEST(AddressesNetns, theOldestUsableLinkLocalAddressIsTheMainOne)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v1 addrgenmode none up");
    space.sysctl("net/ipv6/conf/v0/addr_gen_mode", "1"); // the kernel makes none
    space.sysctl("net/ipv6/conf/v0/accept_dad", "1");
    space.sysctl("net/ipv6/conf/v0/dad_transmits", "100");
    space.run("ip link set v0 up");
    PlatformInside platform(space);
    const std::uint32_t v0 = indexOf(space, "v0");
    EXPECT_TRUE(walkLinkLocals({v0, indexOf(space, "lo")}).empty());

    // The kernel announces an address a moment after it has it.
    const auto expectMainOne = [&](const std::string &expected) {
        const auto found = [&] {
            platform->beginPacket();
            const auto rows = walkLinkLocals({v0});
            return rows.empty() ? "" : rows[0].address;
        };
        platform.waitUntil([&] { return found() == expected; });
        space.run("sleep 0.03");
        EXPECT_EQ(found(), expected);
    };
    space.run("ip addr add fe80::9/64 dev v0");
    expectMainOne("fe80::9"); // a tentative one when there is no other
    space.run("ip addr add fe80::5/64 dev v0 nodad");
    expectMainOne("fe80::5");
    space.run("ip addr add fe80::1/64 dev v0 nodad");
    expectMainOne("fe80::5"); // not the lowest, but the oldest
    space.run("ip addr del fe80::5/64 dev v0");
    expectMainOne("fe80::1");
    EXPECT_EQ(walkLinkLocals({v0})[0].record.origin, 8u);
    space.run("ip link set v0 down");
    expectMainOne("");
}

TEST(AddressesNetns, equalLinkLocalAddressesOnSeveralInterfaces)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    std::vector<std::uint32_t> interfaces;
    for (int i = 0; i < 3; ++i) {
        const std::string name = "v" + std::to_string(i);
        space.run("ip link add " + name + " type veth peer name w" + std::to_string(i));
        space.sysctl("net/ipv6/conf/" + name + "/addr_gen_mode", "1");
        space.run("ip link set " + name + " up; ip addr add fe80::1/64 dev " + name);
        interfaces.push_back(indexOf(space, name));
    }
    PlatformInside platform(space);
    const auto rows = walkLinkLocals(interfaces);
    ASSERT_EQ(rows.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(rows[i].address, "fe80::1");
        EXPECT_EQ(rows[i].ifIndex, interfaces[i]);
    }
    FullAddressRecord record{};
    EXPECT_NE(IP6Mib_GetAddrFullInfoInVrf(0, rows[0].record.address, -1, &record), 0u)
        << "without a zone it names nothing";
}

TEST(AddressesNetns, anAddressOnTwoInterfacesIsOneRowOfTheLower)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    space.run("ip addr add 2001:db8::1/64 dev v1 nodad; ip addr add 2001:db8::1/64 dev v0 nodad");
    PlatformInside platform(space);
    const std::uint32_t v0 = indexOf(space, "v0");
    const std::uint32_t v1 = indexOf(space, "v1");
    const auto rows = walkAddresses();
    ASSERT_EQ(rows.size(), 2u); // with ::1
    EXPECT_EQ(rows[1].ifIndex, std::min(v0, v1));
    space.run("ip addr del 2001:db8::1/64 dev " + std::string(v0 < v1 ? "v0" : "v1"));
    platform->beginPacket();
    EXPECT_EQ(walkAddresses()[1].ifIndex, std::max(v0, v1));
}

// The list of /proc/net/anycast6 without its link-local ones.
std::map<std::string, std::uint32_t> anycastListed(const Namespace &space)
{
    std::map<std::string, std::uint32_t> found;
    std::istringstream lines(space.file("/proc/thread-self/net/anycast6"));
    std::uint32_t ifIndex;
    std::string name;
    std::string digits;
    unsigned users;
    while (lines >> ifIndex >> name >> digits >> users) {
        std::uint8_t bytes[16];
        for (std::size_t i = 0; i < 16; ++i) {
            bytes[i] = static_cast<std::uint8_t>(std::stoul(digits.substr(i * 2, 2), nullptr, 16));
        }
        if (bytes[0] != 0xFE) {
            found.emplace(addressText(bytes), ifIndex);
        }
    }
    return found;
}

TEST(AddressesNetns, anycastAddressesOfARouterComeAndGo)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    Settings settings;
    settings.routerAnycast = true;
    PlatformInside platform(space, settings);
    space.run("ip addr add 2001:db8:1::1/64 dev v0 nodad; ip addr add 2001:db8:2::1/48 dev v0 nodad");
    const auto anycast = [&] {
        std::map<std::string, std::uint32_t> found;
        platform->beginPacket();
        for (const AddressRow &row : walkAddresses()) {
            if (row.record.flags == 1) {
                found.emplace(row.address, row.ifIndex);
                EXPECT_TRUE(prefixIsListed(row.record)) << row.address;
                EXPECT_EQ(row.record.state, 0u);
            }
        }
        return found;
    };
    // The kernel counts the anycast address of one that settles while it becomes a router twice, and so does not give
    // it up. It announces an address when that has settled; a reading has it before.
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return walkAddresses().size() == 3;
    }));
    EXPECT_TRUE(anycast().empty());
    space.sysctl("net/ipv6/conf/all/forwarding", "1");
    EXPECT_TRUE(platform.waitUntil([&] { return anycast().size() == 2; }));
    EXPECT_EQ(anycast(), anycastListed(space));
    EXPECT_EQ(rowOf(walkAddresses(), "2001:db8:1::")->record.prefix_length, 64u);
    EXPECT_EQ(rowOf(walkAddresses(), "2001:db8:2::")->record.prefix_length, 48u);
    EXPECT_GT(rowOf(walkAddresses(), "2001:db8:2::")->record.created_s, 0u);

    space.run("ip addr add 2001:db8:3::1/64 dev v0 nodad; ip addr del 2001:db8:1::1/64 dev v0");
    EXPECT_TRUE(platform.waitUntil([&] {
        const auto now = anycast();
        return now.contains("2001:db8:3::") && !now.contains("2001:db8:1::");
    }));
    EXPECT_EQ(anycast(), anycastListed(space));
    // One that is an ordinary address too is an ordinary row.
    space.run("ip addr add 2001:db8:3::/64 dev v0 nodad");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return rowOf(walkAddresses(), "2001:db8:3::")->record.flags == 0;
    }));
    space.sysctl("net/ipv6/conf/all/forwarding", "0");
    EXPECT_TRUE(platform.waitUntil([&] { return anycast() == anycastListed(space); }));
}

// A socket that is a member of an anycast group for as long as it is open.
class AnycastMember
{
  public:
    AnycastMember(const Namespace &space, const char *address, std::uint32_t ifIndex)
    {
        const ipmib::netns::Inside inside(space);
        socket_ = socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ipv6_mreq group{};
        EXPECT_EQ(inet_pton(AF_INET6, address, &group.ipv6mr_multiaddr), 1);
        group.ipv6mr_interface = ifIndex;
        EXPECT_EQ(setsockopt(socket_, IPPROTO_IPV6, IPV6_JOIN_ANYCAST, &group, sizeof group), 0)
            << std::strerror(errno);
    }
    ~AnycastMember() { close(socket_); }

  private:
    int socket_;
};

TEST(AddressesNetns, ofAnycastAddressesThoseThatSomebodyWantedAreRows)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up;"
              "ip addr add 2001:db8:1::1/64 dev v0 nodad; ip addr add 2001:db8:2::1/48 dev v1 nodad");
    space.sysctl("net/ipv6/conf/all/forwarding", "1");
    const AnycastMember member(space, "2001:db8:1::aaaa", indexOf(space, "v0"));
    PlatformInside platform(space);
    EXPECT_EQ(anycastListed(space).size(), 3u) << "the kernel has joined two more";
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return walkAddresses().size() == 4;
    }));
    std::vector<std::string> found;
    for (const AddressRow &row : walkAddresses()) {
        found.push_back(row.address);
    }
    EXPECT_EQ(found, (std::vector<std::string>{"::1", "2001:db8:1::1", "2001:db8:1::aaaa", "2001:db8:2::1"}));
    EXPECT_EQ(walkAddresses()[2].record.flags, 1u);
    FullAddressRecord record;
    std::uint8_t allRouters[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 1};
    EXPECT_NE(IP6Mib_GetAddrFullInfoInVrf(0, allRouters, -1, &record), 0u);
}

// Times of rows count from when sysUpTime was 0, whenever that was.
TEST(AddressesNetns, timesAreThoseOfSysUpTime)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up;"
              "ip addr add 2001:db8::1/64 dev v0 nodad");
    PlatformInside platform(space);
    const std::uint64_t twoSecondsAgo = monotonicMilliseconds() - 2'000;
    space.run("ip addr add 2001:db8::2/64 dev v0 nodad valid_lft 100 preferred_lft 50;"
              "ip neigh add 2001:db8::9 lladdr 02:00:00:00:00:09 nud permanent dev v0");
    const auto row = [&](const char *address) {
        platform->beginPacket();
        return rowOf(walkAddresses(), address)->record;
    };
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return rowOf(walkAddresses(), "2001:db8::2") != nullptr;
    }));
    const auto neighbour = [&] {
        NeighbourEntry entry{};
        std::uint8_t key[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9};
        EXPECT_EQ(ND_GetNetToPhysicalTable(indexOf(space, "v0"), key, &entry, 16), 0u);
        return ipmib_be32_get(entry.last_updated_s);
    };
    EXPECT_GT(row("2001:db8::2").created_s, 5u) << "since boot";
    EXPECT_GT(neighbour(), 5u);
    const auto prefixesBefore = walkPrefixes(indexOf(space, "v0"));

    platform->uptimeBegan(twoSecondsAgo);
    EXPECT_GE(row("2001:db8::2").created_s, 1u);
    EXPECT_LE(row("2001:db8::2").created_s, (monotonicMilliseconds() - twoSecondsAgo) / 1'000);
    EXPECT_GE(neighbour(), 1u);
    EXPECT_LE(neighbour(), (monotonicMilliseconds() - twoSecondsAgo) / 1'000);
    platform->uptimeBegan(monotonicMilliseconds() + 1'000);
    EXPECT_EQ(row("2001:db8::1").created_s, 0u) << "it was there before";
    EXPECT_EQ(row("2001:db8::1").last_changed_s, 0u);
    EXPECT_EQ(row("2001:db8::2").created_s, 0u);
    EXPECT_EQ(neighbour(), 0u);
    const auto prefixes = walkPrefixes(indexOf(space, "v0"));
    ASSERT_EQ(prefixes.size(), prefixesBefore.size());
    for (std::size_t i = 0; i < prefixes.size(); ++i) {
        EXPECT_EQ(prefixes[i].valid, prefixesBefore[i].valid) << "lifetimes do not depend on it";
    }
}

TEST(AddressesNetns, createdAndChangedAreTimesSinceBoot)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    PlatformInside platform(space);
    const std::uint32_t before = platform->now();
    space.run("ip addr add 2001:db8::1/64 dev v0 nodad valid_lft 100 preferred_lft 50");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return walkAddresses().size() == 2; // with ::1
    }));
    const FullAddressRecord first = rowOf(walkAddresses(), "2001:db8::1")->record;
    EXPECT_GE(first.created_s + 1, before);
    EXPECT_LE(first.created_s, platform->now() + 1);
    EXPECT_EQ(first.last_changed_s, first.created_s);
    space.run("sleep 1.1; ip addr change 2001:db8::1/64 dev v0 valid_lft 100 preferred_lft 50");
    platform->beginPacket();
    const FullAddressRecord second = rowOf(walkAddresses(), "2001:db8::1")->record;
    EXPECT_EQ(second.created_s, first.created_s);
    EXPECT_GT(second.last_changed_s, first.last_changed_s);
}

TEST(AddressesNetns, lostAnnouncementsMakeTheTableBeReadAgain)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    Settings settings;
    settings.receiveBuffer = 1; // the kernel rounds up to room for one or two announcements
    PlatformInside platform(space, settings);
    for (int i = 1; i <= 40; ++i) {
        space.run("ip addr add 2001:db8::" + std::to_string(i) + "/64 dev v0 nodad");
    }
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return platform->dumps().idle() && walkAddresses().size() == 41;
    }));
    EXPECT_GT(platform->addressing().addressMirror().timesLost(), 0u);
    expectWhatIpSays(space);
}

// The link-local address of an interface, as text; empty for none.
std::string linkLocalOf(std::uint32_t ifIndex, FullAddressRecord &record)
{
    record = FullAddressRecord{};
    char text[INET6_ADDRSTRLEN] = "";
    if (IP6Mib_GetLinkLocalFullAddr(ifIndex, &record) == 0) {
        inet_ntop(AF_INET6, record.address, text, sizeof text);
    }
    return text;
}

TEST(AddressesNetns, aLinkLocalAddressThatWasAskedForIsStillTheOneOfNow)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add d0 type bridge; ip link set d0 addrgenmode none; ip link set d0 up; ip addr add fe80::1/64 "
              "dev d0 nodad");
    const std::uint32_t ifIndex = indexOf(space, "d0");
    PlatformInside platform(space);
    FullAddressRecord record;
    const auto becomes = [&](const std::string &expected) {
        const auto isNow = [&] {
            platform->beginPacket();
            return linkLocalOf(ifIndex, record) == expected && linkLocalOf(ifIndex, record) == expected;
        };
        return platform.waitFor(isNow);
    };
    EXPECT_TRUE(becomes("fe80::1"));
    const std::uint32_t created = record.created_s;
    platform->uptimeBegan(0);
    EXPECT_TRUE(becomes("fe80::1"));
    EXPECT_EQ(record.created_s, created);
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    platform->uptimeBegan(static_cast<std::uint64_t>(now.tv_sec) * 1'000 + 999);
    EXPECT_TRUE(becomes("fe80::1"));
    EXPECT_EQ(record.created_s, 0u) << "it was there before sysUpTime began";
    space.run("ip addr add fe80::2/64 dev d0 nodad; ip addr del fe80::1/64 dev d0");
    EXPECT_TRUE(becomes("fe80::2"));
    space.run("ip addr del fe80::2/64 dev d0");
    EXPECT_TRUE(becomes(""));
    space.run("ip addr add fe80::3/64 dev d0 nodad");
    EXPECT_TRUE(becomes("fe80::3"));
    space.run("ip link del d0");
    EXPECT_TRUE(becomes(""));
}

// Between packets the platform gives its host back its time; a packet has all that was announced.
TEST(AddressesNetns, aTurnBetweenPacketsIsShort)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add br0 type bridge; ip link set br0 up");
    PlatformInside platform(space);
    platform->beginPacket();
    space.run("seq 1 1000 | sed 's/.*/addr add 2001:db8::&\\/64 dev br0 nodad/' | ip -batch -");
    // Without asking, which would have all applied.
    const auto applied = [&] {
        return static_cast<const AddressTable &>(platform->addressing().addressMirror().table()).size();
    };
    const std::size_t before = applied();
    // The kernel announces an address in work of its own, which may come after the command's end, and a turn that was
    // interrupted ends before it comes to them.
    std::size_t last = before;
    std::size_t mostInTurn = 0;
    const auto servesAll = [&] {
        mostInTurn = std::max(mostInTurn, applied() - last);
        last = applied();
        return last == before + 1000;
    };
    EXPECT_TRUE(platform.waitUntil(servesAll)) << applied();
    EXPECT_LT(mostInTurn, 1000);

    space.run("ip link del br0; ip link add br0 type bridge; ip link set br0 up");
    space.run("seq 1 1000 | sed 's/.*/addr add 2001:db8::&\\/64 dev br0 nodad/' | ip -batch -");
    const auto servesAllToAPacket = [&] {
        platform->beginPacket();
        return platform->addressing().addresses().size() == before + 1000;
    };
    EXPECT_TRUE(platform.waitFor(servesAllToAPacket)) << applied();
}

} // namespace
