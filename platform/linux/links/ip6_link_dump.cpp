// SPDX-License-Identifier: BSD-3-Clause
// IPv6 of the links in the order of their numbers, from a dump that rests between the packets of a walk.
#include "links/ip6_link_dump.h"

#include "core/log.h"

#include <linux/if_link.h>

namespace ipmib::platform
{

bool Ip6LinkDump::begin()
{
    if (!socket_.isOpen() && !socket_.openToLook()) {
        return false;
    }
    RtnetlinkRequest request(RTM_GETLINK, NLM_F_DUMP);
    request.family<ifinfomsg>().ifi_family = AF_INET6;
    return socket_.send(request);
}

bool Ip6LinkDump::giveUp()
{
    if (socket_.errorNumber() != 0) {
        logWarning("netlink: IPv6 of all interfaces: %s", socket_.error().c_str());
    }
    socket_.close();
    usable_ = false;
    before_ = end;
    reached_ = end;
    return false;
}

bool Ip6LinkDump::readOn(const Rtnetlink::Handler &handler)
{
    if (!usable_) {
        return false;
    }
    first_ = reached_ == end;
    if (!first_) {
        socket_.drop(); // which makes the kernel write the next piece
    } else if (!begin()) {
        return giveUp();
    }
    before_ = first_ ? 0 : reached_;
    std::uint32_t last = before_;
    bool inOrder = true;
    const auto result = socket_.look([&](const nlmsghdr &message) {
        if (message.nlmsg_len < mnl_nlmsg_size(sizeof(ifinfomsg))) {
            return;
        }
        const auto &info = *static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(&message));
        const auto ifIndex = static_cast<std::uint32_t>(info.ifi_index);
        inOrder = inOrder && ifIndex > last;
        if (inOrder) {
            last = ifIndex;
            handler(message);
        }
    });
    switch (result) {
    case Rtnetlink::Read::rows:
        reached_ = last;
        return inOrder || giveUp();
    case Rtnetlink::Read::done:
    case Rtnetlink::Read::interrupted: // a link that came or went meanwhile is no reason to read the others again
        socket_.drop();
        reached_ = end;
        return inOrder || giveUp();
    default:
        return giveUp();
    }
}

} // namespace ipmib::platform
