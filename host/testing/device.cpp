// SPDX-License-Identifier: BSD-3-Clause
// Devices from small pools, so that equal addresses, neighbouring keys and empty tables come up often.
#include "device.h"

#include "../tree_check.h"

#include <scripted/world.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace ipmib::host::testing
{
namespace
{

using scripted::world;

const std::vector<std::uint32_t> interfacePool = {1, 2, 3, 7, 255, 256, 300, INT32_MAX};
const char *const globalPool[] = {"::1",
                                  "2001:db8::",
                                  "2001:db8::1",
                                  "2001:db8::2",
                                  "2001:db8:0:1::",
                                  "2001:db8:0:1::ff",
                                  "fc00::1",
                                  "fdff:ffff::ffff",
                                  "fec0::",
                                  "ff02::1",
                                  "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"};
const char *const linkLocalPool[] = {"fe80::1", "fe80::2", "fe80::ffff", "fe80:0:0:1::", "febf:ffff::"};
const char *const prefixPool[] = {"::", "2001:db8::", "2001:db8:0:1::", "fc00::", "ff00::"};
const std::uint32_t lengthPool[] = {0, 7, 64, 127, 128};

constexpr std::uint32_t linkLocalLength = 10;

bool chance(Random &random, unsigned outOf)
{
    return random() % outOf == 0;
}

// Settings that the syntax of the router advertisement table allows.
NdIfConfigInfo routerSettings()
{
    NdIfConfigInfo settings = {};
    settings.max_interval_s = 600;
    settings.min_interval_s = 200;
    return settings;
}

NeighbourEntry reachable(std::uint32_t ifIndex, const char *address)
{
    NeighbourEntry entry = scripted::neighbour(ifIndex, address);
    entry.type = ipmib_be32(2);
    entry.state = ipmib_be32(1);
    return entry;
}

void addInterface(Random &random, std::uint32_t ifIndex)
{
    scripted::World &device = world();
    device.interfaces.insert(ifIndex);
    device.ipv4Stat[ifIndex] = {};
    device.ipv6Stat[ifIndex] = {};
    if (!chance(random, 3)) {
        device.identifiers[ifIndex] = {};
    }
    if (!chance(random, 3)) {
        device.ndConfig[ifIndex] = routerSettings();
    }
    if (!chance(random, 3)) {
        device.linkLocal.insert(ifIndex);
    }
    if (!chance(random, 3)) {
        device.linkLocalAddresses[ifIndex] = scripted::address(ifIndex, pick(random, linkLocalPool));
    }
    for (const char *address : globalPool) {
        if (chance(random, 4)) {
            device.neighbours.push_back(reachable(ifIndex, address));
        }
        if (chance(random, 6)) {
            device.gateways.push_back(scripted::gateway(ifIndex, address));
        }
    }
    for (const char *address : linkLocalPool) {
        if (chance(random, 3)) {
            device.neighbours.push_back(reachable(ifIndex, address));
        }
        if (chance(random, 3)) {
            device.gateways.push_back(scripted::gateway(ifIndex, address));
        }
    }
    for (const char *prefix : prefixPool) {
        for (const std::uint32_t length : lengthPool) {
            if (chance(random, 10)) {
                device.prefixes.push_back(scripted::prefix(ifIndex, prefix, length));
            }
        }
    }
}

// --- The rows, as instances

using Rows = std::vector<Identifier>;

Identifier join(std::initializer_list<Identifier> parts)
{
    Identifier all;
    for (const Identifier &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

// The octets of an address with their length, with its zone when it is link-local; in front of them the type.
Identifier typedAddress(const std::uint8_t *address, std::uint32_t ifIndex)
{
    const bool isLinkLocal = address[0] == 0xFE && (address[1] & 0xC0) == 0x80;
    Identifier part{isLinkLocal ? 4u : 2u, isLinkLocal ? 20u : 16u};
    part.insert(part.end(), address, address + 16);
    for (int shift = 24; isLinkLocal && shift >= 0; shift -= 8) {
        part.push_back(ifIndex >> shift & 0xFF);
    }
    return part;
}

template <typename Key, typename Value>
Rows byInterface(const std::map<Key, Value> &map)
{
    Rows rows;
    for (const auto &[ifIndex, value] : map) {
        rows.push_back({ifIndex});
    }
    return rows;
}

Rows interfaceStatistics()
{
    Rows rows;
    for (const std::uint32_t ifIndex : world().interfaces) {
        rows.push_back({1, ifIndex});
        rows.push_back({2, ifIndex});
    }
    return rows;
}

Rows prefixes()
{
    Rows rows;
    for (const FullPrefixRecord &prefix : world().prefixes) {
        const std::uint32_t ifIndex = ipmib_be32_get(prefix.if_index);
        rows.push_back(join({{ifIndex}, typedAddress(prefix.prefix, ifIndex), {ipmib_be32_get(prefix.length)}}));
    }
    for (const std::uint32_t ifIndex : world().linkLocal) {
        const std::uint8_t linkLocal[16] = {0xFE, 0x80};
        rows.push_back(join({{ifIndex}, typedAddress(linkLocal, ifIndex), {linkLocalLength}}));
    }
    return rows;
}

Rows addresses()
{
    Rows rows;
    for (const FullAddressRecord &address : world().addresses) {
        rows.push_back(typedAddress(address.address, address.if_index));
    }
    for (const auto &[ifIndex, address] : world().linkLocalAddresses) {
        rows.push_back(typedAddress(address.address, ifIndex));
    }
    return rows;
}

Rows neighbours()
{
    Rows rows;
    for (const NeighbourEntry &neighbour : world().neighbours) {
        const std::uint32_t ifIndex = ipmib_be32_get(neighbour.if_index);
        rows.push_back(join({{ifIndex}, typedAddress(neighbour.address, ifIndex)}));
    }
    return rows;
}

Rows routers()
{
    Rows rows;
    for (const GatewayRecord &gateway : world().gateways) {
        const std::uint32_t ifIndex = ipmib_be32_get(gateway.if_index);
        rows.push_back(join({typedAddress(gateway.address, ifIndex), {ifIndex}}));
    }
    return rows;
}

Rows icmpTypes()
{
    static constexpr std::uint32_t served[] = {1,   2,   3,   4,   128, 129, 130, 131, 132, 133, 134,
                                               135, 136, 137, 138, 139, 140, 143, 144, 145, 200};
    Rows rows;
    for (const std::uint32_t type : served) {
        rows.push_back({2, type});
    }
    return rows;
}

// By the table's place under mib-2.
Rows rowsOf(const Identifier &column)
{
    const Identifier place(column.begin() + 6, column.end());
    const auto isIn = [&place](const Identifier &table) { return isWithin(place, table); };
    return isIn({4, 30})      ? byInterface(world().identifiers)
           : isIn({4, 31, 1}) ? Rows{{2}}
           : isIn({4, 31, 3}) ? interfaceStatistics()
           : isIn({4, 32})    ? prefixes()
           : isIn({4, 34})    ? addresses()
           : isIn({4, 35})    ? neighbours()
           : isIn({4, 37})    ? routers()
           : isIn({4, 39})    ? byInterface(world().ndConfig)
           : isIn({5, 29})    ? Rows{{2}}
           : isIn({5, 30})    ? icmpTypes()
                              : Rows{{0}}; // scalars
}

void collect(const MibTreeNode &node, Identifier name, Columns &columns)
{
    name.push_back(node.ulSubId);
    if (isServed(node)) {
        columns.push_back(name);
    }
    for (const MibTreeNode *child = node.pstFirstChild; child; child = child->pstNextSibling) {
        collect(*child, name, columns);
    }
}

} // namespace

Columns servedColumns(const MibTreeNode &root)
{
    Columns columns;
    collect(root, {}, columns);
    return columns;
}

void makeRandomDevice(Random &random)
{
    scripted::newWorld();
    world().systemStat = Ip6MibStat{};
    for (const std::uint32_t ifIndex : interfacePool) {
        if (chance(random, 2)) {
            addInterface(random, ifIndex);
        }
    }
    for (const char *address : globalPool) {
        if (!world().interfaces.empty() && chance(random, 2)) {
            world().addresses.push_back(scripted::address(*world().interfaces.begin(), address));
        }
    }
}

Instances instancesOfDevice(const Columns &columns)
{
    std::vector<Identifier> instances;
    for (const Identifier &column : columns) {
        for (const Identifier &row : rowsOf(column)) {
            instances.push_back(join({column, row}));
        }
    }
    return {columns, instances};
}

bool isLenient(OidView name)
{
    static const Identifier tables[] = {
        {1, 3, 6, 1, 2, 1, 4, 32}, {1, 3, 6, 1, 2, 1, 4, 35}, {1, 3, 6, 1, 2, 1, 4, 37}};
    return std::ranges::any_of(tables, [name](const Identifier &table) { return isWithin(name, table); });
}

} // namespace ipmib::host::testing
