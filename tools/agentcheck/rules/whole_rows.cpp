// SPDX-License-Identifier: BSD-3-Clause
// Rows without holes, in tables of which a row has all columns or is not there. Tables of counters are none of them:
// what is not counted for one interface may be for another.
#include "rules.h"

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

using Instances = std::set<Name, Ascending>;

// The instances of each column that has any.
std::map<const host::Object *, Instances> columnsOf(const Region &region, const Walk &walk)
{
    std::map<const host::Object *, Instances> columns;
    for (const auto &[name, value] : walk.values) {
        const host::Object *const column = region.objectOf(name);
        if (column->node->ulAccess == MIB_ACCESS_NOT_ACCESSIBLE) {
            continue; // wrong to be there at all
        }
        const host::OidView instance = instanceOf(name, *column);
        columns[column].emplace(instance.begin(), instance.end());
    }
    return columns;
}

void checkTable(Check &check, const Region &region, const Walk &walk)
{
    const auto columns = columnsOf(region, walk);
    for (const auto &[column, instances] : columns) {
        for (const auto &[other, others] : columns) {
            for (const Name &row : others) {
                if (instances.contains(row)) {
                    continue;
                }
                const Name missing = extended(nameOf(*column), row);
                const Name there = extended(nameOf(*other), row);
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
