// SPDX-License-Identifier: BSD-3-Clause
// The interfaces of this network namespace, by ifIndex.
#include "links/link_table.h"

#include "core/attributes.h"
#include "core/uptime.h"
#include "links/interface_row.h"

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

RtnetlinkRequest LinkTable::dump(std::size_t)
{
    RtnetlinkRequest request(RTM_GETLINK, NLM_F_DUMP);
    request.family<ifinfomsg>().ifi_family = AF_UNSPEC;
    mnl_attr_put_u32(request.message(), IFLA_EXT_MASK, RTEXT_FILTER_SKIP_STATS);
    return request;
}

void LinkTable::applyDump(const nlmsghdr &message, Generation generation)
{
    Link link;
    if (message.nlmsg_type == RTM_NEWLINK && parseLink(message, link)) {
        put(link, generation);
    }
}

bool LinkTable::sweep(Generation generation)
{
    for (const Link &gone : links_.sweep(generation)) {
        reportLoss(gone);
    }
    filled_ = true;
    return true;
}

void LinkTable::applyChange(const nlmsghdr &message)
{
    Link link;
    if (!parseLink(message, link)) {
        return;
    }
    if (message.nlmsg_type == RTM_NEWLINK) {
        put(link, 0);
    } else if (const Link *known = links_.find(link.ifIndex); message.nlmsg_type == RTM_DELLINK && known != nullptr) {
        const Link gone = *known;
        links_.erase(gone.ifIndex);
        reportLoss(gone);
    }
}

void LinkTable::put(Link link, Generation generation)
{
    const Link *known = links_.find(link.ifIndex);
    complete(link, known);
    list_.put(link.ifIndex, typeCode(link));
    if (known == nullptr) {
        rowsChangedMs_ = filled_ ? link.changedMs : 0;
        links_.put(link, generation);
        callChanged(nullptr, &link);
        return;
    }
    const Link before = *known;
    links_.put(link, generation);
    reportChange(before, &link);
}

void LinkTable::reportLoss(const Link &gone)
{
    list_.erase(gone.ifIndex);
    rowsChangedMs_ = filled_ ? monotonicMilliseconds() : 0;
    ++version_;
    reportChange(gone, nullptr);
}

void LinkTable::callChanged(const Link *before, const Link *now) const
{
    if (changed_ && filled_) {
        changed_(before, now);
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

void LinkTable::reportChange(const Link &before, const Link *now)
{
    if (now != nullptr && (before.lower != now->lower || before.master != now->master)) {
        relationsChangedMs_ = monotonicMilliseconds();
    }
    callChanged(&before, now);
    const bool wasUp = (before.flags & IFF_UP) != 0;
    const bool isUp = now != nullptr && (now->flags & IFF_UP) != 0;
    if (down_ && (now == nullptr || (wasUp && !isUp))) {
        down_(before.ifIndex);
    }
}

} // namespace ipmib::platform
