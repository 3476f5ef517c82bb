// SPDX-License-Identifier: BSD-3-Clause
// What the module makes of the platform: each table is walked and compared with the rows that the services list.
#include "chapters.h"
#include "rows.h"

#include <functional>
#include <map>
#include <string>

namespace ipmib::portcheck
{

namespace
{

constexpr std::size_t longestWalk = 5000; // rows

// How many rows the services have for each table; what breaks a promise on the way was told before.
class Expected
{
  public:
    explicit Expected(Probe &probe) : probe_(probe)
    {
        interfaces_ = interfacesOf(probe, Selection::standard);
        rows_["ipv6InterfaceTable"] = count([this](std::uint32_t ifIndex) {
            std::array<std::uint8_t, 8> identifier;
            return probe_.identifier(ifIndex, identifier);
        });
        rows_["ipSystemStatsTable"] = rows_["icmpStatsTable"] = 1;
        rows_["icmpMsgStatsTable"] = 21; // the types that the module serves
        rows_["ipIfStatsTable"] = 2 * interfaces_.size();
        rows_["ipAddressPrefixTable"] = count([this](std::uint32_t ifIndex) {
            return prefixesOf(probe_, ifIndex).size() + (probe_.hasLinkLocalRow(ifIndex) ? 1 : 0);
        });
        rows_["ipAddressTable"] = addressesOf(probe).size() + count([this](std::uint32_t ifIndex) {
                                      FullAddressRecord record;
                                      return probe_.linkLocal(ifIndex, record);
                                  });
        for (const std::uint32_t ifIndex : interfacesOf(probe, Selection::withNeighbours)) {
            for (const NeighbourMode mode : {outsideLinkLocal, withinLinkLocal}) {
                rows_["ipNetToPhysicalTable"] += neighboursOf(probe, ifIndex, mode).size();
            }
        }
        rows_["ipDefaultRouterTable"] =
            routersOf(probe, globalRouters).size() + routersOf(probe, linkLocalRouters).size();
        rows_["ipv6RouterAdvertTable"] = count([this](std::uint32_t ifIndex) {
            NdIfConfigInfo info;
            return probe_.configuration(ifIndex, info);
        });
        probe.forgetSince(broken_);
    }

    std::size_t rowsOf(const std::string &table) const
    {
        const auto found = rows_.find(table);
        return found == rows_.end() ? 0 : found->second;
    }

  private:
    template <typename RowsOfInterface>
    std::size_t count(RowsOfInterface rowsOfInterface)
    {
        std::size_t sum = 0;
        for (const std::uint32_t ifIndex : interfaces_) {
            sum += rowsOfInterface(ifIndex);
        }
        return sum;
    }

    Probe &probe_;
    std::size_t broken_ = probe_.brokenCount();
    std::vector<std::uint32_t> interfaces_;
    std::map<std::string, std::size_t> rows_;
};

bool isReadable(const MibTreeNode &column)
{
    return column.ulParamId != 0 && column.ulAccess != MIB_ACCESS_NOT_ACCESSIBLE && column.ulAccess != MIB_ACCESS_NONE;
}

// The column of a table with this name, or its first one.
const MibTreeNode *columnOf(const MibTreeNode &entry, const char *name)
{
    const MibTreeNode *column = entry.pstFirstChild;
    while (column != nullptr && (name != nullptr ? std::string_view(column->pszName) != name : !isReadable(*column))) {
        column = column->pstNextSibling;
    }
    return column;
}

host::Oid rootOf(const host::Resolver::Region &region, const MibTreeNode &column)
{
    host::Oid root = region.root;
    root.append(column.ulSubId);
    return root;
}

using Look = std::function<void(const host::Variable &)>;

// How many rows a walk of one column shows.
std::size_t walk(Probe &probe, host::Resolver &resolver, const char *table, const char *columnName,
                 host::OidView column, const Look &look)
{
    host::Oid asked{column};
    std::size_t rows = 0;
    for (; rows < longestWalk; ++rows) {
        probe.doing(std::string("the walk of ") + table + " through the module, row " + std::to_string(rows + 1));
        host::Variable variable;
        variable.asked = asked.view();
        resolver.getNext({&variable, 1}, column);
        if (variable.status != host::Status::ok) {
            if (variable.status == host::Status::genErr) {
                probe.broken(Promise::tableAnswers, table,
                             std::string(columnName) + " of row " + std::to_string(rows + 1) +
                                 " of a walk is a genErr: its value leaves its range or type");
            }
            break;
        }
        asked = variable.name;
        look(variable);
    }
    return rows;
}

// All columns of a row that a walk has shown in one request, as a manager asks for them.
void checkGet(Probe &probe, host::Resolver &resolver, const host::Resolver::Region &region, host::OidView row)
{
    const std::string table = region.node->pstParent->pszName;
    const std::size_t columnPlace = region.root.view().size();
    std::vector<host::Oid> names;
    std::vector<const MibTreeNode *> columns;
    for (const MibTreeNode *column = region.node->pstFirstChild; column != nullptr; column = column->pstNextSibling) {
        if (isReadable(*column)) {
            columns.push_back(column);
            host::Oid name = rootOf(region, *column);
            for (const host::SubId subId : row.subspan(columnPlace + 1)) {
                name.append(subId);
            }
            names.push_back(name);
        }
    }
    std::vector<host::Variable> variables(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        variables[i].asked = names[i].view();
    }
    probe.doing("a get of " + table + " through the module");
    resolver.get(variables);
    std::string index;
    for (const host::SubId subId : row.subspan(columnPlace + 1)) {
        index += "." + std::to_string(subId);
    }
    for (std::size_t i = 0; i < variables.size(); ++i) {
        const std::string column = columns[i]->pszName;
        if (variables[i].status == host::Status::genErr) {
            probe.broken(Promise::tableAnswers, table,
                         column + index + " is a genErr: its value leaves its range or type");
        } else if (variables[i].status != host::Status::ok && columns[i] == columnOf(*region.node, nullptr)) {
            probe.broken(Promise::tableGets, table,
                         column + index + " was shown by the walk, and a get does not find it");
        }
    }
}

void checkTable(Probe &probe, host::Resolver &resolver, const host::Resolver::Region &region, const Expected &expected)
{
    const char *table = region.node->pstParent->pszName;
    const MibTreeNode *column = columnOf(*region.node, nullptr);
    const std::size_t rows =
        walk(probe, resolver, table, column->pszName, rootOf(region, *column).view(), [&](const host::Variable &row) {
            const host::Oid name = row.name;
            checkGet(probe, resolver, region, name.view());
        });
    if (rows != longestWalk && rows != expected.rowsOf(table)) {
        probe.broken(Promise::tableComplete, table,
                     "a walk shows " + std::to_string(rows) + " rows, the services have " +
                         std::to_string(expected.rowsOf(table)));
    }
    probe.fact(std::string("  ") + table + ": " + std::to_string(rows) +
               (rows == longestWalk ? " rows and more" : " rows"));
}

void checkPointers(Probe &probe, host::Resolver &resolver, const host::Resolver::Region &region)
{
    const MibTreeNode *column = columnOf(*region.node, "ipAddressPrefix");
    walk(probe, resolver, "ipAddressTable", column->pszName, rootOf(region, *column).view(),
         [&](const host::Variable &row) {
             const auto pointer = row.value.objectId;
             if (pointer.size() >= 2 && pointer[pointer.size() - 1] == 0 && pointer[pointer.size() - 2] == 0) {
                 const host::OidView name = row.name.view();
                 std::uint8_t address[16] = {};
                 for (std::size_t i = 0; i < sizeof address && 12 + i < name.size(); ++i) {
                     address[i] = static_cast<std::uint8_t>(name[12 + i]);
                 }
                 probe.broken(Promise::pointers, "ipAddressTable", "that of " + addressText(address) + " ends in 0.0");
             }
         });
}

} // namespace

void checkTables(Probe &probe, host::Resolver &resolver)
{
    probe.fact("tables through the module:");
    const Expected expected(probe);
    for (const host::Resolver::Region &region : resolver.regions()) {
        if (region.node->ulKind != MIB_NODE_ENTRY) {
            continue;
        }
        checkTable(probe, resolver, region, expected);
        if (std::string_view(region.node->pstParent->pszName) == "ipAddressTable") {
            checkPointers(probe, resolver, region);
        }
    }
}

} // namespace ipmib::portcheck
