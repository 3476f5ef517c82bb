// SPDX-License-Identifier: BSD-3-Clause
// The device's addresses, with the lengths of their prefixes.
#include "session.h"
#include "view.h"

namespace ipmib::cli
{
namespace
{

constexpr Column columns[] = {
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
                                  ? rows.session().linkLocalPrefixLength(static_cast<std::uint32_t>(interface->number))
                                  : 0;
    return own != 0 || prefix == nullptr || prefix->objectId.empty() ? own : prefix->objectId.back();
}

Cell withLength(const Cell &address, std::uint32_t length)
{
    return length == 0 ? address : textCell(address.text + "/" + std::to_string(length), address.tone);
}

void list(Session &session, const std::string &, const Sink &sink)
{
    enum { ifIndex, type, prefix, origin, status, created, changed };
    TableReader rows(session, "ipAddressEntry",
                     {"ipAddressIfIndex", "ipAddressType", "ipAddressPrefix", "ipAddressOrigin", "ipAddressStatus",
                      "ipAddressCreated", "ipAddressLastChanged"});
    while (rows.next()) {
        const std::uint32_t length = prefixLength(rows, rows.value(ifIndex), rows.value(prefix));
        sink({withLength(addressCell(rows, 1), length), interfaceNumberCell(rows, ifIndex), labelCell(rows, status),
              labelCell(rows, origin), labelCell(rows, type), agoCell(rows, created), agoCell(rows, changed)});
    }
}

} // namespace

const View addressesView{"addresses", columns, list};

} // namespace ipmib::cli
