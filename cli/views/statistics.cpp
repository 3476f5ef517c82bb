// SPDX-License-Identifier: BSD-3-Clause
// Traffic of the system and of each interface, one row for each.
#include "view.h"

#include <vector>

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn statisticsColumns[] = {
    {"INTERFACE", "interface"},
    {"VERSION", "version"},
    {"RECEIVED", "received", Align::right},
    {"OCTETS IN", "octetsIn", Align::right, 1},
    {"DISCARDED IN", "discardedIn", Align::right, 4},
    {"HEADER ERRORS", "headerErrors", Align::right, 5},
    {"FORWARDED", "forwarded", Align::right, 3},
    {"SENT", "sent", Align::right},
    {"OCTETS OUT", "octetsOut", Align::right, 2},
    {"DISCARDED OUT", "discardedOut", Align::right, 6},
};

// The counters of both tables have the same names behind the tables' own.
std::vector<std::string> counters(const std::string &table)
{
    std::vector<std::string> names;
    for (const char *name : {"HCInReceives", "HCInOctets", "InDiscards", "InHdrErrors", "HCOutForwDatagrams",
                             "HCOutTransmits", "HCOutOctets", "OutDiscards"}) {
        names.push_back(table + name);
    }
    return names;
}

Row withCounters(Row row, const TableReader &rows, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        row.push_back(counterCell(rows, i));
    }
    return row;
}

void listStatistics(LocalDevice &device, const std::string &, const Sink &sink)
{
    const std::vector<std::string> ofSystem = counters("ipSystemStats");
    TableReader system(device, "ipSystemStatsEntry", {ofSystem.begin(), ofSystem.end()});
    while (system.next()) {
        sink(withCounters({textCell("system"), indexLabelCell(system, 0)}, system, ofSystem.size()));
    }
    const std::vector<std::string> ofInterface = counters("ipIfStats");
    TableReader interfaces(device, "ipIfStatsEntry", {ofInterface.begin(), ofInterface.end()});
    while (interfaces.next()) {
        sink(withCounters({interfaceCell(interfaces, 1), indexLabelCell(interfaces, 0)}, interfaces,
                          ofInterface.size()));
    }
}

} // namespace

const View statisticsView{"statistics", statisticsColumns, listStatistics};

} // namespace ipmib::cli
