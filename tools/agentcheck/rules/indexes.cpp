// SPDX-License-Identifier: BSD-3-Clause
// What stands behind the column in an instance's identifier: the parts of the index, with addresses in their forms.
#include "index_key.h"
#include "rules.h"

#include "host/syntax.h"

#include <algorithm>
#include <set>

namespace ipmib::agentcheck
{
namespace
{

std::string partsText(std::span<const MibTreeNode *const> columns)
{
    std::string text;
    for (const MibTreeNode *column : columns) {
        text += (text.empty() ? "" : ", ") + std::string(column->pszName);
    }
    return text;
}

bool isAddressType(const MibTreeNode &node)
{
    return std::ranges::any_of(host::labelsOf(*node.pstSyntax),
                               [](const MibEnumItem &label) { return std::string_view(label.pszLabel) == "ipv6z"; });
}

bool isPrefixLength(const IndexKey &key, std::size_t part)
{
    const auto isLength = [](std::string_view name) {
        return name.ends_with("PrefixLength") || name.ends_with("PfxLen");
    };
    return part < key.columns.size() && isLength(key.columns[part]->pszName);
}

void checkPrefix(Report &report, const Name &name, std::span<const std::uint8_t> prefix, std::size_t bits)
{
    const std::vector<std::uint8_t> zeros(prefix.size());
    if (bits > prefix.size() * 8) {
        report.broken(Rule::prefixBits, name, std::to_string(bits) + " bits of " + std::to_string(prefix.size() * 8));
        return;
    }
    for (std::size_t bit = bits; bit < prefix.size() * 8; ++bit) {
        if ((prefix[bit / 8] & 0x80 >> bit % 8) != 0) {
            report.broken(Rule::prefixBits, name,
                          "bit " + std::to_string(bit) + " is set behind a prefix of " + std::to_string(bits) +
                              " bits");
            return;
        }
    }
}

// An InetAddress whose type is the part in front of it.
void checkAddress(Report &report, const Name &name, const IndexKey &key, std::size_t part)
{
    const std::uint32_t type = key.values.number(part - 1);
    const auto octets = key.values.octets(part);
    const auto length = lengthOf(type);
    const std::string_view column = key.columns[part]->pszName;
    if (!length || (type == unknownAddress && column.starts_with("ip"))) { // a route or a connection may be without
        report.broken(Rule::addressLength, name, "an address of type " + std::to_string(type));
        return;
    }
    if (octets.size() != *length) {
        report.broken(Rule::addressLength, name,
                      std::to_string(octets.size()) + " octets of an address of type " + std::to_string(type) +
                          ", not " + std::to_string(*length));
        return;
    }
    if (isPrefixLength(key, part + 1)) {
        const std::size_t withoutZone = std::min<std::size_t>(octets.size(), type == ipv4z ? 4 : 16);
        checkPrefix(report, name, octets.first(withoutZone), key.values.number(part + 1));
    } else if (isLinkLocal(octets) && type == ipv6) {
        report.broken(Rule::zone, name, "a link-local address of type ipv6");
    } else if (type == ipv6z && zoneOf(octets) == 0) {
        report.broken(Rule::zone, name, "the zone is 0");
    }
}

// Tables of old have masks in place of lengths.
void checkMask(Report &report, const Name &name, const IndexKey &key)
{
    const auto prefix = key.octets("ipCidrRouteDest");
    const auto mask = key.octets("ipCidrRouteMask");
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        if ((prefix[i] & ~mask[i]) != 0) {
            report.broken(Rule::prefixBits, name, "ipCidrRouteDest has bits that ipCidrRouteMask has not");
            return;
        }
    }
}

void checkIndex(Report &report, const MibTreeNode &column, const Name &name, host::OidView instance)
{
    const auto key = readIndex(column, instance);
    if (!key) {
        report.broken(Rule::index, name, "does not end in " + partsText(indexOf(column)));
        return;
    }
    for (std::size_t part = 0; part < key->columns.size(); ++part) {
        const MibTreeNode &node = *key->columns[part];
        if (!host::labelsOf(*node.pstSyntax).empty() && !host::isAllowed(*node.pstSyntax, key->values.number(part))) {
            report.broken(Rule::index, name,
                          std::string(node.pszName) + " is " + std::to_string(key->values.number(part)) +
                              ", which has no name");
        } else if (part > 0 && key->parts[part].isOctets && isAddressType(*key->columns[part - 1])) {
            checkAddress(report, name, *key, part);
        }
    }
    if (std::string_view(column.pstParent->pszName) == "ipCidrRouteEntry") {
        checkMask(report, name, *key);
    }
}

// A column that is part of the index.
void checkIndexValue(Report &report, const MibTreeNode &column, const Name &name, host::OidView instance,
                     const Value &value)
{
    const auto columns = indexOf(column);
    const auto place = std::ranges::find(columns, &column);
    const auto key = place == columns.end() ? std::nullopt : readIndex(column, instance);
    if (!key || value.tag != tagOf(column)) {
        return;
    }
    const auto part = static_cast<std::size_t>(place - columns.begin());
    const bool isSame = key->parts[part].isOctets ? std::ranges::equal(key->values.octets(part), value.octets)
                                                  : key->values.number(part) == value.number;
    if (!isSame) {
        report.broken(Rule::indexValue, name, "is " + textOf(value));
    }
}

} // namespace

void checkIndexes(Check &check)
{
    for (const auto &[region, walk] : check.walks) {
        std::set<Name, Ascending> rows; // each is told of once, not in each column
        for (const auto &[name, value] : walk.values) {
            const host::Object &object = *region->objectOf(name);
            const host::OidView instance = instanceOf(name, object);
            if (!region->isTable) {
                if (instance.size() != 1 || instance[0] != 0) {
                    check.report.broken(Rule::scalarIndex, name, "is an instance of a scalar");
                }
                continue;
            }
            if (rows.emplace(instance.begin(), instance.end()).second) {
                checkIndex(check.report, *object.node, name, instance);
            }
            checkIndexValue(check.report, *object.node, name, instance, value);
        }
    }
}

} // namespace ipmib::agentcheck
