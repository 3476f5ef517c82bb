// SPDX-License-Identifier: BSD-3-Clause
// Records as lists of named values: what --rows prints, and what is compared when two calls speak of one row.
#pragma once

#include <ipmib/records.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ipmib::portcheck
{

struct Item {
    std::string name;
    std::string text;         // as a person reads it, without spaces
    std::uint64_t number = 0; // 0 where it is none
    unsigned bytes = 0;       // of the number, 0 where it is none
    bool passes = false;      // with time: seconds
};

using Items = std::vector<Item>;

Items itemsOf(const FullAddressRecord &record);
Items itemsOf(const FullPrefixRecord &record);
Items itemsOf(const NeighbourEntry &entry);
Items itemsOf(const GatewayRecord &record);
Items itemsOf(const NdIfConfigInfo &info);
Items itemsOf(const Ip6MibStat &stat);
Items itemsOf(const IpMibIfStat &stat);
Items itemsOf(const Icmp6MibStat &stat); // with the types that were counted

// "if_index=2 state=reachable"
std::string textOf(const Items &items);

// The first value that differs, as "state is reachable, and then stale"; "" when there is none. Seconds may pass.
std::string differenceOf(const Items &before, const Items &after);

// "2001:db8::1"; bytes with colons, as of link-layer addresses.
std::string addressText(const std::uint8_t *address);
// "2001:db8::/64"
std::string prefixText(const std::uint8_t *prefix, std::uint32_t length);
std::string bytesText(const std::uint8_t *bytes, std::size_t count);

} // namespace ipmib::portcheck
