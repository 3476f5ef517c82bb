// SPDX-License-Identifier: BSD-3-Clause
// The main link-local address of a link.
#include "links/link_local.h"

#include "core/attributes.h"

#include <linux/if_addr.h>

namespace ipmib::platform
{

bool isLinkLocal(const Ip6Address &address)
{
    constexpr Ip6Address loopback{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    return (address[0] == 0xFE && (address[1] & 0xC0) == 0x80) || address == loopback;
}

std::optional<Ip6Address> mainLinkLocal(Rtnetlink &socket, std::uint32_t ifIndex)
{
    RtnetlinkRequest request(RTM_GETADDR, NLM_F_DUMP);
    auto &family = request.family<ifaddrmsg>();
    family.ifa_family = AF_INET6;
    family.ifa_index = ifIndex; // a kernel without strict checking sends all addresses
    std::optional<Ip6Address> found;
    socket.ask(request, [&](const nlmsghdr &message) {
        const Attributes<IFA_MAX> attributes(message, sizeof(ifaddrmsg));
        const auto address = attributes.get<Ip6Address>(IFA_ADDRESS);
        if (message.nlmsg_type != RTM_NEWADDR || !address) {
            return;
        }
        const auto &info = *static_cast<const ifaddrmsg *>(mnl_nlmsg_get_payload(&message));
        const std::uint32_t flags = attributes.get<std::uint32_t>(IFA_FLAGS).value_or(info.ifa_flags);
        const bool usable = (flags & (IFA_F_TENTATIVE | IFA_F_DADFAILED)) == 0 || (flags & IFA_F_OPTIMISTIC) != 0;
        if (!found && info.ifa_index == ifIndex && usable && isLinkLocal(*address)) {
            found = address;
        }
    });
    return found;
}

} // namespace ipmib::platform
