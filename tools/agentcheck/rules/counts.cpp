// SPDX-License-Identifier: BSD-3-Clause
// Scalars that say how many rows a table has.
#include "rules.h"

namespace ipmib::agentcheck
{
namespace
{

struct Count {
    const char *scalar;
    const char *table;
};
constexpr Count counts[] = {
    {"ifNumber", "ifTable"},
    {"ipCidrRouteNumber", "ipCidrRouteTable"},
    {"inetCidrRouteNumber", "inetCidrRouteTable"},
};

void checkCount(Check &check, const Count &count)
{
    const Walk &walk = check.walked(count.table);
    const Name number = extended(nameOf(check.objects.named(count.scalar)), std::vector<host::SubId>{0});
    if (walk.isBroken || (walk.values.empty() && check.value(number) == nullptr)) {
        return;
    }
    // One column is enough to count by.
    Region column = *check.objects.region(count.table);
    column.objects = {walk.values.empty() ? column.objects.front() : column.objectOf(walk.values.begin()->first)};
    column.root = nameOf(*column.objects.front());
    Walker walker(check.exchange, check.report, check.settings.rows);
    doubt(check, number, [=, &check]() mutable -> std::optional<Fault> {
        const auto before = check.now(number);
        const Walk rows = walker.byGetNext(column);
        const auto after = check.now(number);
        const std::size_t seen = rows.values.size();
        if (!before || before != after || rows.isBroken || before->number == seen ||
            (rows.isCut && before->number > seen)) {
            return std::nullopt;
        }
        return Fault{Rule::count, "is " + textOf(*before) + ", and " + count.table + " has " +
                                      (rows.isCut ? "more than " : "") + std::to_string(seen) + " rows"};
    });
}

} // namespace

void checkCounts(Check &check)
{
    for (const Count &count : counts) {
        if (check.walks.contains(check.objects.region(count.table))) {
            checkCount(check, count);
        }
    }
}

} // namespace ipmib::agentcheck
