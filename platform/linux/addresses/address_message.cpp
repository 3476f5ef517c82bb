// SPDX-License-Identifier: BSD-3-Clause
// One address of this node, as the kernel's messages tell of it.
#include "addresses/address_message.h"

#include "core/attributes.h"

#include <sys/socket.h>

namespace ipmib::platform
{

namespace
{

using Bytes = std::array<std::uint8_t, 16>;

constexpr std::uint8_t longestIp4Prefix = 32;
constexpr std::uint8_t longestIp6Prefix = 128;

} // namespace

const ifaddrmsg *addressHeader(const nlmsghdr &message, std::uint8_t family)
{
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(ifaddrmsg))) {
        return nullptr;
    }
    const auto *header = static_cast<const ifaddrmsg *>(mnl_nlmsg_get_payload(&message));
    const std::uint8_t longest = family == AF_INET ? longestIp4Prefix : longestIp6Prefix;
    const bool ours = header->ifa_family == family && header->ifa_index != 0 && header->ifa_prefixlen <= longest;
    return ours ? header : nullptr;
}

bool parseAddress(const nlmsghdr &message, std::uint32_t now, Ip6Address &address)
{
    const ifaddrmsg *header = addressHeader(message, AF_INET6);
    if (header == nullptr) {
        return false;
    }
    const Attributes<IFA_MAX> attributes(message, sizeof(ifaddrmsg));
    // Of an address with a peer, IFA_ADDRESS is the peer.
    const auto local =
        attributes[IFA_LOCAL] != nullptr ? attributes.get<Bytes>(IFA_LOCAL) : attributes.get<Bytes>(IFA_ADDRESS);
    if (!local) {
        return false;
    }
    constexpr ifa_cacheinfo unlimited{Deadline::infinite, Deadline::infinite, 0, 0};
    const auto times = attributes.get<ifa_cacheinfo>(IFA_CACHEINFO).value_or(unlimited);
    address = Ip6Address{};
    address.address = PackedAddress::of(local->data());
    address.ifIndex = header->ifa_index;
    address.length = header->ifa_prefixlen;
    address.flags = attributes.get<std::uint32_t>(IFA_FLAGS).value_or(header->ifa_flags);
    address.protocol = attributes.get<std::uint8_t>(IFA_PROTO).value_or(IFAPROT_UNSPEC);
    address.created = times.cstamp;
    address.changed = times.tstamp;
    address.preferredUntil = Deadline::after(now, times.ifa_prefered);
    address.validUntil = Deadline::after(now, times.ifa_valid);
    return true;
}

bool parseAnycast(const nlmsghdr &message, Anycast &anycast)
{
    const ifaddrmsg *header = addressHeader(message, AF_INET6);
    if (header == nullptr) {
        return false;
    }
    const Attributes<IFA_MAX> attributes(message, sizeof(ifaddrmsg));
    const auto address = attributes.get<Bytes>(IFA_ANYCAST);
    if (!address) {
        return false;
    }
    const auto times = attributes.get<ifa_cacheinfo>(IFA_CACHEINFO).value_or(ifa_cacheinfo{});
    anycast = {PackedAddress::of(address->data()), header->ifa_index, times.cstamp, times.tstamp};
    return true;
}

} // namespace ipmib::platform
