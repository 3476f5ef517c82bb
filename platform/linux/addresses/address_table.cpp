// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 addresses of this network namespace: the link-local ones by interface, all others by address.
#include "addresses/address_table.h"

#include "core/uptime.h"

#include <linux/if_addr.h>

#include <functional>
#include <limits>

namespace ipmib::platform
{

namespace
{

constexpr PackedAddress loopback{0, 1};

bool isUsable(const Ip6Address &address)
{
    const bool tentative = (address.flags & IFA_F_TENTATIVE) != 0 && (address.flags & IFA_F_OPTIMISTIC) == 0;
    return !tentative && (address.flags & IFA_F_DADFAILED) == 0;
}

} // namespace

const Ip6Address *AddressTable::find(const PackedAddress &address) const
{
    const Ip6Address *row = globals_.atOrAfter(At{address, 0});
    return row != nullptr && row->address == address ? row : nullptr;
}

const Ip6Address *AddressTable::after(const PackedAddress &address) const
{
    return globals_.after(At{address, std::numeric_limits<std::uint32_t>::max()});
}

const Ip6Address *AddressTable::linkLocal(std::uint32_t ifIndex) const
{
    const Ip6Address *best = nullptr;
    linkLocals_.eachFrom(At{{}, ifIndex}, [&](const Ip6Address &row) {
        if (row.ifIndex != ifIndex) {
            return false;
        }
        if (best == nullptr || (isUsable(row) != isUsable(*best) ? isUsable(row) : row.created < best->created)) {
            best = &row;
        }
        return true;
    });
    return best;
}

const Ip6Address *AddressTable::usableOnLink(std::uint32_t ifIndex) const
{
    const Ip6Address *found = linkLocal(ifIndex);
    if (found != nullptr) {
        return isUsable(*found) ? found : nullptr;
    }
    return globals_.find(At{loopback, ifIndex});
}

RtnetlinkRequest AddressTable::dump(std::size_t)
{
    RtnetlinkRequest request(RTM_GETADDR, NLM_F_DUMP);
    request.family<ifaddrmsg>().ifa_family = AF_INET6;
    return request;
}

void AddressTable::applyDump(const nlmsghdr &message, Generation generation)
{
    Ip6Address address;
    if (message.nlmsg_type == RTM_NEWADDR && parseAddress(message, secondsSinceBoot(), address)) {
        put(address, generation);
    }
}

bool AddressTable::sweep(Generation generation)
{
    linkLocals_.sweep(generation);
    for (const Ip6Address &gone : globals_.sweep(generation)) {
        if (changed_) {
            changed_(&gone, nullptr);
        }
    }
    ++version_;
    ++linkLocalVersion_;
    return true;
}

void AddressTable::applyChange(const nlmsghdr &message)
{
    Ip6Address address;
    if (!parseAddress(message, secondsSinceBoot(), address)) {
        return;
    }
    if (message.nlmsg_type == RTM_NEWADDR) {
        put(address, 0);
    } else if (message.nlmsg_type == RTM_DELADDR) {
        erase(address);
    }
}

void AddressTable::put(const Ip6Address &address, Generation generation)
{
    ++version_;
    if (address.address.isLinkLocal()) {
        ++linkLocalVersion_;
        linkLocals_.put(address, generation);
        return;
    }
    const Ip6Address *known = globals_.find(address);
    const bool wasThere = known != nullptr;
    const Ip6Address before = wasThere ? *known : Ip6Address{};
    globals_.put(address, generation);
    if (changed_ && !(wasThere && before == address)) {
        changed_(wasThere ? &before : nullptr, &address);
    }
}

void AddressTable::erase(const Ip6Address &address)
{
    ++version_;
    if (address.address.isLinkLocal()) {
        ++linkLocalVersion_;
        linkLocals_.erase(address);
        return;
    }
    const Ip6Address *known = globals_.find(address);
    if (known == nullptr) {
        return;
    }
    const Ip6Address before = *known;
    globals_.erase(address);
    if (changed_) {
        changed_(&before, nullptr);
    }
}

} // namespace ipmib::platform
