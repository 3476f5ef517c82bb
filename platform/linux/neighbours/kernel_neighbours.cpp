// SPDX-License-Identifier: BSD-3-Clause
// Single questions about the kernel's neighbour cache.
#include "neighbours/kernel_neighbours.h"

#include "core/attributes.h"
#include "core/boot_time.h"

#include <linux/neighbour.h>
#include <sys/socket.h>

#include <cerrno>

namespace ipmib::platform
{

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
