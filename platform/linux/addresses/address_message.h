// SPDX-License-Identifier: BSD-3-Clause
// One address of this node, as the kernel's messages tell of it.
#pragma once

#include "addresses/deadline.h"
#include "addresses/packed_address.h"

#include <libmnl/libmnl.h>
#include <linux/if_addr.h>

namespace ipmib::platform
{

// An IPv6 address.
struct Ip6Address {
    PackedAddress address;
    std::uint32_t ifIndex;
    std::uint32_t flags;   // IFA_F_*
    std::uint32_t created; // 1/100 s since boot
    std::uint32_t changed; // 1/100 s since boot
    Deadline preferredUntil;
    Deadline validUntil;
    std::uint8_t length;   // bits of the prefix
    std::uint8_t protocol; // IFAPROT_*; 0 from kernels before 5.18

    PrefixKey prefix() const { return PrefixKey::of(ifIndex, address, length); }
    bool operator==(const Ip6Address &) const = default;
};

// The family header of a message about addresses on an interface; null when it is about another family.
const ifaddrmsg *addressHeader(const nlmsghdr &message, std::uint8_t family);

// Of an RTM_NEWADDR or RTM_DELADDR message; false when it is not about an IPv6 address. Now is in seconds since boot.
bool parseAddress(const nlmsghdr &message, std::uint32_t now, Ip6Address &address);

// One anycast address that this node has joined.
struct Anycast {
    PackedAddress address;
    std::uint32_t ifIndex;
    std::uint32_t created; // 1/100 s since boot
    std::uint32_t changed; // 1/100 s since boot
};

// Of an answer to RTM_GETANYCAST; false when it is not about an IPv6 anycast address.
bool parseAnycast(const nlmsghdr &message, Anycast &anycast);

enum class AddressOrigin {
    manual,
    leased,         // from a DHCP server
    autoconfigured, // formed from an advertised prefix, or by the kernel on the link itself
    temporary,      // the same with a random identifier
    unknown,
};

AddressOrigin originOf(const Ip6Address &address);

// Whether the last 64 bits are made from a link-layer address of 6 bytes.
bool hasIdentifierOf(const PackedAddress &address, const std::uint8_t *linkLayer);

} // namespace ipmib::platform
