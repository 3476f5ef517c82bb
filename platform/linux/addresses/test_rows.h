// SPDX-License-Identifier: BSD-3-Clause
// For tests: the rows that the services give, as a walk collects them, in words that `ip` uses.
#pragma once

#include <ipmib/platform.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace ipmib::platform
{

std::string addressText(const std::uint8_t *bytes);
// The address's first bits, zero behind them, as text.
std::string networkText(const std::string &address, unsigned length);

struct AddressRow {
    std::string address;
    std::uint32_t ifIndex;
    FullAddressRecord record;
};
// Outside fe80::/10, by first and next; the order is checked.
std::vector<AddressRow> walkAddresses();
// The main link-local address of each of these interfaces that has one.
std::vector<AddressRow> walkLinkLocals(const std::vector<std::uint32_t> &interfaces);

struct PrefixRow {
    std::uint32_t ifIndex;
    std::string prefix;
    std::uint32_t length;
    std::uint32_t origin;
    std::uint32_t valid;
    std::uint32_t preferred;
    bool onLink;
    bool autonomous;

    auto key() const { return std::tuple(ifIndex, prefix, length); }
};
// By first and next; the order is checked. What is left of lifetimes is computed as a reader does.
std::vector<PrefixRow> walkPrefixes(std::uint32_t ifIndex);

struct RouterRow {
    std::string address;
    std::uint32_t ifIndex;
    std::uint32_t lifetime;
    std::string preference;

    auto key() const { return std::tuple(address, ifIndex); }
};
// Global ones, then link-local ones; the order is checked, and that each is found by its key.
std::vector<RouterRow> walkRouters();

// Whether an address's prefix, as its record gives it, is a row.
bool prefixIsListed(const FullAddressRecord &record);

} // namespace ipmib::platform
