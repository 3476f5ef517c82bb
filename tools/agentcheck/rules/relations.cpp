// SPDX-License-Identifier: BSD-3-Clause
// Two columns of a row of which one says what the other may be.
#include "rules.h"

namespace ipmib::agentcheck
{
namespace
{

struct Relation {
    Rule rule;
    const char *table; // of the first column
    const char *first;
    const char *second; // with the same index
    bool (*holds)(std::uint64_t first, std::uint64_t second);
};

bool isSameSpeed(std::uint64_t bits, std::uint64_t megabits)
{
    constexpr std::uint64_t million = 1000000;
    const std::uint64_t wide = megabits * million;
    return bits == UINT32_MAX ? wide + million / 2 >= UINT32_MAX
                              : bits <= wide + million / 2 && wide <= bits + million / 2;
}

const Relation relations[] = {
    {Rule::speeds, "ifTable", "ifSpeed", "ifHighSpeed", isSameSpeed},
    {Rule::lifetimes, "ipAddressPrefixTable", "ipAddressPrefixAdvPreferredLifetime", "ipAddressPrefixAdvValidLifetime",
     [](std::uint64_t preferred, std::uint64_t valid) { return preferred <= valid; }},
    {Rule::intervals, "ipv6RouterAdvertTable", "ipv6RouterAdvertMinInterval", "ipv6RouterAdvertMaxInterval",
     [](std::uint64_t least, std::uint64_t greatest) { return 4 * least <= 3 * greatest; }},
    {Rule::intervals, "ipv6RouterAdvertTable", "ipv6RouterAdvertDefaultLifetime", "ipv6RouterAdvertMaxInterval",
     [](std::uint64_t lifetime, std::uint64_t greatest) { return lifetime == 0 || lifetime >= greatest; }},
    {Rule::changes, "ipAddressTable", "ipAddressCreated", "ipAddressLastChanged",
     [](std::uint64_t created, std::uint64_t changed) { return created <= changed || changed == 0; }},
    {Rule::timeouts, "tcp", "tcpRtoMin", "tcpRtoMax",
     [](std::uint64_t least, std::uint64_t greatest) { return least <= greatest; }},
};

} // namespace

void checkRelations(Check &check)
{
    for (const Relation &relation : relations) {
        const host::Object &first = check.objects.named(relation.first);
        const host::Object &second = check.objects.named(relation.second);
        for (const auto &[name, value] : check.walked(relation.table).values) {
            if (!host::isWithin(name, first.oid.view())) {
                continue;
            }
            const Name other = extended(nameOf(second), instanceOf(name, first));
            doubt(check, name, [=, name = name, &check]() -> std::optional<Fault> {
                const auto found = check.exchange.get({name, other});
                if (!found[0] || !found[1] || found[0]->value.tag != tagOf(*first.node) ||
                    found[1]->value.tag != tagOf(*second.node) ||
                    relation.holds(found[0]->value.number, found[1]->value.number)) {
                    return std::nullopt;
                }
                return Fault{relation.rule, "is " + textOf(found[0]->value) + ", and " + relation.second + " is " +
                                                textOf(found[1]->value)};
            });
        }
    }
}

} // namespace ipmib::agentcheck
