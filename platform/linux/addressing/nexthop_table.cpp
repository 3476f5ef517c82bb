// SPDX-License-Identifier: BSD-3-Clause
// The nexthop objects of this network namespace, which routes name instead of a gateway and an interface.
#include "addressing/nexthop_table.h"

#include "core/attributes.h"

#include <arpa/inet.h>
#include <linux/nexthop.h>

namespace ipmib::platform
{

std::uint32_t parseNexthop(const nlmsghdr &message, NexthopObject &nexthop)
{
    if ((message.nlmsg_type != RTM_NEWNEXTHOP && message.nlmsg_type != RTM_DELNEXTHOP) ||
        message.nlmsg_len < mnl_nlmsg_size(sizeof(nhmsg))) {
        return 0;
    }
    const auto &header = *static_cast<const nhmsg *>(mnl_nlmsg_get_payload(&message));
    const Attributes<NHA_MAX> attributes(message, sizeof(nhmsg));
    nexthop = NexthopObject{};
    nexthop.ifIndex = attributes.get<std::uint32_t>(NHA_OIF).value_or(0);
    nexthop.dead = (header.nh_flags & RTNH_F_DEAD) != 0;
    using Bytes = std::array<std::uint8_t, 16>;
    const auto gateway = attributes.get<Bytes>(NHA_GATEWAY);
    nexthop.hasGateway = header.nh_family == AF_INET6 && gateway.has_value();
    if (nexthop.hasGateway) {
        nexthop.gateway = PackedAddress::of(gateway->data());
    }
    if (header.nh_family == AF_INET) {
        nexthop.ipv4Gateway = ntohl(attributes.get<in_addr_t>(NHA_GATEWAY).value_or(INADDR_ANY));
    }
    if (const nlattr *group = attributes[NHA_GROUP]; group != nullptr) {
        const auto *bytes = static_cast<const std::uint8_t *>(mnl_attr_get_payload(group));
        for (std::size_t at = 0; at + sizeof(nexthop_grp) <= mnl_attr_get_payload_len(group);
             at += sizeof(nexthop_grp)) {
            nexthop_grp member;
            std::memcpy(&member, bytes + at, sizeof member);
            nexthop.members.push_back(member.id);
        }
    }
    return attributes.get<std::uint32_t>(NHA_ID).value_or(0);
}

RtnetlinkRequest NexthopTable::dump(std::size_t)
{
    RtnetlinkRequest request(RTM_GETNEXTHOP, NLM_F_DUMP);
    request.family<nhmsg>();
    return request;
}

void NexthopTable::fill(const nlmsghdr &message, Generation generation)
{
    NexthopObject nexthop;
    if (const std::uint32_t id = parseNexthop(message, nexthop); id != 0) {
        rows_[id] = {std::move(nexthop), generation};
    }
}

void NexthopTable::sweep(Generation generation)
{
    std::erase_if(rows_, [&](const auto &row) { return row.second.generation != generation; });
    tell();
}

void NexthopTable::apply(const nlmsghdr &message)
{
    NexthopObject nexthop;
    const std::uint32_t id = parseNexthop(message, nexthop);
    if (id == 0) {
        return;
    }
    if (message.nlmsg_type == RTM_NEWNEXTHOP) {
        rows_[id] = {std::move(nexthop), 0};
    } else {
        rows_.erase(id);
    }
    tell();
}

void NexthopTable::tell()
{
    ++version_;
    if (changed_) {
        changed_();
    }
}

} // namespace ipmib::platform
