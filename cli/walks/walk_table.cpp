// SPDX-License-Identifier: BSD-3-Clause
// The rows of a table in a recording.
#include "walks/walk_table.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace ipmib::cli
{
namespace
{

using support::RecordedType;

// JSON has no other texts.
bool isUtf8(const std::string &text)
{
    try {
        static_cast<void>(nlohmann::json(text).dump());
        return true;
    } catch (const nlohmann::json::exception &) {
        return false;
    }
}

} // namespace

const RecordedObject *WalkRow::find(std::uint32_t column) const
{
    const auto found = columns_.find(column);
    return found == columns_.end() ? nullptr : found->second;
}

std::optional<std::uint64_t> WalkRow::number(std::uint32_t column) const
{
    const RecordedObject *object = find(column);
    const bool isNumber = object != nullptr && object->type != RecordedType::octets &&
                          object->type != RecordedType::objectId && object->type != RecordedType::ipAddress &&
                          object->type != RecordedType::opaque;
    return isNumber ? std::optional(object->number) : std::nullopt;
}

std::optional<std::string> WalkRow::octets(std::uint32_t column) const
{
    const RecordedObject *object = find(column);
    const bool isThere =
        object != nullptr && (object->type == RecordedType::octets || object->type == RecordedType::ipAddress);
    return isThere ? std::optional(object->octets) : std::nullopt;
}

std::optional<std::string> WalkRow::text(std::uint32_t column) const
{
    const auto octets = this->octets(column);
    const bool isText = octets && !octets->empty() && octets->find('\0') == std::string::npos && isUtf8(*octets);
    return isText ? octets : std::nullopt;
}

std::optional<Identifier> WalkRow::identifier(std::uint32_t column) const
{
    const RecordedObject *object = find(column);
    return object != nullptr && object->type == RecordedType::objectId ? std::optional(object->objectId) : std::nullopt;
}

WalkRows rowsBelow(const Recording &recording, const Identifier &entry)
{
    WalkRows rows;
    auto at = placeOf(recording, entry);
    for (; at != recording.end() && support::beginsWith(at->name, entry); ++at) {
        if (at->name.size() > entry.size() + 1) {
            const auto column = at->name.begin() + static_cast<std::ptrdiff_t>(entry.size());
            rows[Identifier(column + 1, at->name.end())].add(*column, *at);
        }
    }
    return rows;
}

WalkRow scalarsBelow(const Recording &recording, const Identifier &group)
{
    const WalkRows rows = rowsBelow(recording, group);
    const auto found = rows.find(Identifier{0});
    return found == rows.end() ? WalkRow() : found->second;
}

} // namespace ipmib::cli
