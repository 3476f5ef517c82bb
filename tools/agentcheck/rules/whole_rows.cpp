// SPDX-License-Identifier: BSD-3-Clause
// Rows without holes, in tables of which a row has all columns or is not there. Tables of counters are none of them:
// what is not counted for one interface may be for another.
#include "rules.h"

#include <map>
#include <set>

namespace ipmib::agentcheck
{
namespace
{

constexpr const char *wholeTables[] = {
    "ipAddressTable",       "ipAddressPrefixTable",  "ipNetToPhysicalTable",
    "ipDefaultRouterTable", "ipv6RouterAdvertTable", "ipv6InterfaceTable",
    "inetCidrRouteTable",   "tcpConnectionTable",    "tcpListenerTable",
};

void checkTable(Check &check, const Region &region, const Walk &walk)
{
    std::map<const host::Object *, std::set<Name, Ascending>> columns; // the rows of each that has any
    std::map<Name, const host::Object *, Ascending> rows;              // and of all, with the first column of each
    for (const auto &[name, value] : walk.values) {
        const host::Object *const column = region.objectOf(name);
        if (column->node->ulAccess == MIB_ACCESS_NOT_ACCESSIBLE) {
            continue; // wrong to be there at all
        }
        const host::OidView instance = instanceOf(name, *column);
        const Name row(instance.begin(), instance.end());
        columns[column].insert(row);
        rows.emplace(row, column);
    }
    for (const auto &[column, instances] : columns) {
        for (const auto &[row, first] : rows) {
            if (instances.contains(row)) {
                continue;
            }
            const Name missing = extended(nameOf(*column), row);
            const Name there = extended(nameOf(*first), row);
            doubt(check, missing, [=, &check]() -> std::optional<Fault> {
                const auto found = check.exchange.get({missing, there});
                if (!found[0] || !found[1] || !found[0]->value.isException() || found[1]->value.isException()) {
                    return std::nullopt;
                }
                return Fault{Rule::wholeRows, "is not there, and " + check.objects.text(there) + " is"};
            });
        }
    }
}

} // namespace

void checkWholeRows(Check &check)
{
    for (const char *table : wholeTables) {
        const Walk &walk = check.walked(table);
        if (!walk.isCut && !walk.isBroken) {
            checkTable(check, *check.objects.region(table), walk);
        }
    }
}

} // namespace ipmib::agentcheck
