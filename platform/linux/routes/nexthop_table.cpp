// SPDX-License-Identifier: BSD-3-Clause
// The nexthop objects of this network namespace, which routes name instead of a gateway and an interface.
#include "routes/nexthop_table.h"

#include "core/attributes.h"
#include "core/uptime.h"

#include <arpa/inet.h>
#include <linux/nexthop.h>

#include <algorithm>
#include <utility>

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
    nexthop.blackhole = attributes[NHA_BLACKHOLE] != nullptr;
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

void NexthopTable::applyDump(const nlmsghdr &message, Generation generation)
{
    NexthopObject nexthop;
    if (const std::uint32_t id = parseNexthop(message, nexthop); id != 0) {
        put(id, std::move(nexthop), generation);
    }
}

std::vector<std::uint32_t> NexthopTable::sweep(Generation generation)
{
    std::vector<std::uint32_t> gone;
    std::erase_if(rows_, [&](const auto &row) {
        const bool leaves = row.second.generation != generation;
        if (leaves) {
            gone.push_back(row.first);
        }
        return leaves;
    });
    countChange();
    return gone;
}

std::vector<std::uint32_t> NexthopTable::applyChange(const nlmsghdr &message)
{
    NexthopObject nexthop;
    const std::uint32_t id = parseNexthop(message, nexthop);
    if (id == 0) {
        return {};
    }
    std::vector<std::uint32_t> gone;
    if (message.nlmsg_type == RTM_NEWNEXTHOP) {
        put(id, std::move(nexthop), 0);
    } else if (rows_.erase(id) != 0) {
        gone.push_back(id);
    }
    countChange();
    return gone;
}

std::vector<std::uint32_t> NexthopTable::linkLost(std::uint32_t ifIndex)
{
    std::vector<std::uint32_t> gone;
    std::erase_if(rows_, [&](const auto &row) {
        const NexthopObject &object = row.second.object;
        const bool leaves = object.ifIndex == ifIndex && object.members.empty() && !object.blackhole;
        if (leaves) {
            gone.push_back(row.first);
        }
        return leaves;
    });
    if (gone.empty()) {
        return gone;
    }
    std::sort(gone.begin(), gone.end());
    std::vector<std::uint32_t> empty;
    for (auto &[id, row] : rows_) {
        const std::size_t lost = std::erase_if(row.object.members, [&](std::uint32_t member) {
            return std::binary_search(gone.begin(), gone.end(), member);
        });
        row.object.changed = lost != 0 ? secondsSinceBoot() : row.object.changed;
        if (lost != 0 && row.object.members.empty()) {
            empty.push_back(id);
        }
    }
    for (const std::uint32_t id : empty) {
        rows_.erase(id);
    }
    gone.insert(gone.end(), empty.begin(), empty.end());
    countChange();
    return gone;
}

void NexthopTable::put(std::uint32_t id, NexthopObject object, Generation generation)
{
    Row &row = rows_[id];
    object.changed = row.object.changed;
    if (!(object == row.object)) {
        object.changed = secondsSinceBoot();
        row.object = std::move(object);
    }
    row.generation = generation;
}

void NexthopTable::countChange()
{
    ++version_;
    if (changed_) {
        changed_();
    }
}

} // namespace ipmib::platform
