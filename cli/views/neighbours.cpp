// SPDX-License-Identifier: BSD-3-Clause
// The neighbours on all interfaces.
#include "text.h"
#include "view.h"

#include <algorithm>

namespace ipmib::cli
{
namespace
{

constexpr Column columns[] = {
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

void list(Session &session, const std::string &, const Sink &sink)
{
    enum { physAddress, lastUpdated, type, state };
    TableReader rows(
        session, "ipNetToPhysicalEntry",
        {"ipNetToPhysicalPhysAddress", "ipNetToPhysicalLastUpdated", "ipNetToPhysicalType", "ipNetToPhysicalState"});
    while (rows.next()) {
        sink({addressCell(rows, 2), interfaceCell(rows, 0), linkLayerCell(rows.value(physAddress)),
              labelCell(rows, state), labelCell(rows, type), agoCell(rows, lastUpdated)});
    }
}

} // namespace

const View neighboursView{"neighbours", columns, list};

} // namespace ipmib::cli
