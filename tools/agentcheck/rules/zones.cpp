// SPDX-License-Identifier: BSD-3-Clause
// The zone of a link-local address is that of its interface, wherever an index has both.
#include "index_key.h"
#include "rules.h"

#include <set>

namespace ipmib::agentcheck
{
namespace
{

bool isInterface(const MibTreeNode &node)
{
    return std::string_view(node.pszName).ends_with("IfIndex");
}

// Of the link-local addresses of an index; those without are told elsewhere.
std::set<std::uint32_t> zonesOf(const IndexKey &key)
{
    constexpr std::size_t withZone = 20;
    std::set<std::uint32_t> zones;
    for (std::size_t part = 0; part < key.columns.size(); ++part) {
        if (key.parts[part].isOctets) {
            const auto octets = key.values.octets(part);
            if (octets.size() == withZone && isLinkLocal(octets)) {
                zones.insert(zoneOf(octets));
            }
        }
    }
    return zones;
}

// The interface that the row is of: it stands in the index, or is this column's value.
std::optional<std::uint32_t> interfaceOf(const MibTreeNode &column, const IndexKey &key, const Value &value)
{
    for (std::size_t part = 0; part < key.columns.size(); ++part) {
        if (isInterface(*key.columns[part])) {
            return key.values.number(part);
        }
    }
    return isInterface(column) && value.tag == Tag::integer && value.number != 0
               ? std::optional(static_cast<std::uint32_t>(value.number))
               : std::nullopt;
}

std::optional<Fault> faultOf(Check &check, const host::Object &column, const Name &name)
{
    const auto key = readIndex(*column.node, instanceOf(name, column));
    const auto value = check.now(name);
    const auto ifIndex = key && value ? interfaceOf(*column.node, *key, *value) : std::nullopt;
    if (!ifIndex) {
        return std::nullopt;
    }
    const Name zones = nameOf(check.objects.named("ipv6ScopeZoneIndexLinkLocal"));
    for (const std::uint32_t zone : zonesOf(*key)) {
        const auto own = zone != 0 ? check.now(extended(zones, host::OidView(&*ifIndex, 1))) : std::nullopt;
        if (own && own->number != zone) {
            return Fault{Rule::zoneOfInterface, "its zone is " + std::to_string(zone) + ", interface " +
                                                    std::to_string(*ifIndex) + " has " + std::to_string(own->number)};
        }
    }
    return std::nullopt;
}

} // namespace

void checkZones(Check &check)
{
    for (const auto &[region, walk] : check.walks) {
        std::set<Name, Ascending> rows; // each is told of once, not in each column
        for (const auto &[name, value] : walk.values) {
            const host::Object &column = *region->objectOf(name);
            const auto key = region->isTable ? readIndex(*column.node, instanceOf(name, column)) : std::nullopt;
            if (!key || zonesOf(*key).empty() || !interfaceOf(*column.node, *key, value)) {
                continue;
            }
            const host::OidView instance = instanceOf(name, column);
            if (rows.emplace(instance.begin(), instance.end()).second) {
                doubt(check, name, [&check, &column, name = name] { return faultOf(check, column, name); });
            }
        }
    }
}

} // namespace ipmib::agentcheck
