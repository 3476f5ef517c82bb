// SPDX-License-Identifier: BSD-3-Clause
// Reads an index part from the syntax of its column.
#include "index_part.h"

#include "oid.h"
#include "syntax.h"

#include <ipmib/message.h>

#include <algorithm>

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

} // namespace ipmib::host
