// SPDX-License-Identifier: BSD-3-Clause
// Each value by itself: its type, its range, and that it may be read at all.
#include "index_key.h"
#include "rules.h"

#include "host/syntax.h"

#include <algorithm>

namespace ipmib::agentcheck
{
namespace
{

std::string rangesText(const MibTreeNode &node)
{
    std::string text;
    for (const MibRangeItem &range : host::rangesOf(*node.pstSyntax)) {
        text += (text.empty() ? "" : " or ") + std::to_string(range.lLow) + " to " + std::to_string(range.lHigh);
    }
    return text;
}

constexpr std::uint64_t notReady = 3;

bool isRowStatus(const MibTreeNode &node)
{
    return std::ranges::any_of(host::labelsOf(*node.pstSyntax),
                               [](const MibEnumItem &label) { return std::string_view(label.pszLabel) == "notReady"; });
}

// The type of the address is the first part of the index.
bool isIpv6Broadcast(const MibTreeNode &node, const Name &name, const Value &value)
{
    constexpr std::uint64_t broadcast = 3;
    constexpr std::size_t place = 10; // behind 1.3.6.1.2.1.4.34.1.4
    return std::string_view(node.pszName) == "ipAddressType" && value.number == broadcast && name.size() > place &&
           (name[place] == ipv6 || name[place] == ipv6z);
}

void checkValue(Report &report, const MibTreeNode &node, const Name &name, const Value &value)
{
    if (node.ulAccess == MIB_ACCESS_NOT_ACCESSIBLE) {
        report.broken(Rule::accessible, name, "has a value");
        return;
    }
    constexpr std::size_t addressLength = 4;
    const Tag declared = tagOf(node);
    if (value.tag != declared || (declared == Tag::ipAddress && value.octets.size() != addressLength)) {
        report.broken(Rule::type, name, textOf(value.tag) + " " + textOf(value) + ", not " + textOf(declared));
        return;
    }
    if (isIpv6Broadcast(node, name, value)) {
        report.broken(Rule::ipv6Broadcast, name, "is broadcast(3)");
    }
    if (isRowStatus(node) && value.number > notReady) {
        report.broken(Rule::rowStatus, name, "is " + textOf(value));
        return;
    }
    const std::uint64_t number = declared == Tag::octets ? value.octets.size() : value.number;
    if (host::isAllowed(*node.pstSyntax, number)) {
        return;
    }
    if (!host::labelsOf(*node.pstSyntax).empty()) {
        report.broken(Rule::label, name, textOf(value) + " has no name");
    } else {
        report.broken(Rule::range, name, textOf(value) + ", not " + rangesText(node));
    }
}

} // namespace

void checkValues(Check &check)
{
    for (const auto &[region, walk] : check.walks) {
        for (const auto &[name, value] : walk.values) {
            checkValue(check.report, *region->objectOf(name)->node, name, value);
        }
    }
}

} // namespace ipmib::agentcheck
