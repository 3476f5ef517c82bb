// SPDX-License-Identifier: BSD-3-Clause
// Instance identifiers: a number is one sub-identifier; octets are one each, with their length in front unless it is
// fixed.
#include "row_key.h"

#include <algorithm>
#include <cstring>

namespace ipmib::host
{

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
