// SPDX-License-Identifier: BSD-3-Clause
// The IPv4 addresses of this network namespace, by address.
#include "ipv4/ipv4_address_table.h"

#include "addressing/address_message.h"
#include "core/attributes.h"

#include <arpa/inet.h>
#include <sys/socket.h>

namespace ipmib::platform
{

bool parseIpv4Address(const nlmsghdr &message, Ipv4Address &address)
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
    address = Ipv4Address{};
    address.address = ntohl(*local);
    address.ifIndex = header->ifa_index;
    address.peer = ntohl(peer.value_or(*local));
    address.length = header->ifa_prefixlen;
    address.broadcastBit = (ntohl(attributes.get<in_addr_t>(IFA_BROADCAST).value_or(INADDR_BROADCAST)) & 1) != 0;
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

RtnetlinkRequest Ipv4AddressTable::dump(std::size_t) const
{
    RtnetlinkRequest request(RTM_GETADDR, NLM_F_DUMP);
    request.family<ifaddrmsg>().ifa_family = AF_INET;
    return request;
}

void Ipv4AddressTable::rebuildWith(const nlmsghdr &message)
{
    Ipv4Address address;
    if (message.nlmsg_type == RTM_NEWADDR && parseIpv4Address(message, address)) {
        fresh_.put(address);
    }
}

void Ipv4AddressTable::commitRebuild()
{
    rows_.swap(fresh_);
    fresh_.clear();
}

void Ipv4AddressTable::apply(const nlmsghdr &message)
{
    Ipv4Address address;
    if (!parseIpv4Address(message, address)) {
        return;
    }
    if (message.nlmsg_type == RTM_NEWADDR) {
        rows_.put(address);
    } else if (message.nlmsg_type == RTM_DELADDR) {
        rows_.erase(address.key());
    }
}

} // namespace ipmib::platform
