// SPDX-License-Identifier: BSD-3-Clause
// Which interface runs over which, and what each listens to, against what `ip` says.
#include "netns/namespace.h"
#include "test_platform.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>

namespace
{

using namespace ipmib::platform;
using ipmib::netns::Namespace;

using Stack = std::set<std::pair<std::uint32_t, std::uint32_t>>;

Stack stackOf(PlatformInside &platform)
{
    Stack rows;
    IpmibStack row{};
    std::pair<std::uint32_t, std::uint32_t> last{0, 0};
    while (platform->ip().stackAfter(row.higher, row.lower, row)) {
        const std::pair key{row.higher, row.lower};
        EXPECT_LT(last, key);
        last = key;
        rows.insert(key);
        IpmibStack found{};
        EXPECT_TRUE(platform->ip().findStack(row.higher, row.lower, found));
    }
    return rows;
}

TEST(LinkTablesNetns, stackRowsSayWhatRunsOverWhat)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 type veth peer name v1; ip link add b0 type bridge; ip link set v0 master b0;"
              "ip link add m0 link v1 type macvlan mode bridge");
    const auto index = [&](const char *name) -> std::uint32_t {
        return space.json(std::string("ip -j link show dev ") + name)[0]["ifindex"];
    };
    const std::uint32_t v0 = index("v0");
    const std::uint32_t v1 = index("v1");
    const std::uint32_t b0 = index("b0");
    const std::uint32_t m0 = index("m0");
    PlatformInside platform(space);
    platform->uptimeBegan(monotonicMilliseconds());
    // Nothing is above, or below: a row with a 0. The two ends of a pair stand side by side.
    EXPECT_EQ(stackOf(platform), (Stack{{0, 1}, {1, 0}, {b0, v0}, {v0, 0}, {0, b0}, {m0, v1}, {v1, 0}, {0, m0}}));
    EXPECT_EQ(platform->ip().stackChanged(), 0u);
    IpmibStack row{};
    EXPECT_FALSE(platform->ip().findStack(0, v0, row));

    EXPECT_FALSE(platform.waitUntil([] { return false; }, std::chrono::milliseconds(20)));
    space.run("ip link set v0 nomaster");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return stackOf(platform).contains({0, v0});
    }));
    EXPECT_EQ(stackOf(platform),
              (Stack{{0, 1}, {1, 0}, {0, v0}, {v0, 0}, {0, b0}, {b0, 0}, {m0, v1}, {v1, 0}, {0, m0}}));
    const std::uint32_t changed = platform->ip().stackChanged();
    EXPECT_GT(changed, 0u);
    space.run("ip link set b0 up"); // changes nothing here
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        IpmibInterface interface {
        };
        return platform->findInterface(b0, interface) && interface.admin_status == IPMIB_ADMIN_UP;
    }));
    EXPECT_EQ(platform->ip().stackChanged(), changed);
    EXPECT_FALSE(platform.waitUntil([] { return false; }, std::chrono::milliseconds(20)));
    space.run("ip link del m0");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return stackOf(platform).size() == 8;
    }));
    EXPECT_EQ(stackOf(platform), (Stack{{0, 1}, {1, 0}, {0, v0}, {v0, 0}, {0, b0}, {b0, 0}, {0, v1}, {v1, 0}}));
    EXPECT_GT(platform->ip().stackChanged(), changed);
}

using Receive = std::set<std::pair<std::uint32_t, std::string>>;

std::string linkLayerText(const std::uint8_t *bytes, std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        char octet[4];
        std::snprintf(octet, sizeof octet, "%s%02x", i == 0 ? "" : ":", bytes[i]);
        text += octet;
    }
    return text;
}

Receive receiveAddressesOf(PlatformInside &platform)
{
    Receive rows;
    IpmibReceiveAddress row{};
    while (platform->ip().receiveAddressAfter(row.if_index, row.address, row.size, row) && rows.size() < 1'000) {
        EXPECT_TRUE(rows.insert({row.if_index, linkLayerText(row.address, row.size)}).second);
        IpmibReceiveAddress found{};
        EXPECT_TRUE(platform->ip().findReceiveAddress(row.if_index, row.address, row.size, found));
        EXPECT_EQ(found.type, row.type);
        EXPECT_FALSE(platform->ip().findReceiveAddress(row.if_index, row.address, row.size - 1u, found));
    }
    return rows;
}

TEST(LinkTablesNetns, interfacesListenToTheirAddressesAndGroups)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace space;
    space.run("ip link add v0 address 02:00:00:00:00:07 type veth peer name v1; ip link set v0 up; ip link set v1 up;"
              "ip addr add 10.0.0.1/24 dev v0; ip maddr add 33:33:00:00:12:34 dev v0");
    PlatformInside platform(space);
    ASSERT_EQ(platform->ip().follow(IPMIB_FOLLOW_RECEIVE_ADDRESSES), "");
    const auto listed = [&] {
        Receive rows;
        for (const auto &link : space.json("ip -j link show")) {
            if (link["link_type"] == "ether") {
                rows.emplace(link["ifindex"].get<std::uint32_t>(), link["address"]);
                rows.emplace(link["ifindex"].get<std::uint32_t>(), link["broadcast"]);
            }
        }
        for (const auto &link : space.json("ip -j maddr show")) {
            for (const auto &group : link["maddr"]) {
                if (group.contains("link")) {
                    rows.emplace(link["ifindex"].get<std::uint32_t>(), group["link"]);
                }
            }
        }
        return rows;
    };
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return receiveAddressesOf(platform) == listed();
    }));
    const std::uint32_t v0 = space.json("ip -j link show dev v0")[0]["ifindex"];
    EXPECT_TRUE(receiveAddressesOf(platform).contains({v0, "33:33:00:00:12:34"}));
    space.run("ip maddr del 33:33:00:00:12:34 dev v0; ip link set v1 address 02:00:00:00:00:08");
    EXPECT_TRUE(platform.waitUntil([&] {
        platform->beginPacket();
        return receiveAddressesOf(platform) == listed();
    }));
}

} // namespace
