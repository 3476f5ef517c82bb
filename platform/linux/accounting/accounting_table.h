// SPDX-License-Identifier: BSD-3-Clause
// The packet filter's table that counts IPv4 traffic by interface: what stands in it, and the messages that make it.
#pragma once

#include "accounting/netfilter_socket.h"

#include <ipmib/records.h>

#include <cstdint>
#include <optional>

namespace ipmib::platform
{

inline constexpr char accountingTableName[] = "ipmib_accounting";

// One set of the table: interface indexes, each with a counter, and where its two numbers belong in an interface's
// record. Octets are those of the IP datagrams, without the link's headers.
struct CountedSet {
    const char *name;
    std::uint64_t IpMibIfStat::*packets;
    std::uint64_t IpMibIfStat::*octets; // null when the record does not tell
};

inline constexpr CountedSet countedSets[] = {
    {"in", &IpMibIfStat::in_receives, &IpMibIfStat::in_octets},
    {"in_multicast", &IpMibIfStat::in_mcast_pkts, nullptr},
    {"requested", &IpMibIfStat::out_requests, nullptr},
    {"forwarded", &IpMibIfStat::out_forwarded, nullptr},
    {"out", &IpMibIfStat::out_transmits, &IpMibIfStat::out_octets},
    {"out_multicast", &IpMibIfStat::out_mcast_pkts, nullptr},
};

// Makes the table, in the place of one of this name that is there. An owned table belongs to the socket that made it:
// nobody else changes or flushes it, and the kernel removes it when that socket is closed, however its process ends.
// A set size of 0 leaves it to the kernel, which then grows the sets as they fill, up to 65535 interfaces.
void addTable(NftMessages &batch, bool owned, std::uint32_t setSize);
void removeTable(NftMessages &batch);
// The part of addTable that says what is counted where.
void addAccountingChains(NftMessages &batch);
// Removes an interface from a set that holds it.
void removeElement(NftMessages &batch, const CountedSet &set, std::uint32_t ifIndex);

// Both are refused with ENOENT where there is nothing.
void askForTable(NftMessages &questions);
void askForElement(NftMessages &questions, const CountedSet &set, std::uint32_t ifIndex);

struct Traffic {
    std::uint64_t packets = 0;
    std::uint64_t octets = 0;
};
// Reads the answer to askForElement; nothing when it holds no counter, whatever else it is.
std::optional<Traffic> trafficOf(const nlmsghdr &answer);

} // namespace ipmib::platform
