// SPDX-License-Identifier: BSD-3-Clause
// The IPv4 addresses of this network namespace by address, and what follows from them.
#include "addresses/ipv4_address_table.h"

#include "addresses/address_message.h"
#include "core/attributes.h"
#include "core/uptime.h"

#include <arpa/inet.h>
#include <sys/socket.h>

namespace ipmib::platform
{

std::uint32_t maskedIpv4(std::uint32_t address, unsigned length)
{
    return length == 0 ? 0 : address & UINT32_MAX << (32 - length);
}

std::uint32_t Ipv4Address::prefix() const
{
    return maskedIpv4(peer, length);
}

bool parseIpv4Address(const nlmsghdr &message, std::uint32_t now, Ipv4Address &address)
{
    const ifaddrmsg *header = addressHeader(message, AF_INET);
    if (header == nullptr) {
        return false;
    }
    const Attributes<IFA_MAX> attributes(message, sizeof(ifaddrmsg));
    const auto local = attributes.get<in_addr_t>(IFA_LOCAL);
    const auto peer = attributes.get<in_addr_t>(IFA_ADDRESS);
    if (!local || *local == INADDR_ANY) {
        return false;
    }
    constexpr ifa_cacheinfo unlimited{Deadline::infinite, Deadline::infinite, 0, 0};
    const auto times = attributes.get<ifa_cacheinfo>(IFA_CACHEINFO).value_or(unlimited);
    address = Ipv4Address{};
    address.address = ntohl(*local);
    address.ifIndex = header->ifa_index;
    address.peer = ntohl(peer.value_or(*local));
    address.broadcast = ntohl(attributes.get<in_addr_t>(IFA_BROADCAST).value_or(INADDR_ANY));
    address.flags = attributes.get<std::uint32_t>(IFA_FLAGS).value_or(header->ifa_flags);
    address.created = times.cstamp;
    address.changed = times.tstamp;
    address.preferredUntil = Deadline::after(now, times.ifa_prefered);
    address.validUntil = Deadline::after(now, times.ifa_valid);
    address.length = header->ifa_prefixlen;
    address.scope = header->ifa_scope;
    return true;
}

const Ipv4Address *Ipv4AddressTable::find(std::uint32_t address) const
{
    const Ipv4Address *row = rows_.atOrAfter(Ipv4Address::Key{address, 0, 0, 0});
    return row != nullptr && row->address == address ? row : nullptr;
}

const Ipv4Address *Ipv4AddressTable::after(std::uint32_t address) const
{
    return rows_.after(Ipv4Address::Key{address, UINT32_MAX, UINT8_MAX, UINT32_MAX});
}

const Ipv4Address *Ipv4AddressTable::findBroadcast(std::uint32_t broadcast) const
{
    const AtBroadcast *at = byBroadcast_.atOrAfter(AtBroadcast{broadcast, 0, {}});
    return at != nullptr && at->broadcast == broadcast ? rows_.find(at->key) : nullptr;
}

const Ipv4Address *Ipv4AddressTable::afterBroadcast(std::uint32_t broadcast) const
{
    const AtBroadcast *at =
        broadcast == UINT32_MAX ? nullptr : byBroadcast_.atOrAfter(AtBroadcast{broadcast + 1, 0, {}});
    return at != nullptr ? rows_.find(at->key) : nullptr;
}

bool Ipv4AddressTable::prefixAtOrAfter(const PrefixKey &key, PrefixKey &found) const
{
    const AtPrefix *at = byPrefix_.atOrAfter(AtPrefix{key, {}});
    if (at == nullptr) {
        return false;
    }
    found = at->prefix;
    return true;
}

bool Ipv4AddressTable::prefixAfter(const PrefixKey &key, PrefixKey &found) const
{
    // Lengths in rows end at 32.
    return prefixAtOrAfter({key.ifIndex, key.prefix, std::min<std::uint32_t>(key.length, 32) + 1}, found);
}

bool Ipv4AddressTable::hasAny(std::uint32_t ifIndex) const
{
    const AtPrefix *at = byPrefix_.atOrAfter(AtPrefix{{ifIndex, 0, 0}, {}});
    return at != nullptr && at->prefix.ifIndex == ifIndex;
}

RtnetlinkRequest Ipv4AddressTable::dump(std::size_t)
{
    RtnetlinkRequest request(RTM_GETADDR, NLM_F_DUMP);
    request.family<ifaddrmsg>().ifa_family = AF_INET;
    return request;
}

void Ipv4AddressTable::applyDump(const nlmsghdr &message, Generation generation)
{
    Ipv4Address address;
    if (message.nlmsg_type == RTM_NEWADDR && parseIpv4Address(message, secondsSinceBoot(), address)) {
        put(address, generation);
    }
}

bool Ipv4AddressTable::sweep(Generation generation)
{
    for (const Ipv4Address &gone : rows_.sweep(generation)) {
        leaveOrders(gone);
    }
    ++version_;
    return true;
}

void Ipv4AddressTable::applyChange(const nlmsghdr &message)
{
    Ipv4Address address;
    const bool comes = message.nlmsg_type == RTM_NEWADDR;
    if ((!comes && message.nlmsg_type != RTM_DELADDR) || !parseIpv4Address(message, secondsSinceBoot(), address)) {
        return;
    }
    if (comes) {
        put(address, 0);
    } else if (const Ipv4Address *known = rows_.find(address.key())) {
        leaveOrders(*known);
        rows_.erase(address.key());
    }
    ++version_;
}

void Ipv4AddressTable::put(const Ipv4Address &row, Generation generation)
{
    if (const Ipv4Address *known = rows_.find(row.key())) {
        leaveOrders(*known);
    }
    rows_.put(row, generation);
    byPrefix_.put(prefixOf(row));
    if (row.broadcast != 0) {
        byBroadcast_.put(broadcastOf(row));
    }
}

Ipv4AddressTable::AtPrefix Ipv4AddressTable::prefixOf(const Ipv4Address &row)
{
    return {{row.ifIndex, row.prefix(), row.length}, row.key()};
}

void Ipv4AddressTable::leaveOrders(const Ipv4Address &row)
{
    byPrefix_.erase(prefixOf(row));
    if (row.broadcast != 0) {
        byBroadcast_.erase(broadcastOf(row));
    }
}

} // namespace ipmib::platform
