// SPDX-License-Identifier: BSD-3-Clause
// The device that a test scripts: what each platform service knows and how it answers. Plain data; a service whose data
// a test leaves out fails.
#pragma once

#include <ipmib/message.h>
#include <ipmib/mib_tree.h>
#include <ipmib/platform.h>

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ipmib::scripted
{

struct World {
    // What a service answers that has nothing to say, unless `failing` names it.
    static constexpr std::uint32_t nothingThere = 0x51;

    // By service name: fails with this code whatever else the script says.
    std::map<std::string, std::uint32_t, std::less<>> failing;

    // Results of the service checks, one a call; the last one stays.
    std::deque<std::uint32_t> ipv6Service = {0};
    std::deque<std::uint32_t> ipv4Service = {0};

    // Selected interfaces, whatever the selection; every one of them exists.
    std::set<std::uint32_t> interfaces;
    // IF_IsValidIfIndex where it differs from that.
    std::map<std::uint32_t, std::uint32_t> validity;
    // The walk over the interfaces where it is not simply that of the set: what follows a given one, 0 for none.
    std::function<std::uint32_t(std::uint32_t ifIndex)> nextInterface;
    // No iterator can be opened.
    bool outOfIterators = false;

    std::optional<Ip6MibStat> systemStat;
    std::map<std::uint32_t, Ip6MibStat> ipv6Stat;
    std::map<std::uint32_t, IpMibIfStat> ipv4Stat;
    Icmp6MibStat icmpStat = {};

    std::uint32_t hopLimit = 64;
    std::map<std::uint32_t, NdIfConfigInfo> ndConfig;
    std::map<std::uint32_t, std::array<std::uint8_t, 8>> identifiers;
    std::set<std::uint32_t> mainLinkLocal;
    std::map<std::uint32_t, std::uint32_t> mtu;
    std::vector<NeighbourEntry> neighbours;

    std::vector<FullPrefixRecord> prefixes;
    // An interface's prefixes where they do not simply ascend: what follows a key, the first of them for none; null for
    // none.
    std::function<const FullPrefixRecord *(std::uint32_t ifIndex, const FullPrefixRecord *key)> nextPrefix;
    std::set<std::uint32_t> linkLocal; // interfaces for which IP6Addr_GetLinkLocalAddr succeeds
    std::vector<FullAddressRecord> addresses;
    std::map<std::uint32_t, FullAddressRecord> linkLocalAddresses;
    // Answers of IP6Mib_GetFirstAddrInVrf one by one, where it does not simply give the lowest of `addresses`.
    std::deque<FullAddressRecord> firstAddresses;
    std::vector<GatewayRecord> gateways;
    // How often a next call answers the row at its key once more before it moves on.
    unsigned repeatsKey = 0;

    std::uint32_t secondsSinceBoot = 0;

    // Results of the agent's registration calls.
    std::uint32_t registerTree = 0;
    std::uint32_t deregisterTree = 0;
    std::uint32_t registerCallback = 0;
    std::uint32_t deregisterCallback = 0;
    // The root that was registered last.
    const MibTreeNode *registeredRoot = nullptr;
    // Runs when a module binds its callback.
    std::function<void(MorCallback)> onRegisterCallback;
};

// The world in force. Never destroyed: a module's unload hook runs after the last static object is gone.
World &world();

// Puts an untouched world in force and forgets all calls, complaints and open iterators.
void newWorld();

// Records with their keys set; the rest is zero. Addresses are written as people write them.
NeighbourEntry neighbour(std::uint32_t ifIndex, const char *address);
FullPrefixRecord prefix(std::uint32_t ifIndex, const char *address, std::uint32_t length);
FullAddressRecord address(std::uint32_t ifIndex, const char *address);
GatewayRecord gateway(std::uint32_t ifIndex, const char *address);

} // namespace ipmib::scripted
