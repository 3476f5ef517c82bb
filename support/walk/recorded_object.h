// SPDX-License-Identifier: BSD-3-Clause
// An instance of an object with its value, as it was recorded from an agent.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ipmib::support
{

// By their tags on the wire.
enum class RecordedType : std::uint8_t {
    integer = 2,
    octets = 4,
    objectId = 6,
    ipAddress = 64,
    counter32 = 65,
    unsigned32 = 66,
    timeTicks = 67,
    opaque = 68,
    counter64 = 70
};

struct RecordedObject {
    std::vector<std::uint32_t> name;
    RecordedType type = RecordedType::integer;
    std::uint64_t number = 0; // a negative integer as its 32-bit two's complement
    std::string octets;       // of octets and opaque values, and the 4 of an address
    std::vector<std::uint32_t> objectId;

    bool hasSameValue(const RecordedObject &other) const
    {
        return type == other.type && number == other.number && octets == other.octets && objectId == other.objectId;
    }
};

// What is wrong with a text: one line.
struct WalkError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Of identifiers; a prefix before what extends it.
bool isInFront(const std::vector<std::uint32_t> &left, const std::vector<std::uint32_t> &right);
bool beginsWith(const std::vector<std::uint32_t> &name, const std::vector<std::uint32_t> &root);

// "1.3.6", ".1.3.6" or "iso.3.6": 1 to 128 numbers. Nothing for anything else.
std::optional<std::vector<std::uint32_t>> parseIdentifier(std::string_view text);
std::string identifierText(const std::vector<std::uint32_t> &identifier);

// A decimal number that fills the whole text, and is not above the limit.
std::optional<std::uint64_t> parseNumber(std::string_view text, std::uint64_t limit);
// The same for an integer of 32 bits with a sign, as its two's complement.
std::optional<std::uint64_t> parseInteger(std::string_view text);
// "192.0.2.1" as 4 octets.
std::optional<std::string> parseAddress(std::string_view text);
// "0a1B", two digits an octet.
std::optional<std::string> parseHexDigits(std::string_view text);
std::string hexDigits(std::string_view octets);

// The text in quotes, cut off when it is long, with what cannot be printed as question marks.
std::string quotedStart(std::string_view text);

} // namespace ipmib::support
