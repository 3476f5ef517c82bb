// SPDX-License-Identifier: BSD-3-Clause
// The nexthop objects of this network namespace, which routes name instead of a gateway and an interface.
#pragma once

#include "addressing/packed_address.h"
#include "core/mirror.h"

#include <functional>
#include <unordered_map>
#include <vector>

namespace ipmib::platform
{

struct NexthopObject {
    std::uint32_t ifIndex = 0;
    bool hasGateway = false; // an IPv6 one
    bool dead = false;
    PackedAddress gateway;
    std::uint32_t ipv4Gateway = 0;      // 0 for none
    std::vector<std::uint32_t> members; // of a group: the objects that it stands for
};

// Of an RTM_NEWNEXTHOP or RTM_DELNEXTHOP message; the answer is the object's id, 0 when the message tells of none.
std::uint32_t parseNexthop(const nlmsghdr &message, NexthopObject &nexthop);

class NexthopTable : public KernelTable
{
  public:
    // Called after every change.
    void onChange(std::function<void()> handler) { changed_ = std::move(handler); }

    // Differs after each change.
    std::uint64_t version() const { return version_; }

    // Calls visit(object) for each object that an id stands for. A group holds no groups.
    template <class Visit>
    void eachBehind(std::uint32_t id, Visit visit) const
    {
        const auto found = rows_.find(id);
        if (found == rows_.end()) {
            return;
        }
        visit(found->second.object);
        for (const std::uint32_t member : found->second.object.members) {
            const auto single = rows_.find(member);
            if (single != rows_.end()) {
                visit(single->second.object);
            }
        }
    }

    const char *name() const override { return "nexthops"; }
    std::vector<unsigned> groups() const override { return {RTNLGRP_NEXTHOP}; }
    RtnetlinkRequest dump(std::size_t which) override;
    void fill(const nlmsghdr &message, Generation generation) override;
    void sweep(Generation generation) override;
    void apply(const nlmsghdr &message) override;

  private:
    void tell();

    struct Row {
        NexthopObject object;
        Generation generation;
    };
    std::unordered_map<std::uint32_t, Row> rows_;
    std::uint64_t version_ = 0;
    std::function<void()> changed_;
};

} // namespace ipmib::platform
