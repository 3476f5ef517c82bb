// SPDX-License-Identifier: BSD-3-Clause
// Neighbours as the kernel tells them.
#include "neighbours/kernel_neighbours.h"

#include "core/attributes.h"
#include "core/uptime.h"

#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ipmib::platform
{
namespace
{

NeighbourState stateOf(std::uint16_t nud)
{
    switch (nud) {
    case NUD_REACHABLE:
    case NUD_PERMANENT:
    case NUD_NOARP: // valid without ever being asked for
        return NeighbourState::reachable;
    case NUD_STALE:
        return NeighbourState::stale;
    case NUD_DELAY:
        return NeighbourState::delay;
    case NUD_PROBE:
        return NeighbourState::probe;
    case NUD_FAILED:
        return NeighbourState::invalid;
    case NUD_INCOMPLETE:
        return NeighbourState::incomplete;
    default:
        return NeighbourState::unknown;
    }
}

// An entry without a state is about to go. One that needs no resolution belongs to a multicast group, to the loopback
// or to a link without addresses, unless a routing daemon put it there.
bool isNeighbour(const ndmsg &header)
{
    if ((header.ndm_flags & NTF_EXT_LEARNED) != 0) {
        return true;
    }
    return header.ndm_state != NUD_NONE && (header.ndm_state & NUD_NOARP) == 0;
}

// The kernel says how many clock ticks ago.
std::uint32_t lastUpdated(const Attributes<NDA_MAX> &attributes, std::uint64_t nowMs)
{
    static const auto ticksPerSecond = static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
    const auto times = attributes.get<nda_cacheinfo>(NDA_CACHEINFO);
    const std::uint64_t agoMs = times ? times->ndm_updated * std::uint64_t{1'000} / ticksPerSecond : 0;
    return static_cast<std::uint32_t>((nowMs - std::min(agoMs, nowMs)) / 1'000);
}

} // namespace

std::size_t addressSize(std::uint8_t family)
{
    return family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr);
}

NeighbourNews readNeighbour(const nlmsghdr &message, std::uint8_t family, std::uint64_t nowMs, Neighbour &neighbour)
{
    if ((message.nlmsg_type != RTM_NEWNEIGH && message.nlmsg_type != RTM_DELNEIGH) ||
        message.nlmsg_len < mnl_nlmsg_size(sizeof(ndmsg))) {
        return NeighbourNews::ignored;
    }
    const auto &header = *static_cast<const ndmsg *>(mnl_nlmsg_get_payload(&message));
    const Attributes<NDA_MAX> attributes(message, sizeof(ndmsg));
    // Shorter addresses stand at the end, as numbers do.
    std::uint8_t address[sizeof(in6_addr)] = {};
    const std::size_t size = addressSize(family);
    // The group also announces neighbours of other families, forwarding entries of bridges, and addresses that we
    // answer for in place of others: a proxied address is no neighbour, and its entry stands beside that of a
    // neighbour.
    if (header.ndm_family != family || header.ndm_ifindex <= 0 || (header.ndm_flags & NTF_PROXY) != 0 ||
        attributes.copyBytes(NDA_DST, address + sizeof address - size, size) != size) {
        return NeighbourNews::ignored;
    }
    const NeighbourKey key = NeighbourKey::of(static_cast<std::uint32_t>(header.ndm_ifindex), address);
    neighbour = Neighbour{};
    neighbour.ifIndex = key.ifIndex;
    neighbour.high = key.high;
    neighbour.low = key.low;
    if (message.nlmsg_type == RTM_DELNEIGH || !isNeighbour(header)) {
        return NeighbourNews::gone;
    }
    neighbour.state = stateOf(header.ndm_state);
    neighbour.type = (header.ndm_state & NUD_PERMANENT) != 0 ? NeighbourType::fixed : NeighbourType::dynamic;
    neighbour.lastUpdatedS = lastUpdated(attributes, nowMs);
    const nlattr *linkLayer = attributes[NDA_LLADDR];
    if (linkLayer != nullptr && mnl_attr_get_payload_len(linkLayer) == sizeof neighbour.linkLayer) {
        std::memcpy(neighbour.linkLayer, mnl_attr_get_payload(linkLayer), sizeof neighbour.linkLayer);
    }
    return NeighbourNews::present;
}

NeighbourNews KernelNeighbours::ask(const NeighbourKey &key, Neighbour &neighbour)
{
    RtnetlinkRequest request(RTM_GETNEIGH, 0);
    ndmsg &header = request.family<ndmsg>();
    header.ndm_family = family_;
    header.ndm_ifindex = static_cast<int>(key.ifIndex);
    std::uint8_t address[16];
    key.copyAddress(address);
    const std::size_t size = addressSize(family_);
    mnl_attr_put(request.message(), NDA_DST, size, address + sizeof address - size);
    NeighbourNews news = NeighbourNews::ignored;
    ++questions_;
    const int error = socket_.ask(request, [&](const nlmsghdr &message) {
        news = readNeighbour(message, family_, monotonicMilliseconds(), neighbour);
    });
    return error == ENOENT || error == ENODEV ? NeighbourNews::gone : news;
}

std::optional<NeighbourEntryCounts> KernelNeighbours::counts()
{
    RtnetlinkRequest request(RTM_GETNEIGHTBL, NLM_F_DUMP);
    request.family<ndtmsg>().ndtm_family = family_;
    if (!socket_.send(request)) {
        return std::nullopt;
    }
    std::optional<NeighbourEntryCounts> counts;
    // One message has the statistics, the others are about interfaces. All are there once the request is sent.
    while (socket_.read([&](const nlmsghdr &message) {
        const Attributes<NDTA_MAX> attributes(message, sizeof(ndtmsg));
        if (const auto statistics = attributes.get<ndt_stats>(NDTA_STATS)) {
            counts = {statistics->ndts_allocs, statistics->ndts_destroys, statistics->ndts_hash_grows};
        }
    }) == Rtnetlink::Read::rows) {
    }
    return counts;
}

} // namespace ipmib::platform
