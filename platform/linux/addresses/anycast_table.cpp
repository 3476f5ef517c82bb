// SPDX-License-Identifier: BSD-3-Clause
// The anycast addresses that this node has joined, those outside fe80::/10.
#include "addresses/anycast_table.h"

#include <linux/if_addr.h>

#include <limits>

namespace ipmib::platform
{

const Anycast *AnycastTable::find(const PackedAddress &address) const
{
    const Anycast *row = rows_.atOrAfter(At{address, 0});
    return row != nullptr && row->address == address ? row : nullptr;
}

const Anycast *AnycastTable::after(const PackedAddress &address) const
{
    return rows_.after(At{address, std::numeric_limits<std::uint32_t>::max()});
}

bool AnycastTable::has(const PackedAddress &address, std::uint32_t ifIndex) const
{
    return rows_.find(At{address, ifIndex}) != nullptr;
}

void AnycastTable::joined(const PackedAddress &address, std::uint32_t ifIndex, std::uint32_t now)
{
    if (!address.isLinkLocal() && !has(address, ifIndex)) {
        const Anycast row{address, ifIndex, now, now};
        rows_.put(row);
        tellChange(row);
    }
}

void AnycastTable::left(const PackedAddress &address, std::uint32_t ifIndex)
{
    if (rows_.erase(At{address, ifIndex})) {
        tellChange({address, ifIndex, 0, 0});
    }
}

RtnetlinkRequest AnycastTable::dump(std::size_t)
{
    RtnetlinkRequest request(RTM_GETANYCAST, NLM_F_DUMP);
    request.family<ifaddrmsg>().ifa_family = AF_INET6;
    return request;
}

void AnycastTable::applyDump(const nlmsghdr &message, Generation generation)
{
    Anycast anycast;
    if (parseAnycast(message, anycast) && !anycast.address.isLinkLocal() && rows_.put(anycast, generation)) {
        tellChange(anycast); // of what changes in one that was there, no prefix tells
    }
}

bool AnycastTable::sweep(Generation generation)
{
    for (const Anycast &gone : rows_.sweep(generation)) {
        tellChange(gone);
    }
    return true;
}

} // namespace ipmib::platform
