// SPDX-License-Identifier: BSD-3-Clause
// The prefixes of all interfaces.
#include "view.h"

namespace ipmib::cli
{
namespace
{

constexpr Column columns[] = {
    {"PREFIX", "prefix", Align::left, 0, Role::key},
    {"INTERFACE", "interface", Align::left, 0, Role::key},
    {"ORIGIN", "origin", Align::left, 1},
    {"ON LINK", "onLink", Align::left, 3},
    {"AUTONOMOUS", "autonomous", Align::left, 2},
    {"VALID", "valid", Align::right, 4, Role::time},
    {"PREFERRED", "preferred", Align::right, 5, Role::time},
};

void list(Session &session, const std::string &, const Sink &sink)
{
    enum { origin, onLink, autonomous, preferred, valid };
    TableReader rows(session, "ipAddressPrefixEntry",
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

const View prefixesView{"prefixes", columns, list};

} // namespace ipmib::cli
