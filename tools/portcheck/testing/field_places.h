// SPDX-License-Identifier: BSD-3-Clause
// Every field that a platform fills, with its place in its record: what mistakes are made in.
#pragma once

#include "fields.h"

#include <ipmib/records.h>

#include <cstddef>
#include <type_traits>

namespace ipmib::portcheck
{

struct FieldPlace {
    const char *record;
    const char *field; // as it is reported
    std::size_t offset;
    std::size_t size;
    bool isBigEndian;
};

#define PLACE_IN(type, name)                                                                                           \
    FieldPlace{#type, #name, offsetof(type, name), sizeof(type::name), std::is_same_v<decltype(type::name), IpmibBe32>},
#define ADDRESS(name, words)       PLACE_IN(FullAddressRecord, name)
#define PREFIX(name, words)        PLACE_IN(FullPrefixRecord, name)
#define NEIGHBOUR(name, words)     PLACE_IN(NeighbourEntry, name)
#define ROUTER(name, words)        PLACE_IN(GatewayRecord, name)
#define CONFIGURATION(name, words) PLACE_IN(NdIfConfigInfo, name)
#define IPV6(name, words)          PLACE_IN(Ip6MibStat, name)
#define IPV4(name, words)          PLACE_IN(IpMibIfStat, name)

inline constexpr FieldPlace fieldPlaces[] = {
    IPMIB_ADDRESS_FIELDS(ADDRESS) IPMIB_PREFIX_FIELDS(PREFIX) IPMIB_NEIGHBOUR_FIELDS(NEIGHBOUR)
        IPMIB_ROUTER_FIELDS(ROUTER) IPMIB_CONFIGURATION_FIELDS(CONFIGURATION) IPMIB_IPV6_COUNTER_FIELDS(IPV6)
            IPMIB_IPV4_COUNTER_FIELDS(IPV4)
    // Counters of one kind are alike.
    {"Icmp6MibStat", "in_msgs", 4 * ICMP6_STAT_IN_MSGS, 4, false},
    {"Icmp6MibStat", "out_msgs", 4 * ICMP6_STAT_OUT_MSGS, 4, false},
    {"Icmp6MibStat", "in_error_1", 4 * ICMP6_STAT_IN_ERROR_1, 4, false},
    {"Icmp6MibStat", "in_type_128", 4 * (ICMP6_STAT_IN_TYPE + 128), 4, false},
    {"Icmp6MibStat", "out_type_129", 4 * (ICMP6_STAT_OUT_TYPE + 129), 4, false},
    // What is answered without a record.
    {"ifIndex", "ifIndex", 0, 4, false},
    {"identifier", "identifier", 0, 8, false},
    {"mtu", "mtu", 0, 4, false},
    {"hopLimit", "hop limit", 0, 4, false},
};

#undef PLACE_IN
#undef ADDRESS
#undef PREFIX
#undef NEIGHBOUR
#undef ROUTER
#undef CONFIGURATION
#undef IPV6
#undef IPV4

} // namespace ipmib::portcheck
