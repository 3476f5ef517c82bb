// SPDX-License-Identifier: BSD-3-Clause
// What routers are told on each interface.
#include "view.h"

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn advertisementColumns[] = {
    {"INTERFACE", "interface", Align::left, 0, Role::key},
    {"SENT", "sent"},
    {"INTERVAL", "interval", Align::right},
    {"LIFETIME", "lifetime", Align::right},
    {"MTU", "mtu", Align::right},
    {"HOP LIMIT", "hopLimit", Align::right, 2},
    {"MANAGED", "managed", Align::left, 1},
    {"OTHER CONFIG", "otherConfig", Align::left, 3},
    {"REACHABLE", "reachableTime", Align::right, 4},
    {"RETRANSMIT", "retransmitTime", Align::right, 5},
};

// "66-200s"
Cell intervalCell(const host::Value *shortest, const host::Value *longest)
{
    if (shortest == nullptr || longest == nullptr) {
        return emptyCell();
    }
    return {std::to_string(shortest->number) + "-" + std::to_string(longest->number) + "s",
            {{"min", shortest->number}, {"max", longest->number}},
            {}};
}

// Of what an advertisement leaves open with 0.
Cell unlessZero(Cell cell)
{
    if (cell.json == 0) {
        cell.text = "-";
    }
    return cell;
}

void listAdvertisements(LocalDevice &device, const std::string &, const Sink &sink)
{
    enum { sent, max, min, managed, other, mtu, reachable, retransmit, hopLimit, lifetime };
    TableReader rows(device, "ipv6RouterAdvertEntry",
                     {"ipv6RouterAdvertSendAdverts", "ipv6RouterAdvertMaxInterval", "ipv6RouterAdvertMinInterval",
                      "ipv6RouterAdvertManagedFlag", "ipv6RouterAdvertOtherConfigFlag", "ipv6RouterAdvertLinkMTU",
                      "ipv6RouterAdvertReachableTime", "ipv6RouterAdvertRetransmitTime", "ipv6RouterAdvertCurHopLimit",
                      "ipv6RouterAdvertDefaultLifetime"});
    while (rows.next()) {
        sink({interfaceCell(rows, 0), truthCell(rows, sent), intervalCell(rows.value(min), rows.value(max)),
              lifetimeCell(rows, lifetime), unlessZero(numberCell(rows, mtu)), unlessZero(numberCell(rows, hopLimit)),
              truthCell(rows, managed), truthCell(rows, other), unlessZero(millisecondsCell(rows, reachable)),
              unlessZero(millisecondsCell(rows, retransmit))});
    }
}

} // namespace

const View advertisementsView{"advertisements", advertisementColumns, listAdvertisements};

} // namespace ipmib::cli
