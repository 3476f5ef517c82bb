// SPDX-License-Identifier: BSD-3-Clause
// Where an address has come from, as far as the kernel knows or shows it.
#pragma once

#include "addresses/address_message.h"

namespace ipmib::platform
{

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
