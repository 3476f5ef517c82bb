// SPDX-License-Identifier: BSD-3-Clause
// The neighbours on all interfaces, and the default routers among them.
#include "text.h"
#include "view.h"

#include <algorithm>

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn neighbourColumns[] = {
    {"ADDRESS", "address", Align::left, 0, Role::key},
    {"INTERFACE", "interface", Align::left, 0, Role::key},
    {"LINK-LAYER ADDRESS", "linkLayerAddress", Align::left, 1},
    {"STATE", "state"},
    {"TYPE", "type", Align::left, 2},
    {"UPDATED", "updated", Align::right, 3, Role::time, "updatedAge"},
};

// One that is not known is told as zeros.
Cell linkLayerCell(const host::Value *value)
{
    const bool known =
        value != nullptr && std::ranges::any_of(value->octets, [](std::uint8_t octet) { return octet != 0; });
    return known ? textCell(hexText(value->octets), Tone::linkLayer) : emptyCell();
}

void listNeighbours(LocalDevice &device, const std::string &, const Sink &sink)
{
    enum { physAddress, lastUpdated, type, state };
    TableReader rows(
        device, "ipNetToPhysicalEntry",
        {"ipNetToPhysicalPhysAddress", "ipNetToPhysicalLastUpdated", "ipNetToPhysicalType", "ipNetToPhysicalState"});
    while (rows.next()) {
        sink({addressCell(rows, 2), interfaceCell(rows, 0), linkLayerCell(rows.value(physAddress)),
              labelCell(rows, state), labelCell(rows, type), agoCell(rows, lastUpdated)});
    }
}

constexpr ListingColumn routerColumns[] = {
    {"ROUTER", "address", Align::left, 0, Role::key},
    {"INTERFACE", "interface", Align::left, 0, Role::key},
    {"PREFERENCE", "preference"},
    {"LIFETIME", "lifetime", Align::right, 1, Role::time},
};

// The object can hold no more.
constexpr std::uint32_t endless = 65'535;

void listRouters(LocalDevice &device, const std::string &, const Sink &sink)
{
    enum { lifetime, preference };
    TableReader rows(device, "ipDefaultRouterEntry", {"ipDefaultRouterLifetime", "ipDefaultRouterPreference"});
    while (rows.next()) {
        sink({addressCell(rows, 1), interfaceCell(rows, 2), labelCell(rows, preference),
              lifetimeCell(rows, lifetime, endless)});
    }
}

} // namespace

const View neighboursView{"neighbours", neighbourColumns, listNeighbours};
const View routersView{"routers", routerColumns, listRouters};

} // namespace ipmib::cli
