// SPDX-License-Identifier: BSD-3-Clause
// Checks a module's values against the syntax of their objects, so that no wrong one leaves.
#include "syntax.h"

#include <algorithm>

namespace ipmib::host
{
namespace
{

// How the syntax types of the tree appear in replies and on the wire.
struct Mapping {
    std::uint32_t syntax;
    std::uint32_t reply;
    ValueType wire;
};
constexpr Mapping mappings[] = {
    {MIB_TYPE_INTEGER, VT_INTEGER, ValueType::integer32},
    {MIB_TYPE_INTEGER32, VT_INTEGER, ValueType::integer32},
    {MIB_TYPE_ENUM, VT_INTEGER, ValueType::integer32},
    {MIB_TYPE_UNSIGNED32, VT_UNSIGNED32, ValueType::unsigned32},
    {MIB_TYPE_COUNTER32, VT_COUNTER32, ValueType::counter32},
    {MIB_TYPE_COUNTER64, VT_COUNTER64, ValueType::counter64},
    {MIB_TYPE_TIMETICKS, VT_TIMETICKS, ValueType::timeTicks},
    {MIB_TYPE_OCTETS, VT_OCTETS, ValueType::octets},
    {MIB_TYPE_OID, VT_OID, ValueType::objectId},
    {MIB_TYPE_IPADDRESS, VT_OCTETS, ValueType::ipAddress},
};

// Identifiers with fewer sub-identifiers cannot be encoded.
constexpr std::size_t minOidLength = 2;

constexpr std::size_t ipAddressLength = 4;

// The number as the declared range sees it: signed, except for the unsigned types.
bool isWithinBounds(const MibRangeItem &range, const MibSyntax &syntax, std::uint64_t number)
{
    const auto word = static_cast<std::uint32_t>(number);
    if (syntax.ulType == MIB_TYPE_UNSIGNED32 || syntax.ulType == MIB_TYPE_OCTETS) {
        return word >= static_cast<std::uint32_t>(range.lLow) && word <= static_cast<std::uint32_t>(range.lHigh);
    }
    const auto number32 = static_cast<std::int32_t>(word);
    return number32 >= range.lLow && number32 <= range.lHigh;
}

} // namespace

std::span<const MibRangeItem> rangesOf(const MibSyntax &syntax)
{
    const MibRestriction *restriction = syntax.pstRestrict;
    if (!restriction || restriction->ulRestrictKind != MIB_RESTRICT_RANGE) {
        return {};
    }
    return {static_cast<const MibRangeItem *>(restriction->pstRanges->pItems), restriction->ulCount};
}

std::span<const MibEnumItem> labelsOf(const MibSyntax &syntax)
{
    const MibRestriction *restriction = syntax.pstRestrict;
    if (!restriction || restriction->ulRestrictKind != MIB_RESTRICT_ENUM) {
        return {};
    }
    return {static_cast<const MibEnumItem *>(restriction->pstEnums->pItems), restriction->ulCount};
}

bool isAllowed(const MibSyntax &syntax, std::uint64_t number)
{
    if (const auto labels = labelsOf(syntax); !labels.empty()) {
        return std::any_of(labels.begin(), labels.end(), [number](const MibEnumItem &label) {
            return static_cast<std::uint32_t>(label.lValue) == number;
        });
    }
    const auto ranges = rangesOf(syntax);
    return ranges.empty() || std::any_of(ranges.begin(), ranges.end(), [&syntax, number](const MibRangeItem &range) {
               return isWithinBounds(range, syntax, number);
           });
}

std::optional<Value> checkedValue(const MibSyntax &syntax, const ReplyValue &value)
{
    const auto mapping = std::find_if(std::begin(mappings), std::end(mappings),
                                      [&syntax](const Mapping &each) { return each.syntax == syntax.ulType; });
    if (mapping == std::end(mappings) || mapping->reply != value.type) {
        return std::nullopt;
    }
    Value checked{mapping->wire, value.number, {}, {}};
    switch (value.type) {
    case VT_OID:
        checked.objectId = {reinterpret_cast<const SubId *>(value.bytes.data()), value.bytes.size() / sizeof(SubId)};
        if (checked.objectId.size() < minOidLength || checked.objectId.size() > maxOidLength) {
            return std::nullopt;
        }
        return checked;
    case VT_OCTETS:
        checked.octets = value.bytes;
        if (syntax.ulType == MIB_TYPE_IPADDRESS && value.bytes.size() != ipAddressLength) {
            return std::nullopt;
        }
        return isAllowed(syntax, value.bytes.size()) ? std::optional(checked) : std::nullopt;
    default:
        return isAllowed(syntax, value.number) ? std::optional(checked) : std::nullopt;
    }
}

} // namespace ipmib::host
