// SPDX-License-Identifier: BSD-3-Clause
// ifTable, which all other rows speak of by ifIndex, and the tables that stand beside it.
#include "index_key.h"
#include "rules.h"

#include <algorithm>
#include <set>

namespace ipmib::agentcheck
{
namespace
{

bool isInterface(const MibTreeNode &node)
{
    const std::string_view name = node.pszName;
    return name.ends_with("IfIndex") || name == "ifIndex" || name == "ifStackHigherLayer" ||
           name == "ifStackLowerLayer";
}

// The columns of the region that have values.
std::set<const host::Object *> columnsOf(const Region &region, const Walk &walk)
{
    std::set<const host::Object *> columns;
    for (const auto &[name, value] : walk.values) {
        columns.insert(region.objectOf(name));
    }
    return columns;
}

// Whether a table that is indexed by ifIndex has a row, as GET finds it.
bool hasRow(Check &check, const std::string &table, std::uint32_t ifIndex)
{
    const Region &region = *check.objects.region(table);
    std::vector<Name> names;
    for (const host::Object *column : columnsOf(region, check.walked(table))) {
        names.push_back(extended(nameOf(*column), host::OidView(&ifIndex, 1)));
    }
    return std::ranges::any_of(check.exchange.get(names),
                               [](const auto &found) { return found && !found->value.isException(); });
}

std::set<std::uint32_t> rowsOf(const Check &check, const std::string &table)
{
    std::set<std::uint32_t> rows;
    for (const auto &[name, value] : check.walked(table).values) {
        rows.insert(name.back());
    }
    return rows;
}

// The interfaces that a variable speaks of, in its index and in its value; 0 is none.
std::set<std::uint32_t> interfacesOf(const host::Object &object, const Name &name, const Value &value)
{
    std::set<std::uint32_t> found;
    if (const auto key = readIndex(*object.node, instanceOf(name, object))) {
        for (std::size_t part = 0; part < key->columns.size(); ++part) {
            if (isInterface(*key->columns[part])) {
                found.insert(key->values.number(part));
            }
        }
    }
    if (isInterface(*object.node) && value.tag == Tag::integer) {
        found.insert(static_cast<std::uint32_t>(value.number));
    }
    found.erase(0);
    return found;
}

void checkRows(Check &check, const Region &region, const Walk &walk, const std::set<std::uint32_t> &known)
{
    std::set<std::uint32_t> told; // of each that is unknown a table is told of once
    for (const auto &[name, value] : walk.values) {
        for (const std::uint32_t ifIndex : interfacesOf(*region.objectOf(name), name, value)) {
            if (known.contains(ifIndex) || !told.insert(ifIndex).second) {
                continue;
            }
            doubt(check, name, [=, name = name, &check]() -> std::optional<Fault> {
                const auto still = check.now(name);
                const bool speaks = still && interfacesOf(*region.objectOf(name), name, *still).contains(ifIndex);
                if (!speaks || hasRow(check, "ifTable", ifIndex)) {
                    return std::nullopt;
                }
                return Fault{Rule::interfaceExists, "ifTable has no row for interface " + std::to_string(ifIndex)};
            });
        }
    }
}

void checkAugmentation(Check &check, const std::string &table, const std::string &other)
{
    const std::set<std::uint32_t> known = rowsOf(check, other);
    for (const std::uint32_t ifIndex : rowsOf(check, table)) {
        if (known.contains(ifIndex)) {
            continue;
        }
        const Name row = extended(check.objects.region(other)->root, std::vector<host::SubId>{1, ifIndex});
        doubt(check, row, [=, &check]() -> std::optional<Fault> {
            if (hasRow(check, other, ifIndex) || !hasRow(check, table, ifIndex)) {
                return std::nullopt;
            }
            return Fault{Rule::augments, "there is no such row, and there is one in " + table};
        });
    }
}

} // namespace

void checkInterfaces(Check &check)
{
    if (check.walked("ifTable").values.empty()) {
        check.report.fact("ifTable is empty or was not looked at: whether interfaces exist was not looked at, either");
        return;
    }
    const std::set<std::uint32_t> known = rowsOf(check, "ifTable");
    for (const auto &[region, walk] : check.walks) {
        if (region->isTable && region->name != "ifTable" && region->name != "ifXTable") {
            checkRows(check, *region, walk, known);
        }
    }
    if (!check.walked("ifXTable").values.empty()) {
        checkAugmentation(check, "ifTable", "ifXTable");
        checkAugmentation(check, "ifXTable", "ifTable");
    }
}

} // namespace ipmib::agentcheck
