// SPDX-License-Identifier: BSD-3-Clause
// Routes that come and go as fast as the kernel takes them: nobody waits for an answer.
#include "route_changes.h"

#include "addresses/packed_address.h"

#include <arpa/inet.h>

namespace ipmib::bench
{

using platform::PackedAddress;

void RouteChanges::ipv4(std::uint16_t type, unsigned from, unsigned count, unsigned hops)
{
    for (unsigned i = from; i < from + count; ++i) {
        const std::uint32_t destination = htonl((20u << 24) + (i << 8));
        const unsigned hop = i % hops;
        const std::uint32_t gateway = htonl((10u << 24) + (hop % interfaces << 16) + hop / interfaces + 2);
        change(type, AF_INET, 24, &destination, &gateway, sizeof destination);
    }
}

void RouteChanges::ipv6(std::uint16_t type, unsigned count, unsigned hops)
{
    for (unsigned i = 0; i < count; ++i) {
        std::uint8_t destination[16];
        PackedAddress{(std::uint64_t{0x2001'1000} << 32) + (std::uint64_t{i} << 16), 0}.copyTo(destination);
        std::uint8_t gateway[16];
        const unsigned hop = i % hops;
        PackedAddress{(std::uint64_t{0xfd00} << 48) + hop % interfaces, hop / interfaces + 2}.copyTo(gateway);
        change(type, AF_INET6, 48, destination, gateway, sizeof destination);
    }
}

void RouteChanges::change(std::uint16_t type, std::uint8_t family, std::uint8_t length, const void *destination,
                          const void *gateway, std::size_t size)
{
    platform::RtnetlinkRequest request(type, type == RTM_NEWROUTE ? NLM_F_CREATE : 0);
    auto &header = request.family<rtmsg>();
    header.rtm_family = family;
    header.rtm_dst_len = length;
    header.rtm_table = RT_TABLE_MAIN;
    header.rtm_protocol = RTPROT_BGP;
    header.rtm_type = RTN_UNICAST;
    mnl_attr_put(request.message(), RTA_DST, size, destination);
    mnl_attr_put(request.message(), RTA_GATEWAY, size, gateway);
    socket_.send(request);
}

} // namespace ipmib::bench
