// SPDX-License-Identifier: BSD-3-Clause
// The device's addresses, with the lengths of their prefixes.
#include "view.h"

namespace ipmib::cli
{
namespace
{

constexpr Column columns[] = {
    {"ADDRESS", "address"},
    {"INTERFACE", "interface"},
    {"STATUS", "status"},
    {"ORIGIN", "origin", Align::left, 1},
    {"TYPE", "type", Align::left, 2},
    {"CREATED", "created", Align::right, 3},
    {"CHANGED", "changed", Align::right, 4},
};

// The last sub-identifier of the pointer to the prefix.
Cell withPrefixLength(const Cell &address, const host::Value *prefix)
{
    if (prefix == nullptr || prefix->objectId.empty()) {
        return address;
    }
    return textCell(address.text + "/" + std::to_string(prefix->objectId.back()));
}

void list(Session &session, const std::string &, const Sink &sink)
{
    enum { ifIndex, type, prefix, origin, status, created, changed };
    TableReader rows(session, "ipAddressEntry",
                     {"ipAddressIfIndex", "ipAddressType", "ipAddressPrefix", "ipAddressOrigin", "ipAddressStatus",
                      "ipAddressCreated", "ipAddressLastChanged"});
    while (rows.next()) {
        sink({withPrefixLength(addressCell(rows, 1), rows.value(prefix)), interfaceNumberCell(rows, ifIndex),
              labelCell(rows, status), labelCell(rows, origin), labelCell(rows, type), agoCell(rows, created),
              agoCell(rows, changed)});
    }
}

} // namespace

const View addressesView{"addresses", columns, list};

} // namespace ipmib::cli
