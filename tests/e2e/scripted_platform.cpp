// SPDX-License-Identifier: BSD-3-Clause
// A device that never changes, as a platform library: a few rows in every table.
//
// Options: --log-packets writes a line for each packet that begins; --refuse makes the start fail; --wait-for=PIPE has
// the start and each reload wait until somebody has written to the pipe; --routes-read-after=NUMBER has routes read
// when somebody has asked so often whether they are, and --neighbours-current-after=NUMBER has neighbours come only
// then.

#include "e2e/scripted_interfaces.h"
#include "e2e/scripted_ipv4.h"
#include "e2e/scripted_routes.h"
#include "scripted/call_log.h"
#include "scripted/world.h"

#include <ipmib/platform_hooks.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace
{

using namespace ipmib::scripted;

const IpmibPlatformHost *host = nullptr;
bool logsPackets = false;
unsigned long neighboursAwaited = 0;
std::string pipeToWaitFor;

void waitForPipe()
{
    if (!pipeToWaitFor.empty()) {
        std::string line;
        std::getline(std::ifstream(pipeToWaitFor), line);
    }
}

void fillInterfaces(World &world)
{
    for (std::uint32_t ifIndex = 1; ifIndex <= 3; ++ifIndex) {
        world.interfaces.insert(ifIndex);
        world.identifiers[ifIndex] = {2, 0, 0, 0xFF, 0xFE, 0, 0, static_cast<std::uint8_t>(ifIndex)};
        world.mainLinkLocal.insert(ifIndex);
        world.linkLocal.insert(ifIndex);
        world.mtu[ifIndex] = 1500;
        NdIfConfigInfo advertisements{};
        advertisements.retransmit_ms = 1000;
        advertisements.reachable_ms = 30000;
        advertisements.max_interval_s = 600;
        advertisements.min_interval_s = 200;
        advertisements.default_lifetime_s = 1800;
        advertisements.flags = ND_FLAG_SEND_ADVERTS | ND_FLAG_LIFETIME_VALID;
        world.ndConfig[ifIndex] = advertisements;
    }
}

// Counters beyond 32 bits, so that a walk meets Counter64 values that no Counter32 holds.
void fillCounters(World &world)
{
    Ip6MibStat ipv6{};
    ipv6.in_receives = 0x1'0000'0007;
    ipv6.in_octets = 0x5'0000'0008;
    world.systemStat = ipv6;
    for (const std::uint32_t ifIndex : world.interfaces) {
        ipv6.out_octets = ifIndex;
        world.ipv6Stat[ifIndex] = ipv6;
        IpMibIfStat ipv4{};
        ipv4.in_receives = 100 + ifIndex;
        world.ipv4Stat[ifIndex] = ipv4;
    }
    world.icmpStat.counter[ICMP6_STAT_IN_MSGS] = 12;
    world.icmpStat.counter[ICMP6_STAT_IN_TYPE + 128] = 5;
    world.icmpStat.counter[ICMP6_STAT_OUT_TYPE + 129] = 5;
}

void fillAddresses(World &world)
{
    for (const char *text : {"2001:db8::1", "2001:db8:0:1::1"}) {
        FullAddressRecord global = address(2, text);
        global.prefix_length = 64;
        global.origin = 4;
        world.addresses.push_back(global);
    }
    for (const std::uint32_t ifIndex : world.interfaces) {
        world.linkLocalAddresses[ifIndex] = address(ifIndex, "fe80::1");
    }
    for (const char *text : {"2001:db8::", "2001:db8:0:1::"}) {
        FullPrefixRecord onLink = prefix(2, text, 64);
        onLink.origin = ipmib_be32(1);
        onLink.valid_s = onLink.preferred_s = ipmib_be32(0xFFFFFFFF);
        world.prefixes.push_back(onLink);
    }
}

void fillNeighbours(World &world)
{
    for (const char *text : {"2001:db8::2", "2001:db8::3", "fe80::2"}) {
        NeighbourEntry entry = neighbour(2, text);
        std::memcpy(entry.link_layer, "\x02\0\0\0\0\x02", sizeof entry.link_layer);
        entry.type = ipmib_be32(2);
        entry.state = ipmib_be32(1);
        world.neighbours.push_back(entry);
    }
    GatewayRecord router = gateway(2, "fe80::2");
    router.lifetime_s = ipmib_be32(1800);
    world.gateways.push_back(router);
}

int start(const IpmibPlatformHost *given, char *error, size_t capacity)
{
    for (size_t i = 0; i < given->option_count; ++i) {
        const char *name = given->options[i].name;
        if (std::strcmp(name, "log-packets") == 0) {
            logsPackets = true;
        } else if (std::strcmp(name, "vanished-interface") == 0) {
            ipmib::e2e::letVanish(static_cast<std::uint32_t>(std::atoi(given->options[i].value)));
        } else if (std::strcmp(name, "routes-read-after") == 0) {
            ipmib::e2e::readRoutesAfter(std::strtoul(given->options[i].value, nullptr, 10));
        } else if (std::strcmp(name, "neighbours-current-after") == 0) {
            neighboursAwaited = std::strtoul(given->options[i].value, nullptr, 10);
        } else if (std::strcmp(name, "wait-for") == 0) {
            pipeToWaitFor = given->options[i].value;
            waitForPipe();
        } else if (std::strcmp(name, "refuse") == 0) {
            std::snprintf(error, capacity, "told to refuse");
            return 1;
        } else {
            std::snprintf(error, capacity, "unknown option --%s", name);
            return IPMIB_WRONG_OPTION + static_cast<int>(i);
        }
    }
    host = given;
    newWorld();
    fillInterfaces(world());
    fillCounters(world());
    fillAddresses(world());
    if (neighboursAwaited == 0) {
        fillNeighbours(world());
    }
    world().secondsSinceBoot = 1000;
    return 0;
}

void stop()
{
    for (const std::string &complaint : complaints()) {
        host->log(IPMIB_LOG_ERR, ("complaint: " + complaint).c_str());
    }
    host->log(IPMIB_LOG_INFO, "scripted platform: stopped");
}

int descriptor()
{
    return -1;
}

void dispatch() {}

void beginPacket()
{
    forgetCalls();
    if (logsPackets) {
        host->log(IPMIB_LOG_INFO, "scripted platform: a packet begins");
    }
}

std::uint32_t areCurrent(std::uint32_t rows)
{
    if ((rows & IPMIB_FOLLOW_NEIGHBOURS) == 0 || neighboursAwaited == 0) {
        return 1;
    }
    if (--neighboursAwaited == 0) {
        fillNeighbours(world());
    }
    return 0;
}

void reload()
{
    host->log(IPMIB_LOG_INFO, "scripted platform: reads its configuration again");
    waitForPipe();
}

} // namespace

extern "C" {
extern __attribute__((visibility("default"))) const IpmibPlatformHooks ipmib_platform_hooks;
const IpmibPlatformHooks ipmib_platform_hooks = [] {
    IpmibPlatformHooks hooks{};
    hooks.size = sizeof(IpmibPlatformHooks);
    hooks.start = start;
    hooks.stop = stop;
    hooks.descriptor = descriptor;
    hooks.dispatch = dispatch;
    hooks.begin_packet = beginPacket;
    hooks.reload = reload;
    hooks.interfaces = &ipmib::e2e::scriptedInterfaces;
    hooks.ipv4 = &ipmib::e2e::scriptedIpv4;
    hooks.routes = &ipmib::e2e::scriptedRoutes;
    hooks.are_current = areCurrent;
    return hooks;
}();
}
