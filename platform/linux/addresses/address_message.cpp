// SPDX-License-Identifier: BSD-3-Clause
// One address of this node, as the kernel's messages tell of it.
#include "addresses/address_message.h"

#include "core/attributes.h"

#include <linux/if_addr.h>
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

AddressOrigin originOf(const Ip6Address &address)
{
    // Programs that configure addresses themselves mark what they form so, that the kernel forms temporary ones from
    // it.
    constexpr std::uint32_t formed = IFA_F_MANAGETEMPADDR | IFA_F_STABLE_PRIVACY;

    if (address.address.isLoopback()) {
        return AddressOrigin::unknown; // nobody's choice
    }
    if ((address.flags & IFA_F_TEMPORARY) != 0) {
        return AddressOrigin::temporary;
    }
    if (address.protocol == IFAPROT_KERNEL_RA || address.protocol == IFAPROT_KERNEL_LL ||
        (address.flags & formed) != 0) {
        return AddressOrigin::autoconfigured;
    }
    // DHCP clients set the lifetimes of the lease; what is typed mostly has no end.
    return (address.flags & IFA_F_PERMANENT) != 0 ? AddressOrigin::manual : AddressOrigin::leased;
}

bool hasIdentifierOf(const PackedAddress &address, const std::uint8_t *linkLayer)
{
    constexpr std::uint64_t universalBit = 0x0200'0000'0000'0000;
    constexpr std::uint64_t middle = 0xFFFE; // between the two halves of the link-layer address
    const auto half = [linkLayer](std::size_t at) {
        return std::uint64_t{linkLayer[at]} << 16 | std::uint64_t{linkLayer[at + 1]} << 8 | linkLayer[at + 2];
    };
    const std::uint64_t identifier = half(0) << 40 | middle << 24 | half(3);
    return address.low == (identifier ^ universalBit);
}

} // namespace ipmib::platform
