// SPDX-License-Identifier: BSD-3-Clause
// Instance identifiers: a number is one sub-identifier; octets are one each, with their length in front unless it is
// fixed.
#include "row_key.h"

#include "oid.h"
#include "syntax.h"

#include <ipmib/message.h>

#include <algorithm>
#include <cstring>

namespace ipmib::host
{
namespace
{

// Sub-identifiers are not negative, whatever the column's range is.
std::uint32_t atLeastZero(std::int32_t bound)
{
    return static_cast<std::uint32_t>(std::max(bound, 0));
}

} // namespace

std::optional<IndexPart> indexPart(const MibTreeNode &column)
{
    if (!column.pstSyntax) {
        return std::nullopt;
    }
    IndexPart part{column.ulParamId, VT_INTEGER, false, false, 0, INT32_MAX};
    const auto ranges = rangesOf(*column.pstSyntax);
    switch (column.pstSyntax->ulType) {
    case MIB_TYPE_ENUM:
        // Labels do not limit which values are asked for: what follows an unlisted one is the module's to say.
        return part;
    case MIB_TYPE_INTEGER:
    case MIB_TYPE_INTEGER32:
        if (!ranges.empty()) {
            part.low = atLeastZero(ranges.front().lLow);
            part.high = atLeastZero(ranges.back().lHigh);
        }
        return part;
    case MIB_TYPE_UNSIGNED32:
    case MIB_TYPE_TIMETICKS:
        part.valueType = column.pstSyntax->ulType == MIB_TYPE_TIMETICKS ? VT_TIMETICKS : VT_UNSIGNED32;
        part.low = ranges.empty() ? 0 : static_cast<std::uint32_t>(ranges.front().lLow);
        part.high = ranges.empty() ? UINT32_MAX : static_cast<std::uint32_t>(ranges.back().lHigh);
        return part;
    case MIB_TYPE_OCTETS:
    case MIB_TYPE_IPADDRESS: {
        part.valueType = VT_OCTETS;
        part.isOctets = true;
        const bool isAddress = column.pstSyntax->ulType == MIB_TYPE_IPADDRESS;
        // An identifier holds no more than this many octets.
        constexpr std::uint32_t longest = maxOidLength;
        part.low = isAddress ? 4 : ranges.empty() ? 0 : std::min(longest, atLeastZero(ranges.front().lLow));
        part.high = isAddress ? 4 : ranges.empty() ? longest : std::min(longest, atLeastZero(ranges.back().lHigh));
        part.hasFixedLength = isAddress || (part.low == part.high && ranges.size() == 1);
        return part;
    }
    case MIB_TYPE_OID:
        part.high = maxIndexIds;
        part.isObjectId = true;
        return part;
    default:
        return std::nullopt;
    }
}

Oid RowKey::objectId(std::size_t part) const
{
    Oid identifier;
    const std::span<SubId> ids = identifier.extend(numbers_[part]);
    std::memcpy(ids.data(), octets_[part].data(), ids.size_bytes());
    return identifier;
}

void RowKey::setObjectId(std::size_t part, OidView identifier)
{
    numbers_[part] = static_cast<std::uint32_t>(identifier.size());
    std::memcpy(octets_[part].data(), identifier.data(), identifier.size_bytes());
}

bool isSame(const IndexParts &parts, const RowKey &left, const RowKey &right)
{
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (left.number(i) != right.number(i) ||
            (parts[i].isOctets && !std::ranges::equal(left.octets(i), right.octets(i)))) {
            return false;
        }
    }
    return true;
}

bool appendKey(const IndexParts &parts, const RowKey &key, Oid &name)
{
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!parts[i].hasFixedLength && !name.append(key.number(i))) {
            return false;
        }
        if (parts[i].isObjectId && !name.append(key.objectId(i).view())) {
            return false;
        }
        if (!parts[i].isOctets) {
            continue;
        }
        const auto octets = key.octets(i);
        const std::span<SubId> place = name.extend(octets.size());
        if (place.size() != octets.size()) {
            return false;
        }
        std::ranges::copy(octets, place.begin());
    }
    return true;
}

bool readKey(const IndexParts &parts, OidView instance, RowKey &key)
{
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const IndexPart &part = parts[i];
        SubId number = part.low;
        if (!part.hasFixedLength) {
            if (instance.empty()) {
                return false;
            }
            number = instance.front();
            instance = instance.subspan(1);
        }
        if (number < part.low || number > part.high) {
            return false;
        }
        key.setNumber(i, number);
        if (part.isObjectId) {
            if (instance.size() < number) {
                return false;
            }
            key.setObjectId(i, instance.first(number));
            instance = instance.subspan(number);
        }
        if (!part.isOctets) {
            continue;
        }
        if (instance.size() < number) {
            return false;
        }
        SubId all = 0;
        const std::span<std::uint8_t> octets = key.resizeOctets(i, number);
        for (std::size_t at = 0; at < octets.size(); ++at) {
            octets[at] = static_cast<std::uint8_t>(instance[at]);
            all |= instance[at];
        }
        if (all > UINT8_MAX) {
            return false;
        }
        instance = instance.subspan(number);
    }
    return instance.empty();
}

} // namespace ipmib::host
