// SPDX-License-Identifier: BSD-3-Clause
// The nexthop objects of this network namespace, which routes name instead of a gateway and an interface.
#pragma once

#include "addresses/packed_address.h"
#include "core/kernel_table.h"

#include <functional>
#include <unordered_map>
#include <vector>

namespace ipmib::platform
{

struct NexthopObject {
    std::uint32_t ifIndex = 0;
    bool hasGateway = false; // an IPv6 one
    bool dead = false;
    bool blackhole = false;
    PackedAddress gateway;
    std::uint32_t ipv4Gateway = 0;      // 0 for none
    std::vector<std::uint32_t> members; // of a group: the objects that it stands for
    std::uint32_t changed = 0;          // seconds since boot; 0 for a message's own

    bool operator==(const NexthopObject &) const = default;
};

// Of an RTM_NEWNEXTHOP or RTM_DELNEXTHOP message; the answer is the object's id, 0 when the message tells of none.
std::uint32_t parseNexthop(const nlmsghdr &message, NexthopObject &nexthop);

class NexthopTable
{
  public:
    // Called after every change.
    void onChange(std::function<void()> handler) { changed_ = std::move(handler); }

    // Differs after each change.
    std::uint64_t version() const { return version_; }

    // Calls visit(object) for each object that leads somewhere for this id: itself, or the members of a group. A group
    // holds no groups.
    template <class Visit>
    void eachHop(std::uint32_t id, Visit visit) const
    {
        const auto found = rows_.find(id);
        if (found == rows_.end()) {
            return;
        }
        if (found->second.object.members.empty()) {
            visit(found->second.object);
        }
        for (const std::uint32_t member : found->second.object.members) {
            const auto single = rows_.find(member);
            if (single != rows_.end()) {
                visit(single->second.object);
            }
        }
    }

    // As those of KernelTable. The answers are the objects that have gone.
    void applyDump(const nlmsghdr &message, Generation generation);
    std::vector<std::uint32_t> sweep(Generation generation);
    std::vector<std::uint32_t> applyChange(const nlmsghdr &message);
    // An interface is down, away, or has no carrier: the kernel drops the objects on it without a word, also from
    // groups, and groups that are empty then.
    std::vector<std::uint32_t> linkLost(std::uint32_t ifIndex);

  private:
    void put(std::uint32_t id, NexthopObject object, Generation generation);
    void countChange();

    struct Row {
        NexthopObject object;
        Generation generation;
    };
    std::unordered_map<std::uint32_t, Row> rows_;
    std::uint64_t version_ = 0;
    std::function<void()> changed_;
};

} // namespace ipmib::platform
