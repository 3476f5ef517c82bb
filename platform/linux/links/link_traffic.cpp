// SPDX-License-Identifier: BSD-3-Clause
// What a link has carried, whatever the protocol, as of this moment.
#include "links/link_traffic.h"

#include "core/attributes.h"
#include "core/log.h"

#include <algorithm>
#include <cerrno>

namespace ipmib::platform
{

IpmibInterfaceTraffic trafficOf(const rtnl_link_stats64 &stats)
{
    IpmibInterfaceTraffic traffic{};
    traffic.in.octets = stats.rx_bytes;
    // Hardware may have counted a frame as multicast before its driver counts it at all.
    traffic.in.unicast = stats.rx_packets - std::min(stats.multicast, stats.rx_packets);
    traffic.in.multicast = stats.multicast;
    traffic.in.discards = stats.rx_dropped + stats.rx_missed_errors;
    traffic.in.errors = stats.rx_errors;
    traffic.out.octets = stats.tx_bytes;
    traffic.out.unicast = stats.tx_packets;
    traffic.out.discards = stats.tx_dropped;
    traffic.out.errors = stats.tx_errors;
    return traffic;
}

bool LinkTrafficReader::ask(std::uint32_t ifIndex, IpmibInterfaceTraffic &traffic)
{
    RtnetlinkRequest request(RTM_GETSTATS, 0);
    auto &family = request.family<if_stats_msg>();
    family.ifindex = ifIndex;
    family.filter_mask = IFLA_STATS_FILTER_BIT(IFLA_STATS_LINK_64);
    rtnl_link_stats64 stats{};
    bool answered = false;
    ++kernelReads_;
    const int error = socket_.ask(request, [&](const nlmsghdr &message) {
        const Attributes<IFLA_STATS_LINK_64> attributes(message, sizeof(if_stats_msg));
        answered = attributes.copyBytes(IFLA_STATS_LINK_64, &stats, sizeof stats) != 0; // older kernels count less
    });
    if (error != 0 && error != ENODEV) {
        logWarning("netlink: counters of interface %u: %s", ifIndex, socket_.error().c_str());
    }
    if (answered) {
        traffic = trafficOf(stats);
    }
    return answered;
}

const IpmibInterfaceTraffic *LinkTrafficReader::read(std::uint32_t ifIndex)
{
    return readings_.get(ifIndex, [&](IpmibInterfaceTraffic &traffic) { return ask(ifIndex, traffic); });
}

} // namespace ipmib::platform
