// SPDX-License-Identifier: BSD-3-Clause
// The interfaces of this network namespace, by ifIndex.
#include "links/link_table.h"

#include "core/attributes.h"
#include "core/boot_time.h"

#include <linux/if.h>
#include <linux/if_link.h>

#include <string_view>

namespace ipmib::platform
{

namespace
{

// Of a pair of interfaces each names the other one, and neither runs over it.
bool isPaired(std::string_view kind)
{
    return kind == "veth" || kind == "vxcan" || kind == "netkit";
}

// One in another network namespace is none of ours.
std::uint32_t lowerOf(const Attributes<IFLA_MAX> &attributes, std::uint32_t ifIndex)
{
    const auto lower = attributes.get<std::uint32_t>(IFLA_LINK).value_or(0);
    return lower == ifIndex || attributes[IFLA_LINK_NETNSID] != nullptr ? 0 : lower;
}

} // namespace

bool parseLink(const nlmsghdr &message, Link &link)
{
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(ifinfomsg))) {
        return false;
    }
    const auto &info = *static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(&message));
    // Bridges announce their ports in the same group, in a family of their own.
    if (info.ifi_family != AF_UNSPEC || info.ifi_index <= 0) {
        return false;
    }
    const Attributes<IFLA_MAX> attributes(message, sizeof(ifinfomsg));
    // Wireless events come in the same guise, and say of the link no more than its name.
    if (attributes[IFLA_WIRELESS] != nullptr) {
        return false;
    }
    link = Link{};
    link.ifIndex = static_cast<std::uint32_t>(info.ifi_index);
    link.flags = info.ifi_flags;
    link.hardware = info.ifi_type;
    link.mtu = attributes.get<std::uint32_t>(IFLA_MTU).value_or(0);
    link.lower = lowerOf(attributes, link.ifIndex);
    link.master = attributes.get<std::uint32_t>(IFLA_MASTER).value_or(0);
    link.addressSize = static_cast<std::uint8_t>(attributes.copyBytes(IFLA_ADDRESS, link.address, sizeof link.address));
    link.operState = attributes.get<std::uint8_t>(IFLA_OPERSTATE).value_or(IF_OPER_UNKNOWN);
    link.promiscuous = attributes.get<std::uint32_t>(IFLA_PROMISCUITY).value_or(0) != 0;
    attributes.copyString(IFLA_IFNAME, link.name);
    attributes.copyString(IFLA_IFALIAS, link.alias);
    Attributes<IFLA_INFO_MAX>(attributes[IFLA_LINKINFO]).copyString(IFLA_INFO_KIND, link.kind);
    if (isPaired(link.kind)) {
        link.lower = 0;
    }
    return true;
}

RtnetlinkRequest LinkTable::dump(std::size_t) const
{
    RtnetlinkRequest request(RTM_GETLINK, NLM_F_DUMP);
    request.family<ifinfomsg>().ifi_family = AF_UNSPEC;
    mnl_attr_put_u32(request.message(), IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    return request;
}

void LinkTable::rebuildWith(const nlmsghdr &message)
{
    Link link;
    if (message.nlmsg_type == RTM_NEWLINK && parseLink(message, link)) {
        const Link *before = links_.find(link.ifIndex);
        complete(link, before);
        fresh_.put(link);
    }
}

void LinkTable::commitRebuild()
{
    links_.swap(fresh_);
    bool sameRows = links_.size() == fresh_.size();
    fresh_.each([&](const Link &before) {
        const Link *now = links_.find(before.ifIndex);
        sameRows = sameRows && now != nullptr;
        tell(before, now);
    });
    fresh_.clear();
    if (filled_ && !sameRows) {
        rowsChangedMs_ = monotonicMilliseconds();
    }
    ++version_;
    filled_ = true;
}

void LinkTable::apply(const nlmsghdr &message)
{
    Link link;
    if (!parseLink(message, link)) {
        return;
    }
    const Link *found = links_.find(link.ifIndex);
    const bool known = found != nullptr;
    const Link before = known ? *found : Link{};
    if (message.nlmsg_type == RTM_NEWLINK) {
        complete(link, found);
        links_.put(link);
        if (known) {
            tell(before, &link);
        } else {
            rowsChangedMs_ = link.changedMs;
        }
    } else if (message.nlmsg_type == RTM_DELLINK && links_.erase(link.ifIndex)) {
        rowsChangedMs_ = monotonicMilliseconds();
        ++version_;
        tell(before, nullptr);
    }
}

void LinkTable::complete(Link &link, const Link *before)
{
    link.version = ++version_;
    if (before != nullptr && before->operState == link.operState) {
        link.changedMs = before->changedMs;
    } else {
        link.changedMs = filled_ ? monotonicMilliseconds() : 0;
    }
}

void LinkTable::tell(const Link &before, const Link *now)
{
    if (now != nullptr && (before.lower != now->lower || before.master != now->master)) {
        relationsChangedMs_ = monotonicMilliseconds();
    }
    const bool wasUp = (before.flags & IFF_UP) != 0;
    const bool isUp = now != nullptr && (now->flags & IFF_UP) != 0;
    if (down_ && (now == nullptr || (wasUp && !isUp))) {
        down_(before.ifIndex);
    }
    constexpr unsigned working = IFF_UP | IFF_RUNNING;
    if (up_ && now != nullptr && (before.flags & working) != working && (now->flags & working) == working) {
        up_(before.ifIndex);
    }
}

} // namespace ipmib::platform
