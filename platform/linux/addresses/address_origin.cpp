// SPDX-License-Identifier: BSD-3-Clause
// Where an address has come from, as far as the kernel knows or shows it.
#include "addresses/address_origin.h"

#include <linux/if_addr.h>

namespace ipmib::platform
{

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
