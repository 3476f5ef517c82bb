// SPDX-License-Identifier: BSD-3-Clause
// The mistake that the faulty platform makes (see faulty_platform.cpp), and mistakes in the fields of records.
#pragma once

#include "field_places.h"

#include <ipmib/platform.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace ipmib::portcheck
{

inline const std::string &mistake()
{
    static const std::string text = std::getenv("MISTAKE") != nullptr ? std::getenv("MISTAKE") : "";
    return text;
}

inline bool has(const std::string &wanted)
{
    return mistake() == wanted;
}

inline bool fails(const char *service)
{
    return has(std::string("fails ") + service);
}

using Bytes = std::vector<std::uint8_t>;

inline void count(Bytes &bytes, bool isBigEndian)
{
    constexpr bool machineIsBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;
    const bool lowestIsLast = isBigEndian || machineIsBigEndian;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (++bytes[lowestIsLast ? bytes.size() - 1 - i : i] != 0) {
            break;
        }
    }
}

inline void put(Bytes &bytes, bool isBigEndian, std::uint32_t number)
{
    const std::uint32_t field = isBigEndian ? ipmib_be32(number).raw : number;
    const auto narrow = static_cast<std::uint16_t>(number);
    bytes.size() == sizeof narrow ? std::memcpy(bytes.data(), &narrow, sizeof narrow)
                                  : std::memcpy(bytes.data(), &field, std::min(bytes.size(), sizeof field));
}

inline void spoil(const FieldPlace &place, const std::string &kind, std::uint8_t *record, const Bytes &before)
{
    Bytes bytes(record + place.offset, record + place.offset + place.size);
    if (kind == "bytes") {
        std::reverse(bytes.begin(), bytes.end());
    } else if (kind == "words") {
        std::rotate(bytes.begin(), bytes.begin() + 4, bytes.end());
    } else if (kind == "one") {
        count(bytes, place.isBigEndian);
    } else if (kind == "stale") {
        bytes.assign(before.begin() + static_cast<std::ptrdiff_t>(place.offset),
                     before.begin() + static_cast<std::ptrdiff_t>(place.offset + place.size));
    } else if (kind == "empty") {
        bytes.assign(bytes.size(), 0);
    } else if (kind[0] == '=') {
        put(bytes, place.isBigEndian, static_cast<std::uint32_t>(std::stoul(kind.substr(1))));
    }
    std::memcpy(record + place.offset, bytes.data(), bytes.size());
}

// The field that the mistake is in; null when it is elsewhere.
inline const FieldPlace *spoiledField()
{
    static const FieldPlace *const found = [] {
        for (const FieldPlace &place : fieldPlaces) {
            const std::string name = std::string(place.record) + "." + place.field + ":";
            if (mistake().compare(0, name.size(), name) == 0) {
                return &place;
            }
        }
        return static_cast<const FieldPlace *>(nullptr);
    }();
    return found;
}

// Makes the mistake in a record that is about to be given out, when it is in one of its fields.
inline void spoil(const char *type, void *record, std::size_t size)
{
    static Bytes before; // the record that was given out last
    const FieldPlace *const place = spoiledField();
    if (place == nullptr || std::strcmp(place->record, type) != 0) {
        return;
    }
    auto *const bytes = static_cast<std::uint8_t *>(record);
    const Bytes right(bytes, bytes + size);
    before.resize(size);
    spoil(*place, mistake().substr(mistake().find(':') + 1), bytes, before);
    before = right;
}

#define SPOILED(type, record, result) spoiled(#type, record, result)
template <typename Record>
std::uint32_t spoiled(const char *type, Record *record, std::uint32_t result)
{
    if (result == 0) {
        spoil(type, record, sizeof *record);
    }
    return result;
}

} // namespace ipmib::portcheck
