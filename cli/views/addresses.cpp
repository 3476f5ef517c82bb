// SPDX-License-Identifier: BSD-3-Clause
// The device's addresses, with the lengths of their prefixes, and the prefixes of all interfaces.
#include "local_device.h"
#include "view.h"

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn addressColumns[] = {
    {"ADDRESS", "address", Align::left, 0, Role::key},
    {"INTERFACE", "interface", Align::left, 0, Role::key},
    {"STATUS", "status"},
    {"ORIGIN", "origin", Align::left, 1},
    {"TYPE", "type", Align::left, 2},
    {"CREATED", "created", Align::right, 3, Role::time, "createdAge"},
    {"CHANGED", "changed", Align::right, 4, Role::time, "changedAge"},
};

// The last sub-identifier of the pointer to the prefix. That of a link-local address points to the prefix of them all.
std::uint32_t prefixLength(const TableReader &rows, const host::Value *interface, const host::Value *prefix)
{
    constexpr std::size_t withZone = 20; // octets
    const std::uint32_t own = interface != nullptr && rows.key().octets(1).size() == withZone
                                  ? rows.device().linkLocalPrefixLength(static_cast<std::uint32_t>(interface->number))
                                  : 0;
    return own != 0 || prefix == nullptr || prefix->objectId.empty() ? own : prefix->objectId.back();
}

Cell withLength(const Cell &address, std::uint32_t length)
{
    return length == 0 ? address : textCell(address.text + "/" + std::to_string(length), address.tone);
}

void listAddresses(LocalDevice &device, const std::string &, const Sink &sink)
{
    enum { ifIndex, type, prefix, origin, status, created, changed };
    TableReader rows(device, "ipAddressEntry",
                     {"ipAddressIfIndex", "ipAddressType", "ipAddressPrefix", "ipAddressOrigin", "ipAddressStatus",
                      "ipAddressCreated", "ipAddressLastChanged"});
    while (rows.next()) {
        const std::uint32_t length = prefixLength(rows, rows.value(ifIndex), rows.value(prefix));
        sink({withLength(addressCell(rows, 1), length), interfaceNumberCell(rows, ifIndex), labelCell(rows, status),
              labelCell(rows, origin), labelCell(rows, type), agoCell(rows, created), agoCell(rows, changed)});
    }
}

constexpr ListingColumn prefixColumns[] = {
    {"PREFIX", "prefix", Align::left, 0, Role::key},
    {"INTERFACE", "interface", Align::left, 0, Role::key},
    {"ORIGIN", "origin", Align::left, 1},
    {"ON LINK", "onLink", Align::left, 3},
    {"AUTONOMOUS", "autonomous", Align::left, 2},
    {"VALID", "valid", Align::right, 4, Role::time},
    {"PREFERRED", "preferred", Align::right, 5, Role::time},
};

void listPrefixes(LocalDevice &device, const std::string &, const Sink &sink)
{
    enum { origin, onLink, autonomous, preferred, valid };
    TableReader rows(device, "ipAddressPrefixEntry",
                     {"ipAddressPrefixOrigin", "ipAddressPrefixOnLinkFlag", "ipAddressPrefixAutonomousFlag",
                      "ipAddressPrefixAdvPreferredLifetime", "ipAddressPrefixAdvValidLifetime"});
    while (rows.next()) {
        const std::string length = std::to_string(rows.key().number(3));
        const Cell prefix = addressCell(rows, 2);
        sink({textCell(prefix.text + "/" + length, prefix.tone), interfaceCell(rows, 0), labelCell(rows, origin),
              truthCell(rows, onLink), truthCell(rows, autonomous), lifetimeCell(rows, valid),
              lifetimeCell(rows, preferred)});
    }
}

} // namespace

const View addressesView{"addresses", addressColumns, listAddresses};
const View prefixesView{"prefixes", prefixColumns, listPrefixes};

} // namespace ipmib::cli
