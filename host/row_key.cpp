// SPDX-License-Identifier: BSD-3-Clause
// Instance identifiers: a number is one sub-identifier; octets are one each, with their length in front unless it is
// fixed.
#include "row_key.h"

#include <algorithm>

namespace ipmib::host
{

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
        if (!parts[i].isOctets) {
            continue;
        }
        for (const std::uint8_t octet : key.octets(i)) {
            if (!name.append(octet)) {
                return false;
            }
        }
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
        if (!part.isOctets) {
            continue;
        }
        if (instance.size() < number) {
            return false;
        }
        for (std::uint8_t &octet : key.resizeOctets(i, number)) {
            if (instance.front() > UINT8_MAX) {
                return false;
            }
            octet = static_cast<std::uint8_t>(instance.front());
            instance = instance.subspan(1);
        }
    }
    return instance.empty();
}

} // namespace ipmib::host
