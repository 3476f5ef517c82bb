// SPDX-License-Identifier: BSD-3-Clause
// All traffic counters of the system or of one interface, one row for each, with both versions side by side.
#include "local_device.h"
#include "view.h"

#include "host/tree_check.h"

#include <ipmib/platform_ip.h>

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <vector>

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn counterColumns[] = {
    {"COUNTER", "counter"},
    {"IPV4", "ipv4", Align::right},
    {"IPV6", "ipv6", Align::right},
};
constexpr ListingColumn counterColumnsOfIpv4[] = {counterColumns[0], counterColumns[1]};
constexpr ListingColumn counterColumnsOfIpv6[] = {counterColumns[0], counterColumns[2]};

struct ServedCounter {
    const Object *object;
    std::string name; // without the table's, and without the mark of 64 bits
};

// Those that are served; of one that is there twice, the one with 64 bits.
std::vector<ServedCounter> countersOf(const ObjectTree &tree, const Object &entry, const std::string &table)
{
    constexpr std::string_view wideMark = "HC";
    std::vector<ServedCounter> counters;
    for (const Object &object : tree.objects()) {
        const bool counted = object.node->pstParent == entry.node && object.isServed &&
                             (object.node->pstSyntax->ulType == MIB_TYPE_COUNTER32 ||
                              object.node->pstSyntax->ulType == MIB_TYPE_COUNTER64);
        if (!counted) {
            continue;
        }
        const std::string name = std::string(object.node->pszName).substr(table.size());
        const Object *wide = tree.named(std::string(table).append(wideMark).append(name));
        if (wide == nullptr || !wide->isServed) {
            counters.push_back({&object, name.starts_with(wideMark) ? name.substr(wideMark.size()) : name});
        }
    }
    return counters;
}

// The counters' cells of one row; empty when there is no such row.
Row readRow(LocalDevice &device, const std::vector<ServedCounter> &counters, host::OidView instance)
{
    std::vector<host::Oid> asked;
    for (const ServedCounter &counter : counters) {
        asked.push_back(counter.object->oid);
        asked.back().append(instance);
    }
    std::vector<host::Variable> variables(asked.size());
    for (std::size_t i = 0; i < asked.size(); ++i) {
        variables[i].asked = asked[i].view();
    }
    device.get(variables);
    Row row;
    bool exists = false;
    for (const host::Variable &variable : variables) {
        exists = exists || variable.status == host::Status::ok;
        row.push_back(variable.status == host::Status::ok ? counterCell(variable.value) : emptyCell());
    }
    return exists ? row : Row{};
}

void listCounters(LocalDevice &device, const std::string &name, const Sink &sink)
{
    const bool ofSystem = name.empty() || name == "system";
    const std::string table = ofSystem ? "ipSystemStats" : "ipIfStats";
    const std::uint32_t ifIndex = ofSystem ? 0 : device.interfaceIndex(name);
    const Object *entry = device.tree().named(table + "Entry");
    if (entry == nullptr) {
        throw std::runtime_error("the module has no object " + table + "Entry");
    }
    const std::vector<ServedCounter> counters = countersOf(device.tree(), *entry, table);
    std::vector<Row> rows;
    for (const host::SubId version : {IPMIB_IPV4, IPMIB_IPV6}) {
        if (device.shown() == Version::both ||
            device.shown() == (version == IPMIB_IPV4 ? Version::ipv4 : Version::ipv6)) {
            const host::SubId instance[] = {version, ifIndex};
            rows.push_back(readRow(device, counters, {instance, ofSystem ? 1u : 2u}));
        }
    }
    if (std::ranges::all_of(rows, &Row::empty)) {
        throw std::runtime_error("there are no statistics of " + (ofSystem ? "the system" : name));
    }
    for (std::size_t i = 0; i < counters.size(); ++i) {
        Row row{textCell(counters[i].name)};
        for (const Row &version : rows) {
            row.push_back(version.empty() ? emptyCell() : version[i]);
        }
        sink(row);
    }
}

} // namespace

const View countersView{"statistics", counterColumns, listCounters, true};
const View ipv4CountersView{"statistics", counterColumnsOfIpv4, listCounters, true};
const View ipv6CountersView{"statistics", counterColumnsOfIpv6, listCounters, true};

} // namespace ipmib::cli
