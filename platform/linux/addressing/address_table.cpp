// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 addresses of this network namespace: the link-local ones by interface, all others by address.
#include "addressing/address_table.h"

#include "core/boot_time.h"

#include <linux/if_addr.h>

#include <functional>
#include <limits>

namespace ipmib::platform
{

namespace
{

constexpr PackedAddress loopback{0, 1};

bool isUsable(const Address &address)
{
    const bool tentative = (address.flags & IFA_F_TENTATIVE) != 0 && (address.flags & IFA_F_OPTIMISTIC) == 0;
    return !tentative && (address.flags & IFA_F_DADFAILED) == 0;
}

} // namespace

const Address *AddressTable::find(const PackedAddress &address) const
{
    const Address *row = globals_.atOrAfter(At{address, 0});
    return row != nullptr && row->address == address ? row : nullptr;
}

const Address *AddressTable::after(const PackedAddress &address) const
{
    return globals_.after(At{address, std::numeric_limits<std::uint32_t>::max()});
}

const Address *AddressTable::linkLocal(std::uint32_t ifIndex) const
{
    const Address *best = nullptr;
    linkLocals_.eachFrom(At{{}, ifIndex}, [&](const Address &row) {
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

const Address *AddressTable::usableOnLink(std::uint32_t ifIndex) const
{
    const Address *found = linkLocal(ifIndex);
    if (found != nullptr) {
        return isUsable(*found) ? found : nullptr;
    }
    return globals_.find(At{loopback, ifIndex});
}

RtnetlinkRequest AddressTable::dump(std::size_t) const
{
    RtnetlinkRequest request(RTM_GETADDR, NLM_F_DUMP);
    request.family<ifaddrmsg>().ifa_family = AF_INET6;
    return request;
}

void AddressTable::rebuildWith(const nlmsghdr &message)
{
    Address address;
    if (message.nlmsg_type == RTM_NEWADDR && parseAddress(message, secondsSinceBoot(), address)) {
        if (address.address.isLinkLocal()) {
            freshLinkLocals_.put(address);
        } else {
            freshGlobals_.put(address);
        }
    }
}

void AddressTable::commitRebuild()
{
    globals_.swap(freshGlobals_);
    linkLocals_.swap(freshLinkLocals_);
    ++version_;
    if (changed_) { // the old rows are in the fresh ones' place
        freshGlobals_.eachDifference(globals_, std::equal_to<>(), changed_);
    }
    abandonRebuild();
}

void AddressTable::abandonRebuild()
{
    freshGlobals_.clear();
    freshLinkLocals_.clear();
}

void AddressTable::apply(const nlmsghdr &message)
{
    Address address;
    if (!parseAddress(message, secondsSinceBoot(), address)) {
        return;
    }
    ++version_;
    if (!address.address.isLinkLocal()) {
        applyGlobal(message.nlmsg_type, address);
    } else if (message.nlmsg_type == RTM_NEWADDR) {
        linkLocals_.put(address);
    } else if (message.nlmsg_type == RTM_DELADDR) {
        linkLocals_.erase(address);
    }
}

void AddressTable::applyGlobal(std::uint16_t type, const Address &address)
{
    const Address *known = globals_.find(address);
    const bool wasThere = known != nullptr;
    const Address before = wasThere ? *known : Address{};
    if (type == RTM_NEWADDR) {
        globals_.put(address);
    } else if (type != RTM_DELADDR || !globals_.erase(address)) {
        return;
    }
    if (changed_) {
        changed_(wasThere ? &before : nullptr, type == RTM_NEWADDR ? &address : nullptr);
    }
}

} // namespace ipmib::platform
