// SPDX-License-Identifier: BSD-3-Clause
// Recorded objects in the form of snmprec files.
#include "support/walk/snmprec.h"

#include <algorithm>

namespace ipmib::support
{
namespace
{

template <class Part>
Part need(const std::optional<Part> &part, std::string_view text, const char *what)
{
    if (!part) {
        throw WalkError(quotedStart(text) + " is not " + what);
    }
    return *part;
}

RecordedType typeOf(std::string_view tag)
{
    using enum RecordedType;
    const auto number = parseNumber(tag, UINT8_MAX);
    for (const RecordedType type :
         {integer, octets, objectId, ipAddress, counter32, unsigned32, timeTicks, opaque, counter64}) {
        if (number && *number == static_cast<std::uint8_t>(type)) {
            return type;
        }
    }
    throw WalkError(quotedStart(tag) + " is not the tag of a type: 2, 4, 6, 64, 65, 66, 67, 68 or 70, or 4x, 64x or "
                                       "68x for hexadecimal digits");
}

void setValue(RecordedObject &object, std::string_view value, bool isHex)
{
    switch (object.type) {
    case RecordedType::integer:
        object.number = need(parseInteger(value), value, "an integer of 32 bits");
        break;
    case RecordedType::counter32:
    case RecordedType::unsigned32:
    case RecordedType::timeTicks:
        object.number = need(parseNumber(value, UINT32_MAX), value, "a number from 0 to 4294967295");
        break;
    case RecordedType::counter64:
        object.number = need(parseNumber(value, UINT64_MAX), value, "a number from 0 to 18446744073709551615");
        break;
    case RecordedType::objectId:
        object.objectId = need(parseIdentifier(value), value, "an object identifier");
        break;
    case RecordedType::ipAddress:
        object.octets = need(isHex ? parseHexDigits(value) : parseAddress(value), value, "an IPv4 address");
        if (object.octets.size() != 4) {
            throw WalkError(quotedStart(value) + " is not an IPv4 address");
        }
        break;
    case RecordedType::octets:
    case RecordedType::opaque:
        object.octets =
            isHex ? need(parseHexDigits(value), value, "hexadecimal digits, two an octet") : std::string(value);
        break;
    }
}

bool isPrintable(const std::string &text)
{
    return std::ranges::all_of(text, [](char letter) { return letter >= ' ' && letter <= '~'; });
}

} // namespace

RecordedObject parseSnmprec(std::string_view line)
{
    const std::size_t first = line.find('|');
    const std::size_t second = first == std::string_view::npos ? first : line.find('|', first + 1);
    if (second == std::string_view::npos) {
        throw WalkError(quotedStart(line) + " is not IDENTIFIER|TAG|VALUE");
    }
    RecordedObject object;
    const std::string_view name = line.substr(0, first);
    object.name = need(parseIdentifier(name), name, "an object identifier");
    std::string_view tag = line.substr(first + 1, second - first - 1);
    const bool isHex = tag == "4x" || tag == "64x" || tag == "68x";
    object.type = typeOf(isHex ? tag.substr(0, tag.size() - 1) : tag);
    setValue(object, line.substr(second + 1), isHex);
    return object;
}

std::string snmprecLine(const RecordedObject &object)
{
    std::string tag = std::to_string(static_cast<unsigned>(object.type));
    std::string value;
    switch (object.type) {
    case RecordedType::integer:
        value = std::to_string(static_cast<std::int32_t>(object.number));
        break;
    case RecordedType::counter32:
    case RecordedType::unsigned32:
    case RecordedType::timeTicks:
    case RecordedType::counter64:
        value = std::to_string(object.number);
        break;
    case RecordedType::objectId:
        value = identifierText(object.objectId);
        break;
    case RecordedType::ipAddress:
        for (const char octet : object.octets) {
            value += (value.empty() ? "" : ".") + std::to_string(static_cast<unsigned char>(octet));
        }
        break;
    case RecordedType::octets:
    case RecordedType::opaque:
        if (object.type == RecordedType::opaque || !isPrintable(object.octets)) {
            tag += 'x';
            value = hexDigits(object.octets);
        } else {
            value = object.octets;
        }
        break;
    }
    return identifierText(object.name) + "|" + tag + "|" + value;
}

} // namespace ipmib::support
