// SPDX-License-Identifier: BSD-3-Clause
// IPv4 and IPv6 on each interface that has it.
#include "text.h"
#include "view.h"

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn interfaceColumns[] = {
    {"INTERFACE", "interface"},
    {"INDEX", "ifIndex", Align::right},
    {"VERSION", "version"},
    {"STATUS", "enableStatus"},
    {"FORWARDING", "forwarding", Align::left, 2},
    {"IDENTIFIER", "identifier", Align::left, 1},
    {"REACHABLE", "reachableTime", Align::right, 3},
    {"RETRANSMIT", "retransmitTime", Align::right, 4},
};

// As it stands in addresses: 0000:5eff:fe00:5301.
Cell identifierCell(const host::Value *value)
{
    if (value == nullptr) {
        return emptyCell();
    }
    std::string text = hexText(value->octets);
    constexpr std::size_t octet = 3; // "00:"
    for (std::size_t colon = octet - 1; colon < text.size(); colon += 2 * octet - 1) {
        text.erase(colon, 1);
    }
    return textCell(text);
}

Cell ifIndexCell(const TableReader &rows)
{
    const std::uint32_t ifIndex = rows.key().number(0);
    return {std::to_string(ifIndex), ifIndex, {}};
}

void listInterfaces(LocalDevice &device, const std::string &, const Sink &sink)
{
    enum { ip4EnableStatus, ip4Retransmit };
    TableReader ip4(device, "ipv4InterfaceEntry", {"ipv4InterfaceEnableStatus", "ipv4InterfaceRetransmitTime"});
    while (ip4.next()) {
        sink({interfaceCell(ip4, 0), ifIndexCell(ip4), textCell("ipv4"), labelCell(ip4, ip4EnableStatus), emptyCell(),
              emptyCell(), emptyCell(), millisecondsCell(ip4, ip4Retransmit)});
    }
    enum { identifier, enableStatus, reachable, retransmit, forwarding };
    TableReader rows(device, "ipv6InterfaceEntry",
                     {"ipv6InterfaceIdentifier", "ipv6InterfaceEnableStatus", "ipv6InterfaceReachableTime",
                      "ipv6InterfaceRetransmitTime", "ipv6InterfaceForwarding"});
    while (rows.next()) {
        sink({interfaceCell(rows, 0), ifIndexCell(rows), textCell("ipv6"), labelCell(rows, enableStatus),
              labelCell(rows, forwarding), identifierCell(rows.value(identifier)), millisecondsCell(rows, reachable),
              millisecondsCell(rows, retransmit)});
    }
}

} // namespace

const View interfacesView{"interfaces", interfaceColumns, listInterfaces};

} // namespace ipmib::cli
